// Texts through filters, in one piece and cut.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kit/shifts/shift_filter.h"

namespace ksv_kit::test {

using MakeFilter = std::unique_ptr<ShiftFilter> (*)(std::string_view lowerName);

struct Refusal {
  uint64_t place;
  size_t length;

  bool operator==(const Refusal&) const = default;
};
void PrintTo(const Refusal& refusal, std::ostream* out);

// What a filter makes of a text when refused bytes are left out.
struct Filtered {
  std::string made;
  std::vector<Refusal> refusals;
  std::vector<uint64_t> origins;  // of each byte made

  bool operator==(const Filtered&) const = default;
};
void PrintTo(const Filtered& filtered, std::ostream* out);

// The text in pieces that end at the cuts, which ascend.
Filtered filtered(ShiftFilter& filter, std::string_view text, const std::vector<size_t>& cuts = {});
Filtered read(std::string_view name, std::string_view text, const std::vector<size_t>& cuts = {});
Filtered written(std::string_view name, std::string_view text,
                 const std::vector<size_t>& cuts = {});

// Expects the same of the text cut at each place, at each two places and behind each byte.
void expectSameAtEveryCut(MakeFilter make, std::string_view name, std::string_view text);

}  // namespace ksv_kit::test
