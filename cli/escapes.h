// Control characters in a form that can be shown.
#ifndef KSV_CLI_ESCAPES_H
#define KSV_CLI_ESCAPES_H

#include <string>
#include <string_view>

namespace ksv_cli {

enum class Backslash { kStays, kIsDoubled };

// With \t, \n, \r, \xHH for the control characters of ASCII, and \u00HH for those
// behind them where they stand in UTF-8. All other bytes stay.
std::string escaped(std::string_view text, Backslash backslash);

}  // namespace ksv_cli

#endif
