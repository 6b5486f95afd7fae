#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

#include "ksv_ucs2.h"

namespace {

constexpr size_t kUnbounded = std::numeric_limits<size_t>::max();

constexpr uint16_t kEmpty[] = {0};

const uint16_t* orEmpty(const uint16_t* s) { return s == nullptr ? kEmpty : s; }

size_t countOf(int32_t n) { return static_cast<size_t>(std::max(n, 0)); }

// The units before the terminator, at most limit: none behind those is read.
size_t lengthOf(const uint16_t* s, size_t limit = kUnbounded) {
  size_t length = 0;
  if (s != nullptr) {
    while (length < limit && s[length] != 0) ++length;
  }
  return length;
}

// The length is taken first, so that d and s may be one string.
void copy(uint16_t* d, const uint16_t* s, size_t limit = kUnbounded) {
  const size_t length = lengthOf(s, limit);
  if (length > 0) std::memmove(d, s, length * sizeof *d);
  d[length] = 0;
}

// Decides on the first unit that differs, on a terminator, or on unit number last.
int compare(const uint16_t* a, const uint16_t* b, size_t last = kUnbounded) {
  a = orEmpty(a);
  b = orEmpty(b);
  size_t i = 0;
  while (i < last && a[i] == b[i] && a[i] != 0) ++i;
  return a[i] > b[i] ? 1 : a[i] < b[i] ? -1 : 0;
}

// Moves the units from first to last by so many, in place.
uint16_t* shiftRange(uint16_t* s, uint16_t first, uint16_t last, int by) {
  if (s == nullptr) return nullptr;
  for (uint16_t* unit = s; *unit != 0; ++unit) {
    if (*unit >= first && *unit <= last) *unit = static_cast<uint16_t>(*unit + by);
  }
  return s;
}

}  // namespace

int32_t KSV_ucs2strlen(const uint16_t* s) { return static_cast<int32_t>(lengthOf(s)); }

uint16_t* KSV_ucs2strcpy(uint16_t* d, const uint16_t* s) {
  if (d != nullptr) copy(d, s);
  return d;
}

uint16_t* KSV_ucs2strcat(uint16_t* d, const uint16_t* s) {
  if (d != nullptr) copy(d + lengthOf(d), s);
  return d;
}

uint16_t* KSV_ucs2strncpy(uint16_t* d, const uint16_t* s, int32_t n) {
  if (d != nullptr) copy(d, s, countOf(n));
  return d;
}

uint16_t* KSV_ucs2strchr(const uint16_t* s, uint16_t c) {
  for (s = orEmpty(s); *s != 0; ++s) {
    if (*s == c) return const_cast<uint16_t*>(s);
  }
  return nullptr;
}

int KSV_ucs2strcmp(const uint16_t* a, const uint16_t* b) { return compare(a, b); }

// One unit more than n is compared, and has to be: callers pass n with that in mind.
int KSV_ucs2strncmp(const uint16_t* a, const uint16_t* b, int32_t n) {
  return compare(a, b, countOf(n));
}

uint16_t* KSV_ucs2strlwr(uint16_t* s) { return shiftRange(s, 'A', 'Z', 'a' - 'A'); }

uint16_t* KSV_ucs2strupr(uint16_t* s) { return shiftRange(s, 'a', 'z', 'A' - 'a'); }
