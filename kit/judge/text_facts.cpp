#include "kit/judge/text_facts.h"

#include <algorithm>

#include "kit/text/unicode_check.h"
#include "kit/text/utf8_validation.h"

namespace ksv_kit::judge {
namespace {

constexpr size_t kBlock = 128;

struct BlockCounts {
  uint8_t high;
  uint8_t lineFeeds;
  uint8_t carriageReturns;
  uint8_t pairs;
  uint8_t controls;
};

// Without branches, so that it is done by vectors. Control codes are those that no text has: of
// the others, ESC, SO and SI switch between sets, and form feeds and tabs are blanks.
BlockCounts countBlock(const uint8_t* bytes, size_t length, uint8_t before) {
  BlockCounts counts{};
  counts.pairs = before == '\r' && bytes[0] == '\n';
  for (size_t i = 0; i < length; ++i) {
    const uint8_t byte = bytes[i];
    counts.high = static_cast<uint8_t>(counts.high | (byte & 0x80));
    counts.lineFeeds = static_cast<uint8_t>(counts.lineFeeds + (byte == '\n'));
    counts.carriageReturns = static_cast<uint8_t>(counts.carriageReturns + (byte == '\r'));
    counts.controls = static_cast<uint8_t>(counts.controls + (byte < 0x20 || byte == 0x7F));
  }
  for (size_t i = 1; i < length; ++i)
    counts.pairs = static_cast<uint8_t>(counts.pairs + (bytes[i] == '\n' && bytes[i - 1] == '\r'));
  return counts;
}

bool isUsualControl(uint8_t byte) {
  return (byte >= '\b' && byte <= '\r') || byte == 0x1B || byte == 0x0E || byte == 0x0F ||
         byte == 0x1A;
}

}  // namespace

void TextFacts::take(const uint8_t* bytes, size_t length) {
  checkUtf8(bytes, length);
  for (size_t at = 0; at < length; at += kBlock) {
    const size_t count = std::min(kBlock, length - at);
    const BlockCounts counts = countBlock(bytes + at, count, last_);
    isAscii_ = isAscii_ && counts.high == 0;
    lineFeeds_ += counts.lineFeeds;
    carriageReturns_ += counts.carriageReturns;
    pairsOfBoth_ += counts.pairs;
    if (counts.controls > counts.lineFeeds + counts.carriageReturns)
      countControls(bytes + at, count);
    last_ = bytes[at + count - 1];
    size_ += count;
  }
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
