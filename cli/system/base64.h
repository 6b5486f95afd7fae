#ifndef KSV_CLI_BASE64_H
#define KSV_CLI_BASE64_H

#include <string>
#include <string_view>

namespace ksv_cli {

// The standard alphabet, with padding and without line ends.
std::string base64(std::string_view bytes);

}  // namespace ksv_cli

#endif
