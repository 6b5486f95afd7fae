#include "cli/system/open_file_windows.h"

#include <algorithm>
#include <system_error>

#include "cli/system/failure.h"
#include "cli/system/system_paths_windows.h"
#include "common/platform.h"

namespace ksv_cli::platform {

std::string words(DWORD error) { return ksv::platform::errorText(static_cast<int>(error)); }

void fail(DWORD error) {
  const std::error_condition kind =
      std::system_category().default_error_condition(static_cast<int>(error));
  throw Failure(words(error), kind == std::errc::broken_pipe);
}

void fail(std::errc error) { throw Failure(std::make_error_code(error).message()); }

void writeAll(HANDLE handle, const uint8_t* bytes, size_t size) {
  constexpr size_t kMostAtOnce = 1 << 30;
  while (size != 0) {
    DWORD count = 0;
    const DWORD wanted = static_cast<DWORD>(std::min(size, kMostAtOnce));
    if (!::WriteFile(handle, bytes, wanted, &count, nullptr)) fail(::GetLastError());
    bytes += count;
    size -= count;
  }
}

}  // namespace ksv_cli::platform
