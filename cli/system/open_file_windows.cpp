#include "cli/system/open_file_windows.h"

#include <algorithm>
#include <cwchar>
#include <iterator>

#include "cli/system/failure.h"
#include "cli/system/system_paths_windows.h"

namespace ksv_cli::platform {
namespace {

std::string systemMessage(DWORD error) {
  wchar_t text[512];
  DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, error, 0, text, std::size(text), nullptr);
  while (length > 0 && std::wcschr(L"\r\n .", text[length - 1]) != nullptr) --length;
  return length == 0 ? "error " + std::to_string(error) : utf8Of({text, length});
}

}  // namespace

std::string words(DWORD error) {
  const std::error_condition kind =
      std::system_category().default_error_condition(static_cast<int>(error));
  return kind.category() == std::generic_category() ? kind.message() : systemMessage(error);
}

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
