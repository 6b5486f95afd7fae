// In which charset a text is written, by the judge of the library.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/system/streams.h"
#include "ksv.hpp"

namespace ksv_cli {

// A charset that is less likely than this is not named: the text is undetermined. The one that is
// named is right more often than not.
inline constexpr double kLeastToName = 0.5;
// And than this none is read by itself: a text is rather left alone than converted wrongly.
inline constexpr double kLeastToConvert = 0.95;

// Feeds a text to the judge until more of it would change nothing. Throws Failure where the text
// cannot be read, and ksv::Error.
ksv::Detection detectionOf(ByteSource& source, const ksv::Hints& hints);

// The guess that names the charset; null: the text is undetermined, or none.
const ksv::Guess* namedGuess(const ksv::Detection& detection);

// The charsets that a text may be in, the likeliest first and no more than a message takes. first:
// the one that would be taken.
std::vector<std::string> likelyCharsets(const ksv::Detection& detection, const std::string& first);

// Whether nothing can be told of a text. What is empty or no text is known for that.
bool isUndetermined(const ksv::Detection& detection);

// "text", "empty", "binary" or "unknown".
const char* contentName(ksv_content content);
// "lf", "crlf", "cr" or "mixed"; null: there is one line.
const char* lineEndName(ksv_line_end lineEnd);

// Languages as the judge takes them, of a list with commas of such names ("ja", "zh-TW") and those
// of the described calls ("Japanese"). None where one of them is no name.
std::optional<std::string> judgedLanguages(std::string_view list);

}  // namespace ksv_cli
