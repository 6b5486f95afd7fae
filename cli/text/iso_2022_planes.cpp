#include "cli/text/iso_2022_planes.h"

#include <string_view>
#include <utility>

#include "cli/text/iso_2022_check.h"

namespace ksv_cli {
namespace {

constexpr char kEscape = '\x1B';
constexpr std::string_view kPlane1 = "\x1B$(Q";
constexpr std::string_view kPlane2 = "\x1B$(P";

}  // namespace

// Whether the byte belongs to an escape sequence, as far as can be seen yet.
bool PlaneSource::takeEscape(uint8_t byte) {
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

void PlaneSource::take(uint8_t byte) {
  const bool isPairByte = !takeEscape(byte) && byte >= 0x21 && byte <= 0x7E;
  isFirstByte_ = isPairByte && !isFirstByte_;
  if (inPlane2_ && isFirstByte_) {
    if (!isDesignated_) insert(kPlane2);
    isDesignated_ = false;
  }
  const char itself = static_cast<char>(byte);
  replaceBy({&itself, 1});
}

void PlaneSink::write(const uint8_t* bytes, size_t size) {
  for (size_t i = 0; i < size; ++i) take(bytes[i]);
  flush();
}

void PlaneSink::finish() {
  while (!escape_.empty()) release();
  flush();
}

void PlaneSink::take(uint8_t byte) {
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
  text_ += escape_;
  escape_.clear();
}

// What looked like an escape sequence is text, and another one may begin inside it.
void PlaneSink::release() {
  const std::string held = std::move(escape_);
  escape_.clear();
  emit(static_cast<uint8_t>(held[0]));
  for (const char c : held.substr(1)) take(static_cast<uint8_t>(c));
}

void PlaneSink::emit(uint8_t byte) {
  if (inPlane_ && pairBytesLeft_-- == 0) {
    text_ += otherSet_;
    inPlane_ = false;
  }
  text_ += static_cast<char>(byte);
}

void PlaneSink::flush() {
  sink_.write(reinterpret_cast<const uint8_t*>(text_.data()), text_.size());
  text_.clear();
}

}  // namespace ksv_cli
