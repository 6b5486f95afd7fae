// Where the charset directory is that the library loads.
#ifndef KSV_CLI_CHARSET_DIRECTORY_H
#define KSV_CLI_CHARSET_DIRECTORY_H

#include <optional>
#include <string>

namespace ksv_cli {

// By the places in which the library looks, in its order; none when no setting names
// one and none is installed. The library does not tell, and its rule files are read here
// for their names and faults only. On Windows ksv_conf.dll, which the library asks first,
// is not asked.
std::optional<std::string> charsetDirectory();

}  // namespace ksv_cli

#endif
