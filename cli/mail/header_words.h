// What a header field consists of: characters as they stand, and encoded words.
//
// A character may be cut apart between two words, though that is forbidden: the bytes of words that
// follow each other in one charset are put together before they are converted.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ksv_cli {

struct HeaderRun {
  std::string bytes;
  std::optional<std::string> charset;  // of encoded words; none: the bytes stand there as they are
};

// field: unfolded.
std::vector<HeaderRun> headerRuns(std::string_view field);

// A field without its line ends, and without the blanks around it.
std::string unfolded(std::string_view value);

// The bytes that the digits of base64 stand for, whatever stands between them, and however the
// padding is.
std::string base64Decoded(std::string_view text);
// "%E3%81%82", which extended parameters are written in, with '=' in place of '%' in encoded words.
// A sign without two digits behind it stands for itself.
std::string hexDecoded(std::string_view text, char sign);

}  // namespace ksv_cli
