#include <windows.h>

#include "cli/system/kept_original.h"
#include "cli/system/open_file_windows.h"
#include "cli/system/places_windows.h"
#include "cli/system/system_paths_windows.h"

namespace ksv_cli::platform {
namespace {

void moveKept(const std::string& kept, const std::string& place, DWORD how) {
  const std::wstring end = linkEnd(systemPath(place));
  if (!::MoveFileExW(systemPath(kept).c_str(), end.c_str(), how | MOVEFILE_WRITE_THROUGH))
    fail(::GetLastError());
}

void removeThere(const std::wstring& path) {
  if (::DeleteFileW(path.c_str())) return;
  const DWORD error = ::GetLastError();
  if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) fail(error);
}

}  // namespace

void restoreOriginal(const std::string& kept, const std::string& place) {
  moveKept(kept, place, MOVEFILE_REPLACE_EXISTING);
}

void putOriginalBack(const std::string& kept, const std::string& place) {
  moveKept(kept, place, 0);
}

void removeKept(const std::string& kept) { removeThere(systemPath(kept)); }

void removePassingFile(const std::string& place, const std::string& passingName) {
  const std::wstring end = linkEnd(systemPath(place));
  const std::wstring directory = end.substr(0, directoryLength(end, kSeparators));
  const std::wstring name(passingName.begin(), passingName.end());
  removeThere(systemPath(directory + name));
}

}  // namespace ksv_cli::platform
