#include "kit/text/mail_text.h"

#include <string_view>
#include <utility>

#include "common/utf16.h"

namespace ksv_kit {
namespace {

// Bytes after which a piece ends as soon as it may. The library converts a piece
// anew in each call, so they are kept short.
constexpr size_t kPieceSize = 16 * 1024;

// The library's output for UTF-7 is 32-bit units.
constexpr size_t kUtf7Unit = 4;

bool isBetween(uint8_t byte, uint8_t low, uint8_t high) { return byte >= low && byte <= high; }

int base64Digit(uint8_t byte) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const size_t digit = kDigits.find(static_cast<char>(byte));
  return digit == std::string_view::npos ? -1 : static_cast<int>(digit);
}

uint8_t base64Byte(int digit) {
  for (int byte = 0; byte < 128; ++byte)
    if (base64Digit(static_cast<uint8_t>(byte)) == digit) return static_cast<uint8_t>(byte);
  return 'A';
}

bool isDirect(uint8_t byte) {
  if (byte == '\t' || byte == '\n' || byte == '\r') return true;
  return isBetween(byte, ' ', '}') && byte != '\\';
}

void stop(MailPiece& piece, ScanEnd end, size_t badLength) {
  piece.end = end;
  piece.badLength = badLength;
}

// Walks the digits of a base64 run and tells its characters and its first fault.
class Base64Run {
 public:
  Base64Run(const uint8_t* text, size_t begin, size_t end) : text_(text), begin_(begin), end_(end) {
    for (size_t at = begin; at < end && faultAt_ == kNone; ++at) takeDigit(at);
    if (faultAt_ == kNone) checkEnd();
  }

  static constexpr size_t kNone = static_cast<size_t>(-1);

  const std::vector<size_t>& characters() const { return characters_; }
  size_t faultAt() const { return faultAt_; }
  // More digits would have mended the fault.
  bool isCut() const { return isCut_; }

  // The digits of the characters in front of the fault, with a hyphen behind them.
  void appendSoundPart(std::vector<uint8_t>& bytes) const {
    if (soundUnits_ == 0) return;
    const size_t bits = 16 * soundUnits_;
    const size_t digits = (bits + 5) / 6;
    bytes.push_back('+');
    bytes.insert(bytes.end(), text_ + begin_, text_ + begin_ + digits);
    const int unusedBits = static_cast<int>(6 * digits - bits);
    const int last = base64Digit(bytes.back());
    bytes.back() = base64Byte(last >> unusedBits << unusedBits);
    bytes.push_back('-');
  }

 private:
  void takeDigit(size_t at) {
    if (bitCount_ == 0) unitAt_ = at;
    bits_ = bits_ << 6 | static_cast<uint32_t>(base64Digit(text_[at]));
    bitCount_ += 6;
    if (bitCount_ < 16) return;
    bitCount_ -= 16;
    takeUnit(bits_ >> bitCount_);
    bits_ &= (1u << bitCount_) - 1;
    unitAt_ = at;
  }

  void takeUnit(uint32_t unit) {
    const bool isHigh = ksv::isHighSurrogate(unit);
    const bool isLow = ksv::isLowSurrogate(unit);
    ++units_;
    if (hasHigh_ != isLow) {
      faultAt_ = hasHigh_ ? highAt_ : unitAt_;
      return;
    }
    if (!isLow) highAt_ = unitAt_;
    hasHigh_ = isHigh;
    if (isHigh) return;
    characters_.push_back(highAt_);
    soundUnits_ = units_;
  }

  // At most five bits may be left over, and they must be zero.
  void checkEnd() {
    isCut_ = hasHigh_ || bitCount_ >= 6;
    if (hasHigh_)
      faultAt_ = highAt_;
    else if (bitCount_ >= 6)
      faultAt_ = end_ - bitCount_ / 6;
    else if (bits_ != 0)
      faultAt_ = end_ - 1;
  }

  const uint8_t* text_;
  size_t begin_;
  size_t end_;
  std::vector<size_t> characters_;
  uint32_t bits_ = 0;
  uint32_t bitCount_ = 0;
  size_t unitAt_ = 0;  // the digit with the first bit of the unit
  size_t highAt_ = 0;
  bool hasHigh_ = false;  // a high surrogate waits for its other half
  size_t units_ = 0;
  size_t soundUnits_ = 0;
  size_t faultAt_ = kNone;
  bool isCut_ = false;
};

class Utf7Piece {
 public:
  Utf7Piece(const uint8_t* text, size_t length, bool atEnd)
      : text_(text), length_(length), atEnd_(atEnd) {}

  MailPiece read() {
    size_t& at = piece_.used;
    while (piece_.end == ScanEnd::kAll && at < length_ && at < kPieceSize) {
      if (text_[at] == '+') {
        takeRun();
      } else if (isDirect(text_[at])) {
        addCharacter(at);
        piece_.bytes.push_back(text_[at++]);
      } else {
        stop(piece_, ScanEnd::kInvalid, 1);
      }
    }
    return std::move(piece_);
  }

 private:
  void addCharacter(size_t at) {
    piece_.characters.push_back({kUtf7Unit * piece_.characters.size(), at});
  }

  void takeRun() {
    const size_t start = piece_.used;
    size_t end = start + 1;
    while (end < length_ && base64Digit(text_[end]) >= 0) ++end;
    if (end == length_ && (!atEnd_ || end == start + 1)) {
      stop(piece_, ScanEnd::kIncomplete, length_ - start);
      return;
    }
    const bool hasHyphen = end < length_ && text_[end] == '-';
    const size_t behind = hasHyphen ? end + 1 : end;
    const Base64Run run(text_, start + 1, end);
    if (end == start + 1 && hasHyphen) addCharacter(start);  // "+-" is a plus sign
    for (const size_t at : run.characters()) addCharacter(at);
    if (run.faultAt() == Base64Run::kNone) {
      piece_.bytes.insert(piece_.bytes.end(), text_ + start, text_ + behind);
      piece_.used = behind;
      return;
    }
    // What stands behind a fault in a run cannot be told from it, and goes with it.
    run.appendSoundPart(piece_.bytes);
    const bool isCut = run.isCut() && end == length_;
    piece_.used = run.faultAt();
    stop(piece_, isCut ? ScanEnd::kIncomplete : ScanEnd::kInvalid, behind - run.faultAt());
  }

  const uint8_t* text_;
  size_t length_;
  bool atEnd_;
  MailPiece piece_;
};

// One piece of HZ in the making. inGb is the mode of the text; the piece has a mode
// of its own, which begins and ends outside GB mode.
class HzPiece {
 public:
  HzPiece(const uint8_t* text, size_t length, bool& inGb)
      : text_(text), length_(length), inGb_(inGb) {}

  MailPiece read() {
    while (piece_.end == ScanEnd::kAll && piece_.used < length_ && piece_.used < kPieceSize) {
      if (inGb_)
        takePair();
      else if (text_[piece_.used] == '~')
        takeEscape();
      else
        takeByte();
    }
    setMode(false);
    return std::move(piece_);
  }

 private:
  std::string_view rest() const {
    return {reinterpret_cast<const char*>(text_) + piece_.used, length_ - piece_.used};
  }

  void appendBytes(std::string_view bytes) {
    piece_.bytes.insert(piece_.bytes.end(), bytes.begin(), bytes.end());
  }

  void setMode(bool inGb) {
    if (inGb != pieceInGb_) appendBytes(inGb ? "~{" : "~}");
    pieceInGb_ = inGb;
  }

  // A character of so many bytes of the text, as what the library reads for it.
  void take(size_t count, std::string_view bytes, size_t inLibrary) {
    piece_.characters.push_back({inLibrary_, piece_.used});
    appendBytes(bytes);
    inLibrary_ += inLibrary;
    piece_.used += count;
  }

  void fail(size_t length) { stop(piece_, ScanEnd::kInvalid, length); }
  void wait() { stop(piece_, ScanEnd::kIncomplete, length_ - piece_.used); }

  void takeByte() {
    if (!isBetween(text_[piece_.used], 0x01, 0x7F)) {
      fail(1);
      return;
    }
    setMode(false);
    take(1, rest().substr(0, 1), 1);
  }

  void takeEscape() {
    const std::string_view text = rest();
    if (text == "~" || text == "~\r") {
      wait();
    } else if (text.starts_with("~~")) {
      // The library reads the second tilde again: this lets it begin an escape that
      // stands for nothing.
      setMode(false);
      take(2, "~~{~}", 1);
    } else if (text.starts_with("~{")) {
      piece_.used += 2;
      inGb_ = true;
    } else if (text.starts_with("~\n")) {
      piece_.used += 2;  // a continued line
    } else if (text.starts_with("~\r\n")) {
      piece_.used += 3;
    } else {
      fail(1);
    }
  }

  void takePair() {
    const std::string_view text = rest();
    const auto isPairByte = [&](size_t at) {
      return isBetween(static_cast<uint8_t>(text[at]), 0x21, 0x7E);
    };
    if (text[0] == '\r' || text[0] == '\n') {
      inGb_ = false;  // a line ends outside GB mode
      fail(0);
    } else if (!isPairByte(0)) {
      fail(1);
    } else if (text.size() == 1) {
      wait();
    } else if (text.starts_with("~}")) {
      piece_.used += 2;
      inGb_ = false;
    } else if (!isPairByte(1)) {
      fail(1);
    } else if (text[0] > kLastRow) {
      fail(2);
    } else {
      setMode(true);
      take(2, text.substr(0, 2), 2);
    }
  }

  static constexpr char kLastRow = 0x77;  // so that no pair looks like "~}"

  const uint8_t* text_;
  size_t length_;
  bool& inGb_;
  bool pieceInGb_ = false;
  size_t inLibrary_ = 0;
  MailPiece piece_;
};

}  // namespace

MailPiece Utf7Reader::read(const uint8_t* text, size_t length, bool atEnd) {
  return Utf7Piece(text, length, atEnd).read();
}

MailPiece HzReader::read(const uint8_t* text, size_t length, bool) {
  return HzPiece(text, length, inGb_).read();
}

}  // namespace ksv_kit
