#include "cconv/rules/table_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "cconv/limits.h"
#include "cconv/rules/text_units.h"

namespace ksv {
std::unique_ptr<TableReader> TableReader::open(const std::string& path, TextEncodingKind kind,
                                               bool bigEndian, platform::SystemError* error) {
  std::unique_ptr<TableReader> reader(new TableReader(path, kind, bigEndian));
  if (error != nullptr) *error = reader->error();
  return reader->unread_ < 0 ? nullptr : std::move(reader);
}

std::optional<uint32_t> TableReader::nextNumber() {
  auto c = skipToDigit();
  if (!c) return std::nullopt;
  uint32_t value = 0;
  for (int digits = 0; digits < limits::kMostDigits; ++digits) {
    value = value << 4 | static_cast<uint32_t>(hexDigit(*c));
    c = nextChar();
    if (!c) return std::nullopt;
    if (hexDigit(*c) < 0) break;
  }
  // What ended the number, a separator or the 65th digit, is read again.
  stepBack();
  return value;
}

std::optional<uint32_t> TableReader::skipToDigit() {
  auto c = nextChar();
  while (c && hexDigit(*c) < 0) {
    if (*c == '<') {
      while (c && *c != '>') c = nextChar();
      if (!c) break;
    }
    c = nextChar();
  }
  return c;
}

std::optional<uint32_t> TableReader::nextChar() {
  const auto unit = readUnitOfFile(unitWidth());
  if (!unit || kind_ != TextEncodingKind::kUtf16 || !isSurrogate(*unit)) return unit;
  const auto second = readUnitOfFile(2);
  if (!second) return std::nullopt;
  return joinRuleFileSurrogates(*unit, *second);
}

// One unit back, even behind a surrogate pair: its second half is read again.
void TableReader::stepBack() { position_ -= unitWidth(); }

std::optional<uint32_t> TableReader::readUnitOfFile(uint32_t width) {
  const bool readable = kind_ == TextEncodingKind::kUtf16 || kind_ == TextEncodingKind::kUcs2 ||
                        kind_ == TextEncodingKind::kUcs4;
  if (!readable || !fillBuffer()) return std::nullopt;
  // Less than, not at most: the last character of a file is never delivered.
  if (position_ + width >= held_) return std::nullopt;
  const uint32_t unit = readUnit(buffer_ + position_, width, bigEndian_);
  position_ += width;
  return unit;
}

bool TableReader::fillBuffer() {
  uint32_t wanted = 0;
  if (!filled_) {
    if (unread_ == 0) return false;
    wanted = static_cast<uint32_t>(std::min<int64_t>(kBufferSize, unread_));
  } else if (position_ > kRefillPosition) {
    held_ -= position_;
    std::memmove(buffer_, buffer_ + position_, held_);
    wanted = static_cast<uint32_t>(std::min<int64_t>(position_, unread_));
    position_ = 0;
  }
  if (wanted > 0) {
    if (file_.read(buffer_ + held_, wanted) != wanted) return false;
    held_ += wanted;
    unread_ -= wanted;
  }
  filled_ = true;
  return true;
}

}  // namespace ksv
