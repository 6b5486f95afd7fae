// The characters of well-formed UTF-8 that comes byte by byte.
#pragma once

#include <cstdint>

namespace ksv_kit {

class Utf8Characters {
 public:
  template <typename Take>
  void take(uint8_t byte, Take takeCharacter) {
    if (byte < 0x80) {
      value_ = byte;
    } else if (byte < 0xC0) {
      value_ = value_ << 6 | (byte & 0x3Fu);
      --left_;
    } else {
      left_ = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
      value_ = byte & (0x3Fu >> left_);
    }
    if (left_ == 0) takeCharacter(value_);
  }

 private:
  uint32_t value_ = 0;
  int left_ = 0;
};

}  // namespace ksv_kit
