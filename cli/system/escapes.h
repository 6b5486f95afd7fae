// Control characters in a form that can be shown.
#pragma once

#include <string>
#include <string_view>

namespace ksv_cli {

inline bool isAsciiControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

enum class Backslash { kStays, kIsDoubled };

// With \t, \n, \r, \xHH for the control characters of ASCII, and \u00HH for those
// behind them where they stand in UTF-8. All other bytes stay.
std::string escaped(std::string_view text, Backslash backslash);

// A name that keeps to its field of a line: escaped, and where a backslash is no separator
// it is doubled, so that each name is shown in one way.
std::string shownName(const std::string& name);

}  // namespace ksv_cli
