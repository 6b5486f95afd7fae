// TableReader: reads the hexadecimal numbers of a code-table text file.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "cconv/rules/text_encoding.h"
#include "common/platform.h"

namespace ksv {

// Numbers are runs of at most 64 hexadecimal digits; every other character
// separates them, and everything from '<' to the next '>' is skipped. The last
// character of the file is never delivered, so a number at its very end needs
// two characters behind it.
class TableReader {
 public:
  // Null when the file cannot be opened or its size cannot be had. The error says why, 0
  // where there is no such file.
  static std::unique_ptr<TableReader> open(const std::string& path, TextEncodingKind kind,
                                           bool bigEndian, platform::SystemError* error = nullptr);
  TableReader(const TableReader&) = delete;
  TableReader& operator=(const TableReader&) = delete;

  // The next number; nothing at the end, or when the run that the end cuts off
  // is dropped.
  std::optional<uint32_t> nextNumber();

  // Why there are no more numbers; 0 where the text ended, or ended to make sense.
  platform::SystemError error() const { return file_.error(); }

 private:
  static constexpr uint32_t kBufferSize = 16384;
  static constexpr uint32_t kRefillPosition = 8192;

  TableReader(const std::string& path, TextEncodingKind kind, bool bigEndian)
      : file_(path.c_str(), platform::InputFile::Takes::kRegularFile),
        unread_(file_.size()),
        kind_(kind),
        bigEndian_(bigEndian) {}

  std::optional<uint32_t> nextChar();
  void stepBack();
  std::optional<uint32_t> skipToDigit();
  uint32_t unitWidth() const { return kind_ == TextEncodingKind::kUcs4 ? 4 : 2; }
  std::optional<uint32_t> readUnitOfFile(uint32_t width);
  bool fillBuffer();

  platform::InputFile file_;
  int64_t unread_;  // bytes of the file that are not in the buffer yet
  TextEncodingKind kind_;
  bool bigEndian_;
  bool filled_ = false;
  uint32_t position_ = 0;
  uint32_t held_ = 0;
  uint8_t buffer_[kBufferSize];
};

}  // namespace ksv
