// What a conversion has read of its text and not converted yet.
//
// The text comes in blocks. Each is looked at when it is in a Unicode form or in ISO-2022-JP, and
// can be converted up to where a cut changes nothing; what the cut leaves over stays in front of
// the next block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>

#include "cli/charsets/given_charset.h"
#include "cli/system/streams.h"
#include "cli/text/buffer_offsets.h"
#include "cli/text/iso_2022_check.h"
#include "cli/text/unicode_check.h"

namespace ksv_cli {

// What becomes of bytes that are not well-formed.
enum class IllFormed { kEndsText, kIsLeftOut };

class CheckedText {
 public:
  CheckedText(const CharsetChoice& charset, IllFormed illFormed, size_t blockSize,
              ByteSource& source);

  // Reads the beginning, and passes over a byte-order mark.
  void begin();
  // Reads a block. A source that throws ends the text; the failure is kept.
  void read();
  // Looks at what has been read. Returns how many bytes were left out.
  uint64_t check();
  // Takes as many bytes off the beginning.
  void discard(size_t used);

  // Positions count from the first byte that is held.
  const uint8_t* bytes() const { return bytes_.get(); }
  size_t size() const { return held_; }
  // How much can be converted now.
  size_t cut() const;

  bool bigEndian() const { return bigEndian_; }
  bool isAtEnd() const { return atEnd_; }
  bool isMalformed() const { return malformed_; }
  // Nothing that follows will be converted.
  bool isLastPiece() const { return atEnd_ || malformed_; }

  const BufferOffsets& offsets() const { return offsets_; }
  uint64_t fileOffset(size_t position) const;

  void throwReadFailure() const;  // if there is one
  [[noreturn]] void failMalformed() const;
  [[noreturn]] void failInvalid(size_t position) const;
  [[noreturn]] void failTruncated(size_t position) const;

 private:
  void findIllFormed();
  uint64_t dropIllFormed();
  ScanResult scan(size_t from);

  const CharsetChoice& charset_;
  const IllFormed illFormed_;
  const size_t blockSize_;
  ByteSource& source_;
  Iso2022Scanner iso2022_;

  std::unique_ptr<uint8_t[]> bytes_;
  size_t capacity_;
  size_t held_ = 0;
  size_t checked_ = 0;  // of these, whole well-formed characters
  BufferOffsets offsets_;
  bool bigEndian_ = false;
  bool atEnd_ = false;      // the end of the text is held
  bool malformed_ = false;  // bad bytes stand at checked_
  bool truncated_ = false;  // and they are the beginning of a character
  std::exception_ptr readFailure_;
};

}  // namespace ksv_cli
