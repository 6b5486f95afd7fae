// Modules of the command that are loaded when they are wanted.
#pragma once

#include <string>

namespace ksv_cli::platform {

// A function that a module exports. Modules stand beside the command in a build, and in lib/ksv/
// beside bin/ where it is installed. Throws UsageError with the reason where there is none: what
// was asked for cannot be had here, and nothing has been done.
void* functionOfModule(const std::string& module, const char* function);

}  // namespace ksv_cli::platform
