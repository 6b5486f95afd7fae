#include <gtest/gtest.h>
#include <windows.h>
// Takes its types from there.
#include <psapi.h>

#include <algorithm>

#include "process.h"
#include "tests/system/start_windows.h"
#include "tests/system/wide_windows.h"

namespace ksv_cli_tests {
namespace {

using ksv::test::quoted;
using ksv::test::wide;

HANDLE handle(Stream stream) { return reinterpret_cast<HANDLE>(stream); }

Stream open(const std::wstring& path, DWORD access, DWORD disposition) {
  const HANDLE file =
      ::CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
  EXPECT_NE(file, INVALID_HANDLE_VALUE);
  return reinterpret_cast<Stream>(file);
}

void letInherit(const StandardStreams& streams, bool inherits) {
  for (const Stream stream : {streams.in, streams.out, streams.err})
    ::SetHandleInformation(handle(stream), HANDLE_FLAG_INHERIT, inherits ? HANDLE_FLAG_INHERIT : 0);
}

}  // namespace

Stream openForReading(const std::string& path) {
  return open(wide(path), GENERIC_READ, OPEN_EXISTING);
}
Stream openForAppending(const std::string& path) {
  return open(wide(path), FILE_APPEND_DATA | FILE_READ_ATTRIBUTES, OPEN_ALWAYS);
}
Stream openNullDevice() { return open(L"NUL", GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING); }

void writeTo(Stream stream, const std::string& text) {
  DWORD count = 0;
  ::WriteFile(handle(stream), text.data(), static_cast<DWORD>(text.size()), &count, nullptr);
  EXPECT_EQ(count, text.size());
}

void closeStreams(std::initializer_list<Stream> streams) {
  for (const Stream stream : streams) ::CloseHandle(handle(stream));
}

Pipe makePipe() {
  HANDLE reading = INVALID_HANDLE_VALUE;
  HANDLE writing = INVALID_HANDLE_VALUE;
  EXPECT_TRUE(::CreatePipe(&reading, &writing, nullptr, 0));
  return {reinterpret_cast<Stream>(reading), reinterpret_cast<Stream>(writing)};
}

Process startCommand(const std::string& directory, const std::vector<std::string>& arguments,
                     const StandardStreams& streams) {
  std::wstring line = L"ksv";
  for (const std::string& argument : arguments) line += L" " + quoted(wide(argument));
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = handle(streams.in);
  startup.hStdOutput = handle(streams.out);
  startup.hStdError = handle(streams.err);
  letInherit(streams, true);
  const HANDLE process = ksv::test::started(
      {.executable = wide(KSV_COMMAND), .line = line, .directory = wide(directory)}, startup);
  letInherit(streams, false);
  return reinterpret_cast<Process>(process);
}

// Not every system tells the peak of a process that has ended, so it is looked at
// while the process runs.
Outcome finishCommand(Process process) {
  constexpr DWORD kInterval = 5;
  const HANDLE running = handle(process);
  Outcome outcome;
  do {
    PROCESS_MEMORY_COUNTERS memory{};
    if (::GetProcessMemoryInfo(running, &memory, sizeof memory))
      outcome.peakKilobytes =
          std::max(outcome.peakKilobytes, static_cast<long>(memory.PeakWorkingSetSize / 1024));
  } while (::WaitForSingleObject(running, kInterval) == WAIT_TIMEOUT);
  DWORD status = 0;
  if (::GetExitCodeProcess(running, &status)) outcome.status = static_cast<int>(status);
  ::CloseHandle(running);
  return outcome;
}

}  // namespace ksv_cli_tests
