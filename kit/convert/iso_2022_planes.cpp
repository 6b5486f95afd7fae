#include "kit/convert/iso_2022_planes.h"

#include <string_view>
#include <utility>

#include "kit/text/iso_2022_check.h"

namespace ksv_kit {

namespace {

constexpr char kEscape = '\x1B';
constexpr std::string_view kPlane1 = "\x1B$(Q";
constexpr std::string_view kPlane2 = "\x1B$(P";

}  // namespace

// Whether the byte belongs to an escape sequence, as far as can be seen yet.
bool PlaneReadingStage::takeEscape(uint8_t byte) {
  if (escape_.empty() && byte != static_cast<uint8_t>(kEscape)) return false;
  escape_ += static_cast<char>(byte);
  switch (designationIn(escape_)) {
    case Designation::kWhole:
      inPlane2_ = escape_ == kPlane2;
      isDesignated_ = true;
      escape_.clear();
      return true;
    case Designation::kBeginning:
      return true;
    default:
      escape_.clear();
      return false;
  }
}

void PlaneReadingStage::takeByte(uint8_t byte) {
  const bool isPairByte = !takeEscape(byte) && byte >= 0x21 && byte <= 0x7E;
  isFirstByte_ = isPairByte && !isFirstByte_;
  if (inPlane2_ && isFirstByte_) {
    if (!isDesignated_) insert(kPlane2);
    isDesignated_ = false;
  }
  const char itself = static_cast<char>(byte);
  replaceBy({&itself, 1});
}

void PlaneReadingStage::forget() {
  escape_.clear();
  inPlane2_ = isDesignated_ = isFirstByte_ = false;
}

void PlaneWritingStage::close() {
  while (!escape_.empty()) release();
}

void PlaneWritingStage::forget() {
  escape_.clear();
  otherSet_.clear();
  inPlane_ = false;
  pairBytesLeft_ = 0;
}

void PlaneWritingStage::takeByte(uint8_t byte) {
  if (escape_.empty() && byte != static_cast<uint8_t>(kEscape)) {
    emit(byte);
    return;
  }
  escape_ += static_cast<char>(byte);
  const Designation found = designationIn(escape_);
  if (found == Designation::kNone) release();
  if (found != Designation::kWhole) return;
  inPlane_ = escape_ == kPlane1 || escape_ == kPlane2;
  if (inPlane_)
    pairBytesLeft_ = 2;
  else
    otherSet_ = escape_;
  for (const char c : std::exchange(escape_, {})) replaceBy({&c, 1});
}

// What looked like an escape sequence is text, and another one may begin inside it.
void PlaneWritingStage::release() {
  const std::string held = std::move(escape_);
  escape_.clear();
  emit(static_cast<uint8_t>(held[0]));
  for (const char c : held.substr(1)) takeByte(static_cast<uint8_t>(c));
}

void PlaneWritingStage::emit(uint8_t byte) {
  if (inPlane_ && pairBytesLeft_-- == 0) {
    insert(otherSet_);
    inPlane_ = false;
  }
  const char itself = static_cast<char>(byte);
  replaceBy({&itself, 1});
}

}  // namespace ksv_kit
