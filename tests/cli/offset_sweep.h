// Offsets of bad, lacking and cut characters, at every place around the borders of
// the pieces that a text is read in.
#pragma once

#include <iosfwd>
#include <string>

namespace ksv_cli_tests {

// Bad bytes of a charset: the offset named is that of the first one, and everything
// before it is there.
struct BadText {
  const char* charset;
  std::string fill;    // in UTF-8, repeated in front
  std::string bad;     // in the charset
  const char* reason;  // in front of the offset
};
void PrintTo(const BadText& text, std::ostream* out);
void expectBadBytesNamed(const BadText& text);

// A character that the target lacks.
struct LackingText {
  const char* source;
  const char* fill;
  const char* lacking;
  const char* target;
  const char* reason;
};
void PrintTo(const LackingText& text, std::ostream* out);
void expectLackingCharacterNamed(const LackingText& text);

// Every beginning of a character at the end of the text.
void expectTruncatedCharacterNamed(const std::string& charset);

}  // namespace ksv_cli_tests
