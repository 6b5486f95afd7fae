#include <cstddef>
#include <cstring>
#include <iterator>

#include "ksv_log.h"

namespace {

// In the order of the indices in ksv_log.h.
constexpr const char* kStrings[] = {"org", "ISO-2022-JP", "ISO-10646-UCS-2", "WINDOWS31J",
                                    "EUC-JP"};
constexpr int32_t kIntegers[] = {0, 0};

template <class Value, size_t kCount>
Value valueAt(const Value (&values)[kCount], int32_t index, Value otherwise) {
  return index >= 0 && static_cast<size_t>(index) < kCount ? values[index] : otherwise;
}

}  // namespace

int KSV_GetResouceString(int32_t index, char* dest, int32_t capacity) {
  if (dest != nullptr && capacity > 0) {
    std::strncpy(dest, valueAt(kStrings, index, ""), static_cast<size_t>(capacity));
  }
  return 1;
}

int KSV_GetResouceInteger(int32_t index, int32_t* dest) {
  if (dest != nullptr) *dest = valueAt(kIntegers, index, 0);
  return 1;
}
