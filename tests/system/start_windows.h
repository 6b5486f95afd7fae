// Starting a process, for the Windows sides of the tests.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

namespace ksv::test {

struct ProcessStart {
  std::wstring executable;
  std::wstring line;
  BOOL inherits = TRUE;
  DWORD flags = 0;
  std::wstring directory = {};  // the current one when empty
};

// The handle of a started process. Under Wine one start in some thousands ends with an
// internal error before the process runs its first instruction: such a start is made again.
inline HANDLE started(ProcessStart start, STARTUPINFOW& startup) {
  constexpr int kAttempts = 5;
  const wchar_t* directory = start.directory.empty() ? nullptr : start.directory.c_str();
  for (int attempt = 1;; ++attempt) {
    PROCESS_INFORMATION process = {};
    if (CreateProcessW(start.executable.c_str(), start.line.data(), nullptr, nullptr,
                       start.inherits, start.flags, nullptr, directory, &startup, &process)) {
      CloseHandle(process.hThread);
      return process.hProcess;
    }
    const DWORD error = GetLastError();
    if (error != ERROR_INTERNAL_ERROR || attempt == kAttempts)
      throw std::runtime_error("a process cannot be started: error " + std::to_string(error));
  }
}

}  // namespace ksv::test
