#include <dlfcn.h>

#include <optional>

#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/loadable_module.h"
#include "common/platform.h"

namespace ksv_cli::platform {
namespace {

// Of whoever may change the place of the command nobody is afraid here: such a one may change the
// command as well. No setting names another place.
std::optional<std::string> pathOfModule(const std::string& module) {
  const std::optional<std::string> own = ksv::platform::libraryDirectory();
  if (!own) return std::nullopt;
  for (const char* directory : {"", KSV_MODULE_DIRECTORY "/"}) {
    std::string path = *own + "/" + directory + module + ".so";
    if (fileFacts(path).kind == FileKind::kRegular) return path;
  }
  return std::nullopt;
}

[[noreturn]] void fail(const std::string& module, const std::string& reason) {
  throw UsageError("the module " + module + " " + reason);
}

}  // namespace

void* functionOfModule(const std::string& module, const char* function) {
  const std::optional<std::string> path = pathOfModule(module);
  if (!path) fail(module, "is not installed");
  void* handle = ::dlopen(path->c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) fail(module, std::string("cannot be loaded: ") + ::dlerror());
  void* found = ::dlsym(handle, function);
  if (found == nullptr) fail(module, "is not one of this command");
  return found;
}

}  // namespace ksv_cli::platform
