// In which encoding a text is written.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/system/streams.h"
#include "kit/charsets/charset_names.h"

namespace ksv_cli {

using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;

// What dtctText says, in words.
struct Detection {
  uint32_t word = 0;

  // The names of the charsets that fit; none when the text is undetermined.
  std::vector<std::string> charsets() const;
  bool hasMark() const;
  // "little" or "big" for one encoding that has an order, else null.
  const char* byteOrder() const;
  // "crlf", "lf" or "cr", else null.
  const char* lineEnd() const;
  // "U+2028" and "U+2029", as far as they occur.
  std::vector<std::string> separators() const;
};

// A text to be read from its beginning, and what it was found to be.
struct DetectedText {
  std::unique_ptr<ByteSource> source;
  Detection detection;
  bool isEmpty = false;
};

// language: as dtctText takes it, or null. Throws Failure when the text cannot be read.
DetectedText openAndDetect(const std::string& input, const char* language);

// The same without the text. None of an empty one.
std::optional<Detection> detectUnlessEmpty(const std::string& input, const char* language);

// The charset to read a text in, and why it is taken. Throws Failure when not exactly
// one fits.
struct ChosenSource {
  CharsetChoice charset;
  std::string reason;
};
ChosenSource chooseSource(const DetectedText& text, const CharsetNames& names);

// "A, B or C"
std::string joinedByOr(const std::vector<std::string>& words);

}  // namespace ksv_cli
