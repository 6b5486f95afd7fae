// How much of a text is converted between two looks at the room that there is.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "cconv/bulk/entries.h"

namespace ksv {

// What is checked once for so many characters: that they have room. Where there is room
// for fewer, so many at most are converted beside the output.
constexpr uint32_t kBatch = 16384;
constexpr uint32_t kPiece = 2048;
constexpr uint32_t kLeastBatch = 16;

// The characters that the engine converts again behind a run.
constexpr uint32_t kRedone = 2;

// What storing an entry touches.
constexpr ptrdiff_t kEntryBytes = sizeof(Entry);
constexpr ptrdiff_t kShortEntryBytes = sizeof(ShortEntry);

// How many characters of a form are whole in so many bytes of input and fit into so many of
// output, whatever they are.
template <typename Form>
uint32_t charactersWithRoom(ptrdiff_t input, ptrdiff_t output) {
  const ptrdiff_t room = std::min(input / Form::kLongestInput, output / kEntryBytes) - 1;
  return room >= kBatch ? kBatch : static_cast<uint32_t>(std::clamp<ptrdiff_t>(room, 0, kPiece));
}

}  // namespace ksv
