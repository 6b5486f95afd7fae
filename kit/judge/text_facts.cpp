#include "kit/judge/text_facts.h"

#include <algorithm>

#include "kit/text/unicode_check.h"
#include "kit/text/utf8_validation.h"

namespace ksv_kit::judge {
namespace {

constexpr size_t kBlock = 128;

// How many bytes of a block are such ones. Without branches, so that it is done by vectors.
template <typename Is>
uint8_t countIn(const uint8_t* block, Is is) {
  uint8_t count = 0;
  for (size_t i = 0; i < kBlock; ++i)
    count = static_cast<uint8_t>(count + static_cast<uint8_t>(is(block[i])));
  return count;
}

// Control codes are those that no text has: of the others, ESC, SO and SI switch between sets, and
// form feeds and tabs are blanks.
bool isUsualControl(uint8_t byte) {
  return (byte >= '\b' && byte <= '\r') || byte == 0x1B || byte == 0x0E || byte == 0x0F ||
         byte == 0x1A;
}

}  // namespace

void TextFacts::take(const uint8_t* bytes, size_t length) {
  checkUtf8(bytes, length);
  size_t at = 0;
  for (; length - at >= kBlock; at += kBlock) takeBlock(bytes + at);
  takeRest(bytes + at, length - at);
}

void TextFacts::takeBlock(const uint8_t* block) {
  const uint8_t lineFeeds = countIn(block, [](uint8_t byte) { return byte == '\n'; });
  const uint8_t controls = countIn(block, [](uint8_t byte) { return byte < 0x20 || byte == 0x7F; });
  const uint8_t high = countIn(block, [](uint8_t byte) { return byte >= 0x80; });
  if (controls != lineFeeds || (last_ == '\r' && block[0] == '\n')) return takeRest(block, kBlock);
  isAscii_ = isAscii_ && high == 0;
  lineFeeds_ += lineFeeds;
  last_ = block[kBlock - 1];
  size_ += kBlock;
}

void TextFacts::takeRest(const uint8_t* bytes, size_t length) {
  for (size_t i = 0; i < length; ++i) {
    const uint8_t byte = bytes[i];
    isAscii_ = isAscii_ && byte < 0x80;
    lineFeeds_ += byte == '\n';
    carriageReturns_ += byte == '\r';
    pairsOfBoth_ += byte == '\n' && last_ == '\r';
    last_ = byte;
  }
  countControls(bytes, length);
  size_ += length;
}

void TextFacts::countControls(const uint8_t* bytes, size_t length) {
  for (size_t i = 0; i < length; ++i) {
    if (bytes[i] == 0) ++nuls_[(size_ + i) % 4];
    if ((bytes[i] < 0x20 || bytes[i] == 0x7F) && !isUsualControl(bytes[i])) ++oddControls_;
  }
}

// Takes what is missing of the character that waits; how many bytes.
size_t TextFacts::completeWaiting(const uint8_t* bytes, size_t length) {
  size_t used = 0;
  while (waitingCount_ != 0 && used < length) {
    waiting_[waitingCount_++] = bytes[used++];
    const ScanResult found = scanUnicode(UnicodeForm::kUtf8, false, waiting_.data(), waitingCount_);
    if (found.end == ScanEnd::kInvalid) {
      utf8InvalidAt_ = size_ + used - waitingCount_;
      waitingCount_ = 0;
    } else if (found.end == ScanEnd::kAll) {
      waitingCount_ = 0;
    }
  }
  return used;
}

void TextFacts::checkUtf8(const uint8_t* bytes, size_t length) {
  if (!isUtf8()) return;
  const size_t used = completeWaiting(bytes, length);
  if (!isUtf8() || used == length || isSurelyUtf8(bytes + used, length - used)) return;
  const ScanResult found = scanUnicode(UnicodeForm::kUtf8, false, bytes + used, length - used);
  if (found.end == ScanEnd::kInvalid) utf8InvalidAt_ = size_ + used + found.wellFormed;
  if (found.end != ScanEnd::kIncomplete) return;
  waitingCount_ = length - used - found.wellFormed;
  std::copy_n(bytes + used + found.wellFormed, waitingCount_, waiting_.begin());
}

}  // namespace ksv_kit::judge
