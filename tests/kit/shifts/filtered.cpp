#include "tests/kit/shifts/filtered.h"

#include <gtest/gtest.h>

#include <numeric>
#include <ostream>

namespace ksv_kit::test {
namespace {

// One call after another, until all of a piece is used or left out.
void filterPiece(ShiftFilter& filter, std::string_view piece, uint64_t begin, bool isEnd,
                 Filtered& result) {
  size_t at = 0;
  for (;;) {
    std::vector<uint8_t> out;
    size_t bad = 0;
    const auto* bytes = reinterpret_cast<const uint8_t*>(piece.data()) + at;
    const size_t used = filter.filter(bytes, piece.size() - at, isEnd, out, bad);
    for (const uint8_t byte : out) {
      result.origins.push_back(filter.originOf(result.made.size()));
      result.made += static_cast<char>(byte);
    }
    at += used;
    if (bad == 0) {
      EXPECT_EQ(at, piece.size());
      return;
    }
    const size_t before = filter.refusedBefore();
    result.refusals.push_back({begin + at - before, bad});
    if (bad > before) at += bad - before;
    ASSERT_LE(at, piece.size());
  }
}

}  // namespace

void PrintTo(const Refusal& refusal, std::ostream* out) {
  *out << refusal.length << " at " << refusal.place;
}

void PrintTo(const Filtered& filtered, std::ostream* out) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  for (const char c : filtered.made)
    *out << kDigits[static_cast<uint8_t>(c) >> 4] << kDigits[c & 0xF] << ' ';
  for (const Refusal& refusal : filtered.refusals) {
    *out << "refused ";
    PrintTo(refusal, out);
    *out << ' ';
  }
  *out << "from";
  for (const uint64_t origin : filtered.origins) *out << ' ' << origin;
}

Filtered filtered(ShiftFilter& filter, std::string_view text, const std::vector<size_t>& cuts) {
  Filtered result;
  size_t begin = 0;
  for (const size_t cut : cuts) {
    filterPiece(filter, text.substr(begin, cut - begin), begin, false, result);
    begin = cut;
  }
  filterPiece(filter, text.substr(begin), begin, true, result);
  return result;
}

Filtered read(std::string_view name, std::string_view text, const std::vector<size_t>& cuts) {
  return filtered(*readingFilter(name), text, cuts);
}

Filtered written(std::string_view name, std::string_view text, const std::vector<size_t>& cuts) {
  return filtered(*writingFilter(name), text, cuts);
}

void expectSameAtEveryCut(MakeFilter make, std::string_view name, std::string_view text) {
  const Filtered whole = filtered(*make(name), text);
  for (size_t first = 0; first <= text.size(); ++first) {
    for (size_t second = first; second <= text.size(); ++second)
      EXPECT_EQ(filtered(*make(name), text, {first, second}), whole)
          << "cut at " << first << " and " << second;
  }
  std::vector<size_t> everywhere(text.size());
  std::iota(everywhere.begin(), everywhere.end(), size_t{0});
  EXPECT_EQ(filtered(*make(name), text, everywhere), whole);
}

}  // namespace ksv_kit::test
