// Texts in UTF-8 that were taken for something else, and written as UTF-8 once more.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "kit/charsets/charset_names.h"
#include "ksv.hpp"

namespace ksv_cli {

// What was done about the lines of a text.
struct RepairFacts {
  uint64_t repaired = 0;
  uint64_t lost = 0;                       // were written twice, but lost bytes on the way
  uint64_t ambiguous = 0;                  // have more than one way back
  std::optional<uint64_t> firstLeft = {};  // where the first line is that was left alone
  uint64_t firstLeftLine = 0;
  std::string misreadAs = {};  // what most of the lines were taken for; empty: none was

  bool any() const { return repaired + lost + ambiguous != 0; }
  // "3 lines repaired, 1 lost, 2 ambiguous"
  std::string inWords() const;
  // And what they were taken for, and where the first is that was left.
  std::string inMoreWords() const;
};

// Whether a text in the charset may be one: in UTF-8, or all ASCII.
bool canBeRepaired(const ksv_kit::CharsetChoice& charset);

struct RepairedText {
  std::string text;
  RepairFacts facts;
};

// Throws Failure where the text is no UTF-8.
RepairedText repairedText(const std::string& text);

}  // namespace ksv_cli
