// Pieces of UTF-7 and HZ-GB-2312 text that the library can convert on their own.
//
// Both switch modes inside the text, and the library converts all that it is given
// from the first byte in each call. So a piece of UTF-7 ends outside a base64 run;
// one of HZ, whose modes can be closed anywhere, ends outside GB mode.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kit/text/unicode_check.h"

namespace ksv_kit {

// Where a character stands in what the library makes of the piece, and in the text.
struct MailCharacter {
  size_t inLibrary;
  size_t inText;
};

struct MailPiece {
  std::vector<uint8_t> bytes;  // for the library
  std::vector<MailCharacter> characters;
  size_t used = 0;  // bytes of the text that the piece is made of
  // kAll: more pieces can follow. kIncomplete: what stands behind the piece needs the
  // bytes that follow. kInvalid: what stands there is bad.
  ScanEnd end = ScanEnd::kAll;
  size_t badLength = 0;  // what is left out to go on behind that
};

// Reads a text piece by piece: each begins behind the bytes used by the one before,
// or behind its bad ones.
class MailReader {
 public:
  virtual ~MailReader() = default;
  // atEnd: no more text will follow.
  virtual MailPiece read(const uint8_t* text, size_t length, bool atEnd) = 0;
};

class Utf7Reader : public MailReader {
 public:
  MailPiece read(const uint8_t* text, size_t length, bool atEnd) override;
};

class HzReader : public MailReader {
 public:
  MailPiece read(const uint8_t* text, size_t length, bool atEnd) override;

 private:
  bool inGb_ = false;
};

}  // namespace ksv_kit
