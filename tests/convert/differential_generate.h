// Random charset directories, texts and options.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "differential_harness.h"
#include "reference/rule_directory.h"

namespace ksv_differential {

ksv_reference::RuleDirectory randomRules(Random& random);

// Unicode forms whose tables hold some characters and refuse others, tag characters
// among them.
ksv_reference::RuleDirectory randomTagRules(Random& random);

// The names that a source may have, pre-conversions and unknown ones included.
std::vector<std::string> sourceNames(const ksv_reference::RuleDirectory& rules);
std::vector<std::string> targetNames(const ksv_reference::RuleDirectory& rules);

// Text for a source charset; wildness 0 to 100 is the share of what no honest text has.
std::vector<uint8_t> randomText(Random& random, const ksv_reference::RuleDirectory& rules,
                                const std::string& source, bool bigEndian, size_t bytes,
                                uint32_t wildness);

// Text of a Unicode form that is mostly language tags: whole, cut, nested and too long.
std::vector<uint8_t> randomTagText(Random& random, const ksv_reference::RuleDirectory& rules,
                                   const std::string& source, bool bigEndian);

ConvertOptions randomOptions(Random& random);
std::string randomLanguage(Random& random);

}  // namespace ksv_differential
