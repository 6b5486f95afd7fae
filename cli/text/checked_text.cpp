#include "cli/text/checked_text.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "cli/system/failure.h"
#include "cli/text/chunk_boundary.h"
#include "cli/text/text_failure.h"

namespace ksv_cli {
namespace {

constexpr size_t kLongestMark = 4;
constexpr size_t kUsualCarry = 64;

}  // namespace

CheckedText::CheckedText(const CharsetChoice& charset, IllFormed illFormed, size_t blockSize,
                         ByteSource& source)
    : charset_(charset),
      illFormed_(illFormed),
      blockSize_(blockSize),
      source_(source),
      capacity_(blockSize + kUsualCarry) {
  bytes_ = std::make_unique_for_overwrite<uint8_t[]>(capacity_);
}

void CheckedText::begin() {
  read();
  while (!atEnd_ && held_ < kLongestMark) read();
  const bool orderIsFixed = charset_.order != ByteOrder::kOpen;
  bigEndian_ = charset_.order == ByteOrder::kBig;
  discard(byteOrderMark(charset_.form, orderIsFixed, bytes_.get(), held_, bigEndian_));
}

void CheckedText::read() {
  if (capacity_ - held_ < blockSize_) {
    const size_t capacity = held_ + blockSize_;
    auto larger = std::make_unique_for_overwrite<uint8_t[]>(capacity);
    std::memcpy(larger.get(), bytes_.get(), held_);
    bytes_ = std::move(larger);
    capacity_ = capacity;
  }
  size_t count = 0;
  try {
    count = source_.read(bytes_.get() + held_, blockSize_);
  } catch (const Failure&) {
    readFailure_ = std::current_exception();
  }
  held_ += count;
  atEnd_ = count == 0;
}

uint64_t CheckedText::check() {
  if (illFormed_ == IllFormed::kIsLeftOut) return dropIllFormed();
  findIllFormed();
  return 0;
}

void CheckedText::findIllFormed() {
  const ScanResult found = scan(checked_);
  checked_ += found.wellFormed;
  truncated_ = found.end == ScanEnd::kIncomplete;
  malformed_ = found.end == ScanEnd::kInvalid || (truncated_ && atEnd_);
}

// Closes the gaps in one pass, so that much ill-formed text costs no more.
uint64_t CheckedText::dropIllFormed() {
  uint64_t dropped = 0;
  size_t from = checked_;
  for (;;) {
    const ScanResult found = scan(from);
    std::memmove(bytes_.get() + checked_, bytes_.get() + from, found.wellFormed);
    checked_ += found.wellFormed;
    from += found.wellFormed;
    if (found.end == ScanEnd::kAll || (found.end == ScanEnd::kIncomplete && !atEnd_)) break;
    offsets_.noteGap(checked_, found.badLength);
    dropped += found.badLength;
    from += found.badLength;
  }
  std::memmove(bytes_.get() + checked_, bytes_.get() + from, held_ - from);
  held_ = checked_ + (held_ - from);
  return dropped;
}

ScanResult CheckedText::scan(size_t from) {
  const uint8_t* text = bytes_.get() + from;
  const size_t length = held_ - from;
  if (charset_.kind == CharsetKind::kIso2022) return iso2022_.scan(text, length);
  return scanUnicode(charset_.form, bigEndian_, text, length);
}

// An escape sequence goes with the character behind it, which is not read alike in a call of its
// own.
size_t CheckedText::cut() const {
  if (isLastPiece()) return checked_;
  if (charset_.kind == CharsetKind::kIso2022)
    return checked_ - std::min(checked_, iso2022_.escapesAtEnd());
  return safeCut(charset_.form, bigEndian_, bytes_.get(), checked_);
}

void CheckedText::discard(size_t used) {
  std::memmove(bytes_.get(), bytes_.get() + used, held_ - used);
  offsets_.advance(used);
  source_.forgetBefore(offsets_.offset(0));
  held_ -= used;
  checked_ -= std::min(checked_, used);
}

uint64_t CheckedText::fileOffset(size_t position) const {
  return source_.fileOffset(offsets_.offset(position));
}

void CheckedText::throwReadFailure() const {
  if (readFailure_) std::rethrow_exception(readFailure_);
}

void CheckedText::failMalformed() const {
  throwReadFailure();
  if (truncated_) failTruncated(checked_);
  failInvalid(checked_);
}

void CheckedText::failInvalid(size_t position) const {
  std::optional<uint8_t> byte;
  if (position < held_) byte = bytes_[position];
  throw invalidText(charset_.display, byte, fileOffset(position));
}

void CheckedText::failTruncated(size_t position) const {
  throw truncatedText(charset_.display, fileOffset(position));
}

}  // namespace ksv_cli
