#include "cconv/convert/pre_conversion.h"

#include <optional>

#include "common/byte_order.h"
#include "common/utf16.h"

namespace ksv {
namespace {

// Printable ASCII and white space, without what UTF-7 gives a meaning to.
bool isDirect(uint8_t c) {
  if (c == '\t' || c == '\n' || c == '\r') return true;
  return c >= ' ' && c <= '}' && c != '+' && c != '\\';
}

int base64Digit(uint8_t c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  return c == '/' ? 63 : -1;
}

// Reads UTF-7 a character at a time.
class Utf7Reader {
 public:
  Utf7Reader(const uint8_t* input, int32_t length) : next_(input), end_(input + length) {}

  // The next character; nothing at the end, and at what does not decode.
  std::optional<uint32_t> next() {
    while (next_ != end_) {
      if (!inRun_) {
        const uint8_t c = *next_;
        if (c != '+') return isDirect(c) ? std::optional<uint32_t>(*next_++) : std::nullopt;
        ++next_;
        if (next_ != end_ && *next_ == '-') {
          ++next_;
          return '+';
        }
        inRun_ = true;
      } else if (const int digit = base64Digit(*next_); digit >= 0) {
        ++next_;
        bits_ = bits_ << 6 | static_cast<uint32_t>(digit);
        bitCount_ += 6;
        if (bitCount_ < 16) continue;
        if (!takeUnit()) return std::nullopt;
        if (!isHighSurrogate(unit_)) return unit_;
      } else if (!endRun()) {
        return std::nullopt;
      }
    }
    return std::nullopt;
  }

 private:
  // Takes 16 bits; a low surrogate behind a high one makes one scalar value. False
  // for anything else behind a high surrogate.
  bool takeUnit() {
    bitCount_ -= 16;
    const uint32_t unit = bits_ >> bitCount_;
    bits_ &= (1u << bitCount_) - 1;
    if (isHighSurrogate(unit_)) {
      if (!isLowSurrogate(unit)) return false;
      unit_ = joinSurrogates(unit_, unit);
    } else {
      unit_ = unit;
    }
    return true;
  }

  // At most five bits may be left over, and they must be zero.
  bool endRun() {
    if (bitCount_ >= 6 || bits_ != 0 || isHighSurrogate(unit_)) return false;
    if (*next_ == '-') ++next_;
    inRun_ = false;
    bitCount_ = 0;
    return true;
  }

  const uint8_t* next_;
  const uint8_t* end_;
  bool inRun_ = false;
  uint32_t bits_ = 0;
  uint32_t bitCount_ = 0;
  uint32_t unit_ = 0;  // the unit read last; a high surrogate waits for its other half
};

// Writes HZ's output. The cursor can run ahead of what counts: an escape that
// stands for nothing moves it and leaves a zero byte, so that the counted length
// falls short of it. That is how this encoding has always been read here.
class HzOutput {
 public:
  HzOutput(uint8_t* output, int32_t capacity) : output_(output), capacity_(capacity) {}

  bool put(uint8_t byte) {
    if (cursor_ >= capacity_) {
      converted_.truncated = true;
      return false;
    }
    output_[cursor_++] = byte;
    ++converted_.length;
    return true;
  }
  void moveOver() { ++cursor_; }
  const PreConverted& converted() const { return converted_; }

 private:
  uint8_t* output_;
  int32_t capacity_;
  int32_t cursor_ = 0;
  PreConverted converted_;
};

}  // namespace

PreConverted preConvertUtf7(const uint8_t* input, int32_t length, uint8_t* output,
                            int32_t capacity) {
  constexpr int32_t kUnit = 4;
  PreConverted converted;
  Utf7Reader reader(input, length);
  while (const auto value = reader.next()) {
    if (capacity - converted.length < kUnit) {
      converted.truncated = true;
      break;
    }
    writeUnit32LittleEndian(output + converted.length, *value);
    converted.length += kUnit;
  }
  return converted;
}

PreConverted preConvertHz(const uint8_t* input, int32_t length, uint8_t* output, int32_t capacity) {
  HzOutput out(output, capacity);
  bool inGb = false;
  bool room = true;
  for (int32_t i = 0; room && i < length && input[i] != 0;) {
    const uint8_t c = input[i++];
    const uint8_t next = i < length ? input[i] : uint8_t{0};
    if (c != '~') {
      room = out.put(inGb ? c | 0x80 : c);
    } else if (inGb) {
      if (next == '}') {
        inGb = false;
        ++i;
      } else {
        room = out.put(0xFE);
      }
    } else if (next == '{') {
      inGb = true;
      ++i;
    } else if (next == '~') {
      // The second tilde is read again as the start of an escape.
      room = out.put('~');
    } else {
      out.moveOver();
      if (next == '\n') ++i;
    }
  }
  return out.converted();
}

}  // namespace ksv
