#include "iso_2022_shifts.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "iso_2022_check.h"

namespace ksv_cli {
namespace {

constexpr uint8_t kEscape = 0x1B;
constexpr uint8_t kShiftOut = 0x0E;
constexpr uint8_t kShiftIn = 0x0F;
constexpr std::string_view kKatakana = "\x1B(I";

}  // namespace

size_t ShiftSource::read(uint8_t* buffer, size_t size) {
  if (read_ == text_.size()) {
    std::vector<uint8_t> taken(size);
    taken.resize(source_.read(taken.data(), size));
    text_.clear();
    read_ = 0;
    for (const uint8_t byte : taken) take(byte);
  }
  const size_t count = std::min(size, text_.size() - read_);
  if (count != 0) std::memcpy(buffer, text_.data() + read_, count);
  read_ += count;
  return count;
}

void ShiftSource::followEscape(uint8_t byte) {
  if (byte == kEscape) escape_.clear();
  if (byte != kEscape && escape_.empty()) return;
  escape_ += static_cast<char>(byte);
  const Designation found = designationIn(escape_);
  if (found == Designation::kBeginning) return;
  if (found == Designation::kWhole) designated_ = escape_;
  escape_.clear();
}

void ShiftSource::take(uint8_t byte) {
  followEscape(byte);
  links_.add(made_, taken_++);
  const size_t before = text_.size();
  if (byte == kShiftOut)
    text_.insert(text_.end(), kKatakana.begin(), kKatakana.end());
  else if (byte == kShiftIn)
    text_.insert(text_.end(), designated_.begin(), designated_.end());
  else
    text_.push_back(byte);
  made_ += text_.size() - before;
}

}  // namespace ksv_cli
