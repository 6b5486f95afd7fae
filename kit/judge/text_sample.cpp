#include "kit/judge/text_sample.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace ksv_kit::judge {
namespace {

// Lines in front of this are taken whatever they are.
constexpr size_t kAnyLines = 1024;
// Lines that only look as if they might switch between sets; there is much of that in programs.
constexpr size_t kMostMaybe = 4096;
constexpr size_t kLongestPiece = 8192;

constexpr uint8_t kEscape = 0x1B;
constexpr uint8_t kShiftOut = 0x0E;
constexpr uint8_t kShiftIn = 0x0F;
// No character of several bytes has a byte below this behind its first one.
constexpr uint8_t kFirstTrail = 0x30;

bool tells(uint8_t byte) {
  return (byte >= 0x80) | (byte == kEscape) | (byte == kShiftOut) | (byte == kShiftIn);
}

// What UTF-7 and HZ begin their runs with.
bool mayTell(uint8_t byte) { return (byte == '+') | (byte == '~'); }

// Without branches, so that it is done by vectors.
template <typename Is>
bool hasAny(const uint8_t* bytes, const uint8_t* end, Is is) {
  unsigned any = 0;
  for (; bytes != end; ++bytes) any |= static_cast<unsigned>(is(*bytes));
  return any != 0;
}

// Behind two bytes of ASCII no character is open.
bool endsCharacter(const uint8_t* begin, const uint8_t* end) {
  return end - begin >= 2 && end[-1] < 0x80 && end[-2] < 0x80;
}

// How many bytes from the beginning tell nothing, a multiple of the block.
size_t plainBlocks(const uint8_t* bytes, size_t length) {
  constexpr size_t kBlock = 64;
  size_t at = 0;
  for (; length - at >= kBlock; at += kBlock) {
    uint8_t any = 0;
    for (size_t i = 0; i < kBlock; ++i) {
      const uint8_t byte = bytes[at + i];
      any = static_cast<uint8_t>(any | (byte & 0x80) | (byte == kEscape) | (byte == kShiftOut) |
                                 (byte == kShiftIn) | (byte == '+') | (byte == '~'));
    }
    if (any != 0) break;
  }
  return at;
}

}  // namespace

void TextSample::take(const uint8_t* bytes, size_t length) {
  if (head_.size() < kHead) {
    const size_t count = std::min(length, kHead - head_.size());
    head_.insert(head_.end(), bytes, bytes + count);
  }
  while (length != 0 && !isFull()) {
    const size_t taken = piece_.empty() ? skipPlain(bytes, length) : 0;
    const size_t used = taken != 0 ? taken : takePiece(bytes, length);
    bytes += used;
    length -= used;
    if (taken != 0) position_ += taken;
  }
}

// Whole lines that tell nothing: passed over, but for those that are taken anyway.
size_t TextSample::skipPlain(const uint8_t* bytes, size_t length) {
  if (pieceBeginsAnywhere_ || endsAnywhere_) return 0;
  size_t plain = plainBlocks(bytes, length);
  while (plain != 0 && bytes[plain - 1] != '\n') --plain;
  if (lines_.size() >= kAnyLines || plain == 0) return plain;
  if (plain > kAnyLines - lines_.size()) return 0;
  places_.push_back({lines_.size(), position_});
  lines_.insert(lines_.end(), bytes, bytes + plain);
  return plain;
}

size_t TextSample::takePiece(const uint8_t* bytes, size_t length) {
  const size_t most = std::min(length, kLongestPiece - piece_.size());
  const void* const lineEnd = std::memchr(bytes, '\n', most);
  const size_t used = lineEnd == nullptr
                          ? most
                          : static_cast<size_t>(static_cast<const uint8_t*>(lineEnd) - bytes) + 1;
  const bool isCut = lineEnd == nullptr && piece_.size() + used == kLongestPiece;
  if (lineEnd == nullptr && !isCut) {
    piece_.insert(piece_.end(), bytes, bytes + used);
  } else if (piece_.empty()) {
    consider(bytes, used, position_, isCut);
  } else {
    piece_.insert(piece_.end(), bytes, bytes + used);
    consider(piece_.data(), piece_.size(), position_ + used - piece_.size(), isCut);
    piece_.clear();
  }
  position_ += used;
  return used;
}

void TextSample::consider(const uint8_t* bytes, size_t length, uint64_t place, bool isCut) {
  const uint8_t* const begin = bytes;
  const bool beginsAnywhere = pieceBeginsAnywhere_;
  const uint8_t* end = bytes + length;
  pieceBeginsAnywhere_ = isCut && !endsCharacter(bytes, end);
  if (beginsAnywhere)
    bytes = std::find_if(bytes, end, [](uint8_t byte) { return byte < kFirstTrail; });
  const bool isTelling = hasAny(bytes, end, tells);
  const bool isMaybe = !isTelling && maybeTelling_ < kMostMaybe && hasAny(bytes, end, mayTell);
  if (!isTelling && !isMaybe && lines_.size() >= kAnyLines) return;
  if (endsAnywhere_) return;
  if (isCut) {
    const uint8_t* sure = end;
    while (sure != bytes && sure[-1] >= kFirstTrail && !endsCharacter(bytes, sure)) --sure;
    if (sure != bytes) end = sure;
    endsAnywhere_ = sure == bytes;
  }
  places_.push_back({lines_.size(), place + static_cast<uint64_t>(bytes - begin)});
  lines_.insert(lines_.end(), bytes, end);
  const auto count = static_cast<size_t>(end - bytes);
  if (isTelling) telling_ += endsAnywhere_ ? kMost : count;
  if (isMaybe) maybeTelling_ += count;
}

std::span<const uint8_t> TextSample::lines(std::vector<uint8_t>& joined) const {
  const bool isPieceTaken = !endsAnywhere_ && !pieceBeginsAnywhere_ && !isFull() && !piece_.empty();
  if (!isPieceTaken) return lines_;
  if (lines_.empty()) return piece_;
  joined = lines_;
  joined.insert(joined.end(), piece_.begin(), piece_.end());
  return joined;
}

uint64_t TextSample::placeOf(size_t inLines) const {
  if (inLines >= lines_.size()) return position_ - piece_.size() + (inLines - lines_.size());
  const auto behind =
      std::upper_bound(places_.begin(), places_.end(), inLines,
                       [](size_t place, const Place& line) { return place < line.inLines; });
  const Place& line = *std::prev(behind);
  return line.inText + (inLines - line.inLines);
}

}  // namespace ksv_kit::judge
