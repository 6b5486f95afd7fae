#include "reference/parts.h"

namespace ksv_reference {
namespace {

bool isUtf7Direct(uint8_t byte) {
  if (byte == 9 || byte == 10 || byte == 13) return true;
  return byte >= 0x20 && byte <= 0x7E && byte != '+' && byte != '\\' && byte != '~';
}

int base64Value(uint8_t byte) {
  if (byte >= 'A' && byte <= 'Z') return byte - 'A';
  if (byte >= 'a' && byte <= 'z') return byte - 'a' + 26;
  if (byte >= '0' && byte <= '9') return byte - '0' + 52;
  if (byte == '+') return 62;
  if (byte == '/') return 63;
  return -1;
}

class Utf7Reader {
 public:
  Utf7Reader(const uint8_t* input, int32_t length) : input_(input), length_(length) {}

  // False: the text ends here, or does not decode.
  bool next(uint32_t& character) {
    if (!inRun_) {
      const bool done = readDirect(character);
      if (!inRun_) return done;
    }
    return readRun(character);
  }

 private:
  bool readDirect(uint32_t& character) {
    if (position_ >= length_) return false;
    const uint8_t byte = input_[position_];
    if (isUtf7Direct(byte)) {
      ++position_;
      character = byte;
      return true;
    }
    if (byte != '+' || position_ + 1 >= length_) return false;
    if (input_[position_ + 1] == '-') {
      position_ += 2;
      character = '+';
      return true;
    }
    ++position_;
    inRun_ = true;
    return false;
  }

  // Collects 16 more bits; false at the run's end or where the text stops.
  bool readUnit(uint32_t& unit, bool& stopped) {
    while (bitCount_ < 16) {
      if (position_ >= length_) {
        stopped = true;
        return false;
      }
      const int value = base64Value(input_[position_]);
      if (value < 0) return false;
      bits_ = (bits_ << 6) | static_cast<uint32_t>(value);
      bitCount_ += 6;
      ++position_;
    }
    bitCount_ -= 16;
    unit = (bits_ >> bitCount_) & 0xFFFF;
    bits_ &= (1U << bitCount_) - 1;
    return true;
  }

  bool endRun(uint32_t& character) {
    if (bitCount_ >= 6 || bits_ != 0) return false;
    bits_ = 0;
    bitCount_ = 0;
    inRun_ = false;
    if (input_[position_] == '-') ++position_;
    return next(character);
  }

  bool readRun(uint32_t& character) {
    bool stopped = false;
    uint32_t unit = 0;
    if (!readUnit(unit, stopped)) return !stopped && endRun(character);
    if (unit < 0xD800 || unit > 0xDBFF) {
      character = unit;
      return true;
    }
    uint32_t low = 0;
    if (!readUnit(low, stopped) || low < 0xDC00 || low > 0xDFFF) return false;
    character = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
    return true;
  }

  const uint8_t* input_;
  int32_t length_;
  int32_t position_ = 0;
  bool inRun_ = false;
  uint32_t bits_ = 0;
  int bitCount_ = 0;
};

// The growing GBK text: count bytes count, the cursor says where the next goes.
struct HzOutput {
  std::vector<uint8_t> bytes;
  int32_t capacity = 0;
  int32_t cursor = 0;
  int32_t count = 0;

  bool put(uint8_t byte) {
    if (cursor >= capacity) return false;
    bytes[static_cast<size_t>(cursor++)] = byte;
    ++count;
    return true;
  }
  // Loses nothing, so it always fits.
  void skip() { ++cursor; }
};

}  // namespace

std::vector<uint8_t> preConvertUtf7(const uint8_t* input, int32_t length, int32_t capacity,
                                    bool& fits) {
  std::vector<uint8_t> text;
  Utf7Reader reader(input, length);
  uint32_t character = 0;
  while (reader.next(character)) {
    if (static_cast<int64_t>(text.size()) + 4 > capacity) {
      fits = false;
      break;
    }
    for (int shift = 0; shift < 32; shift += 8) {
      text.push_back(static_cast<uint8_t>(character >> shift));
    }
  }
  return text;
}

std::vector<uint8_t> preConvertHz(const uint8_t* input, int32_t length, int32_t capacity,
                                  bool& fits) {
  HzOutput out;
  out.capacity = capacity;
  out.bytes.assign(capacity > 0 ? static_cast<size_t>(capacity) : 0, 0);
  bool inGb = false;
  int32_t position = 0;
  const auto byteAt = [&](int32_t at) -> uint8_t { return at < length ? input[at] : 0; };
  while (fits && byteAt(position) != 0) {
    const uint8_t byte = byteAt(position);
    const uint8_t next = byteAt(position + 1);
    if (inGb) {
      if (byte != '~') {
        fits = out.put(byte | 0x80);
        ++position;
      } else if (next == '}') {
        inGb = false;
        position += 2;
      } else {
        fits = out.put(0xFE);
        ++position;
      }
    } else if (byte != '~') {
      fits = out.put(byte);
      ++position;
    } else if (next == '{') {
      inGb = true;
      position += 2;
    } else if (next == '~') {
      fits = out.put('~');
      ++position;
    } else if (next == '\n') {
      out.skip();
      position += 2;
    } else {
      out.skip();
      ++position;
    }
  }
  out.bytes.resize(static_cast<size_t>(out.count));
  return out.bytes;
}

}  // namespace ksv_reference
