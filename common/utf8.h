// What a byte of UTF-8 says about its character.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace ksv {

constexpr bool isUtf8Continuation(uint8_t byte) { return (byte & 0xC0) == 0x80; }

// The bytes of the character that a lead begins, by its leading ones: 2 to 6 for C0 to FD.
// No other byte is a lead. What counts as one beyond that (forms of five and six bytes, FE
// and FF) differs between readers, whose answers stay as they have always been; so each
// looks for itself.
constexpr size_t utf8Length(uint8_t lead) { return static_cast<size_t>(std::countl_one(lead)); }

}  // namespace ksv
