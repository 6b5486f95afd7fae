// Where the system cannot be told, and under sanitizers, which look into their own process and
// start a program that names what they found.
#include "cli/system/rights.h"

namespace ksv_cli::platform {

void dropUnneededRights() noexcept {}

}  // namespace ksv_cli::platform
