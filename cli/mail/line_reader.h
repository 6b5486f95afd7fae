// The lines of an input, in pieces of bounded size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "cli/system/streams.h"

namespace ksv_cli {

// A line, with its line end, or a piece of one that is longer than a block.
struct LinePiece {
  std::string_view bytes;  // until the next piece is asked for
  uint64_t offset = 0;     // in the input
  bool beginsLine = false;
  bool endsLine = false;

  // Of a whole line or the beginning of one.
  bool startsLineWith(std::string_view text) const { return beginsLine && bytes.starts_with(text); }
  bool isEmptyLine() const { return beginsLine && (bytes == "\n" || bytes == "\r\n"); }
};

class LineReader {
 public:
  // source stays the caller's.
  explicit LineReader(ByteSource& source);

  // False at the end. Throws Failure when the input cannot be read.
  bool next(LinePiece& piece);

 private:
  bool fill();

  ByteSource& source_;
  const std::unique_ptr<uint8_t[]> block_;
  size_t at_ = 0;
  size_t end_ = 0;
  uint64_t offset_ = 0;  // of the byte at at_
  bool isInLine_ = false;
};

}  // namespace ksv_cli
