#include "cli/text/byte_facts.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "kit/text/iso_2022_check.h"
#include "kit/text/unicode_check.h"

namespace ksv_cli {

using ksv_kit::Designation;
using ksv_kit::designationIn;
using ksv_kit::Iso2022Scanner;
using ksv_kit::ScanEnd;
using ksv_kit::ScanResult;
using ksv_kit::scanUnicode;
using ksv_kit::UnicodeForm;

namespace {

constexpr size_t kBlock = 64 * 1024;

// Scans a text that comes in pieces: what a piece leaves over goes in front of the next.
template <typename Scan>
class PiecewiseScan {
 public:
  explicit PiecewiseScan(Scan scan) : scan_(scan) {}

  void take(const uint8_t* bytes, size_t size) {
    if (isBad_) return;
    held_.insert(held_.end(), bytes, bytes + size);
    const ScanResult result = scan_(held_.data(), held_.size());
    isBad_ = result.end == ScanEnd::kInvalid;
    held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(result.wellFormed));
  }

  bool isWellFormed() const { return !isBad_ && held_.empty(); }

 private:
  Scan scan_;
  std::vector<uint8_t> held_;
  bool isBad_ = false;
};

// Looks for escape sequences in a text that comes in pieces.
class EscapeSearch {
 public:
  void take(uint8_t byte) {
    if (byte == kEscape) escape_.clear();
    if (byte != kEscape && escape_.empty()) return;
    escape_ += static_cast<char>(byte);
    const Designation found = designationIn(escape_);
    if (found == Designation::kBeginning) return;
    if (found == Designation::kWhole) note();
    escape_.clear();
  }

  bool any() const { return any_; }
  bool pairs() const { return pairs_; }
  bool planes() const { return planes_; }

 private:
  void note() {
    any_ = true;
    const bool isPlane = escape_.starts_with("\x1B$(");
    planes_ = planes_ || isPlane;
    pairs_ = pairs_ || escape_[1] == '$' || escape_ == "\x1B(I";
  }

  static constexpr uint8_t kEscape = 0x1B;
  std::string escape_;
  bool any_ = false;
  bool pairs_ = false;
  bool planes_ = false;
};

}  // namespace

bool ByteFacts::isAscii() const {
  return std::find(isUsed + 0x80, std::end(isUsed), true) == std::end(isUsed);
}

uint64_t ByteFacts::highBytes() const {
  uint64_t count = first >> 7;
  for (const BytePair& pair : pairs)
    if (pair.byte >= 0x80) count += pair.count;
  return count;
}

bool ByteFacts::hasOddControls() const {
  constexpr std::string_view kUsual = "\b\t\n\v\f\r\x0E\x0F\x1A\x1B";
  for (size_t byte = 0; byte < 0x20; ++byte)
    if (isUsed[byte] && kUsual.find(static_cast<char>(byte)) == std::string_view::npos) return true;
  return isUsed[0x7F];
}

ByteFacts byteFacts(ByteSource& source) {
  ByteFacts facts;
  std::vector<uint64_t> pairs(256 * 256);
  Iso2022Scanner scanner;
  const auto scanUtf8 = [](const uint8_t* text, size_t length) {
    return scanUnicode(UnicodeForm::kUtf8, false, text, length);
  };
  const auto scanIso2022 = [&scanner](const uint8_t* text, size_t length) {
    return scanner.scan(text, length);
  };
  PiecewiseScan utf8(scanUtf8);
  PiecewiseScan iso2022(scanIso2022);
  EscapeSearch escapes;
  std::vector<uint8_t> block(kBlock);
  uint8_t before = 0;
  while (const size_t count = source.read(block.data(), block.size())) {
    size_t at = 0;
    if (facts.size == 0) facts.first = before = block[at++];
    for (; at < count; ++at) {
      ++pairs[static_cast<size_t>(before) << 8 | block[at]];
      before = block[at];
    }
    for (at = 0; at < count; ++at) escapes.take(block[at]);
    facts.size += count;
    utf8.take(block.data(), count);
    iso2022.take(block.data(), count);
  }
  for (size_t pair = 0; pair < pairs.size(); ++pair)
    if (pairs[pair] != 0)
      facts.pairs.push_back(
          {static_cast<uint8_t>(pair >> 8), static_cast<uint8_t>(pair), pairs[pair]});
  if (facts.size != 0) facts.isUsed[facts.first] = true;
  for (const BytePair& pair : facts.pairs) facts.isUsed[pair.byte] = true;
  facts.isUtf8 = utf8.isWellFormed();
  facts.isIso2022 = iso2022.isWellFormed() && escapes.any();
  facts.designatesPairs = escapes.pairs();
  facts.designatesPlanes = escapes.planes();
  return facts;
}

}  // namespace ksv_cli
