// How names of charsets are compared.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ksv_kit {

// Only A to Z have a case, whatever the locale.
std::string lowered(std::string_view name);

// What is left of a name for a comparison without regard to case, punctuation and
// blanks: its letters and digits, without zeros that no digit stands in front of.
// "UTF-8", "utf8" and "u.t.f-008" are one name, and "utf-80" is another.
std::string foldedName(std::string_view name);

// Those of the candidates that a person may have meant by a name, the nearest first; at
// most three, none when nothing is near.
std::vector<std::string> nearestNames(std::string_view name,
                                      const std::vector<std::string>& candidates);

}  // namespace ksv_kit
