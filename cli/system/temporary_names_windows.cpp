#include "cli/system/temporary_names_windows.h"

#include <exception>
#include <system_error>

#include "cli/system/console.h"
#include "cli/system/passing_names.h"
#include "cli/system/process.h"
#include "cli/system/system_paths_windows.h"

namespace ksv_cli::platform {
namespace {

// Other threads may be anywhere, so the process ends without asking them.
BOOL WINAPI endAtInterrupt(DWORD) {
  temporaryNames().removeAllForGood();
  return ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(STATUS_CONTROL_C_EXIT));
}

}  // namespace

// Never destroyed: an interrupt may come until the very end.
TemporaryNames& temporaryNames() {
  static TemporaryNames& names = *new TemporaryNames;
  return names;
}

void removeTemporaryFilesAtInterrupts() { ::SetConsoleCtrlHandler(endAtInterrupt, TRUE); }

PassingFile::PassingFile(const std::wstring& directory, const std::string& name)
    : path_(systemPath(directory + *utf16Of(name.empty() ? randomPassingName() : name))),
      file_(create()) {}

PassingFile::~PassingFile() {
  const DWORD error = temporaryNames().guarded([this](std::set<std::wstring>& names) {
    const bool isThere = names.erase(path_) != 0;
    return !isThere || ::DeleteFileW(path_.c_str()) ? ERROR_SUCCESS : ::GetLastError();
  });
  if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) tellStays(error);
}

// Others may remove it while it is open, as an interrupt does.
HANDLE PassingFile::create() const {
  return temporaryNames().guarded([this](std::set<std::wstring>& names) {
    const auto name = names.insert(path_).first;
    const HANDLE handle =
        ::CreateFileW(path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                      CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle != INVALID_HANDLE_VALUE) return handle;
    const DWORD error = ::GetLastError();
    names.erase(name);
    fail(error);
  });
}

void PassingFile::tellStays(DWORD error) const noexcept {
  try {
    tellLeftOver(utf8Of(path_), {static_cast<int>(error), std::system_category()});
  } catch (const std::exception&) {
    tellOutOfMemory();
  }
}

}  // namespace ksv_cli::platform
