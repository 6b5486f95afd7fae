#include <windows.h>

#include <string_view>

#include "cli/system/failure.h"
#include "cli/system/open_file_windows.h"
#include "cli/system/process.h"
#include "cli/system/system_paths_windows.h"
#include "cli/system/temporary_names_windows.h"
#include "common/wide_text_windows.h"

namespace ksv_cli::platform {

std::vector<std::string> commandLineArguments(int, char**) {
  int count = 0;
  wchar_t** words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  if (words == nullptr) fail(::GetLastError());
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(utf8Of(words[i]));
  ::LocalFree(words);
  return arguments;
}

std::string environmentValue(const char* name) {
  const std::wstring units = *utf16Of(name);
  return utf8Of(ksv::platform::writtenBy([&](wchar_t* buffer, DWORD size) {
    return ::GetEnvironmentVariableW(units.c_str(), buffer, size);
  }));
}

void prepareProcess() { removeTemporaryFilesAtInterrupts(); }

const char kOutOfMemory[] = "Not enough memory";

void tellOutOfMemory() noexcept {
  constexpr std::string_view kLastWords = "ksv: Not enough memory\r\n";
  DWORD written;
  ::WriteFile(::GetStdHandle(STD_ERROR_HANDLE), kLastWords.data(),
              static_cast<DWORD>(kLastWords.size()), &written, nullptr);
}

// Whoever is about to change a name when there is no memory waits for nobody.
void endOutOfMemory() noexcept {
  temporaryNames().tryToRemoveAllForGood();
  tellOutOfMemory();
  ::TerminateProcess(::GetCurrentProcess(), kExitFailed);
  for (;;) ::Sleep(INFINITE);
}

}  // namespace ksv_cli::platform
