#include "cli/system/failure.h"
#include "cli/system/loadable_module.h"

namespace ksv_cli::platform {

// What the modules stand on is not to be had here.
void* functionOfModule(const std::string& module, const char*) {
  throw UsageError("this build has no module " + module);
}

}  // namespace ksv_cli::platform
