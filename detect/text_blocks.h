// Runs of bytes that need no look one by one, eight at a time.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/byte_blocks.h"
#include "common/utf8.h"

namespace ksv::detect {

// How many bytes of a block, from its first on, are printable characters and blanks.
inline size_t textBytes(uint64_t block) {
  return bytesBeforeHighBit(bytesOutside<' ', '~'>(block));
}

// The end of the blocks, from at on, of printable characters and blanks.
inline const uint8_t* passText(const uint8_t* at, const uint8_t* end) {
  while (end - at >= static_cast<ptrdiff_t>(kBlock) && areBetween<' ', '~'>(blockAt(at)))
    at += kBlock;
  return at;
}

// Whether three characters of three bytes each, in UTF-8, begin here, where more than a
// block is left.
inline bool areThreeThrees(const uint8_t* at) {
  constexpr uint64_t kMask = blockOf({0xF0, 0xC0, 0xC0, 0xF0, 0xC0, 0xC0, 0xF0, 0xC0});
  constexpr uint64_t kThrees = blockOf({0xE0, 0x80, 0x80, 0xE0, 0x80, 0x80, 0xE0, 0x80});
  return (blockAt(at) & kMask) == kThrees && isUtf8Continuation(at[kBlock]);
}

}  // namespace ksv::detect
