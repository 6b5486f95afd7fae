// The Shift_JIS mapping as the facts say it, read without the generator: codes by a
// list of all pairs of bytes in order, not by arithmetic.
#pragma once

#include <cstdint>
#include <map>

namespace ksv::test {

using SjisMap = std::map<uint16_t, uint16_t>;

// Code to character.
const SjisMap& sjisFacts();

// Character to code, the characters that are only written included.
const SjisMap& sjisFactsReversed();

}  // namespace ksv::test
