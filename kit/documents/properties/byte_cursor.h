// Goes through bytes, and never behind them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "common/byte_order.h"
#include "kit/documents/properties/value.h"

namespace ksv_kit::properties {

class ByteCursor {
 public:
  ByteCursor(Bytes bytes, uint64_t at)
      : bytes_(bytes), at_(at < bytes.size() ? at : bytes.size()) {}

  size_t place() const { return at_; }
  size_t left() const { return bytes_.size() - at_; }

  // Each is false, and takes nothing, where there are too few bytes.
  bool take(uint64_t count, std::string_view& taken) {
    if (count > left()) return false;
    taken = {reinterpret_cast<const char*>(bytes_.data()) + at_, static_cast<size_t>(count)};
    at_ += taken.size();
    return true;
  }
  bool take16(uint32_t& value) { return takeUnit(2, value); }
  bool take32(uint32_t& value) { return takeUnit(4, value); }

  // To the next multiple of four from the place given, as far as there are bytes.
  void alignFrom(size_t origin) {
    const size_t padding = (4 - (at_ - origin) % 4) % 4;
    at_ += padding < left() ? padding : left();
  }

 private:
  bool takeUnit(size_t size, uint32_t& value) {
    if (size > left()) return false;
    value = ksv::readUnit(bytes_.data() + at_, size, false);
    at_ += size;
    return true;
  }

  const Bytes bytes_;
  size_t at_;
};

}  // namespace ksv_kit::properties
