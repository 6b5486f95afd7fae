// The places of files.
#pragma once

#include <windows.h>

#include <string>

namespace ksv_cli::platform {

// The place of a result: where the path is a link, the file that it leads to. Throws Failure.
std::wstring linkEnd(const std::wstring& path);

}  // namespace ksv_cli::platform
