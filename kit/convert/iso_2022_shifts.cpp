#include "kit/convert/iso_2022_shifts.h"

#include <string_view>

#include "kit/text/iso_2022_check.h"

namespace ksv_kit {

namespace {

constexpr uint8_t kEscape = 0x1B;
constexpr uint8_t kShiftOut = 0x0E;
constexpr uint8_t kShiftIn = 0x0F;
constexpr std::string_view kRoman = "\x1B(B";
constexpr std::string_view kKatakana = "\x1B(I";

}  // namespace

void ShiftStage::followEscape(uint8_t byte) {
  if (byte == kEscape) escape_.clear();
  if (byte != kEscape && escape_.empty()) return;
  escape_ += static_cast<char>(byte);
  const Designation found = designationIn(escape_);
  if (found == Designation::kBeginning) return;
  if (found == Designation::kWhole) designated_ = escape_;
  escape_.clear();
}

void ShiftStage::forget() {
  escape_.clear();
  designated_ = kRoman;
}

void ShiftStage::takeByte(uint8_t byte) {
  followEscape(byte);
  const char itself = static_cast<char>(byte);
  if (byte == kShiftOut)
    replaceBy(kKatakana);
  else if (byte == kShiftIn)
    replaceBy(designated_);
  else
    replaceBy({&itself, 1});
}

}  // namespace ksv_kit
