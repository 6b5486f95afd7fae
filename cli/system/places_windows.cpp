#include "cli/system/places_windows.h"

#include "cli/system/files_windows.h"
#include "cli/system/open_file_windows.h"
#include "common/wide_text_windows.h"

namespace ksv_cli::platform {

std::wstring linkEnd(const std::wstring& path) {
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  const bool isLink =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  if (!isLink) return path;
  const OpenFile file(openToLook(path));
  if (!file.isOpen()) fail(::GetLastError());
  const std::wstring end = ksv::platform::writtenBy([&](wchar_t* buffer, DWORD size) {
    return ::GetFinalPathNameByHandleW(file.get(), buffer, size, FILE_NAME_NORMALIZED);
  });
  return end.empty() ? path : end;
}

}  // namespace ksv_cli::platform
