#include <malloc.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <stdexcept>

#include "tests/system/start_windows.h"
#include "tests/system/system.h"
#include "tests/system/wide_windows.h"

namespace ksv::test {

const char kTemporaryVariable[] = "TMP";
const char kConfigurationVariable[] = "APPDATA";

namespace {

constexpr UINT kKilled = 0xFFFFFFFF;

[[noreturn]] void fail(const char* what) { throw std::runtime_error(what); }

std::string withSlashes(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

// What call writes into a buffer of the size that it asks for.
template <class Call>
std::wstring written(Call call) {
  std::wstring units(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = call(units.data(), static_cast<DWORD>(units.size()));
    const bool fits = length < units.size();
    units.resize(length);
    if (fits) return units;
  }
}

std::wstring canonical(const std::wstring& directory) {
  const HANDLE handle = CreateFileW(directory.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return directory;
  std::wstring path = written([handle](wchar_t* buffer, DWORD size) {
    return GetFinalPathNameByHandleW(handle, buffer, size, FILE_NAME_NORMALIZED);
  });
  CloseHandle(handle);
  constexpr wchar_t kLongForm[] = L"\\\\?\\";
  return path.starts_with(kLongForm) ? path.substr(std::size(kLongForm) - 1) : path;
}

// All kinds of objects share their names: no other has this one.
std::string newSharedName() {
  static std::atomic<int> counter = 0;
  return "Local\\ksv_test_memory." + std::to_string(GetCurrentProcessId()) + "." +
         std::to_string(++counter);
}

HANDLE checked(HANDLE mapping) {
  if (mapping == nullptr) fail("shared memory cannot be opened");
  return mapping;
}

void* mapShared(intptr_t mapping, size_t size) {
  void* address = MapViewOfFile(reinterpret_cast<HANDLE>(mapping), FILE_MAP_ALL_ACCESS, 0, 0, size);
  if (address == nullptr) fail("shared memory cannot be mapped");
  return address;
}

}  // namespace

std::string makeTemporaryDirectory(const std::string& prefix, const std::string& parent) {
  static std::atomic<unsigned> counter = 0;
  std::wstring base = wide(parent);
  if (base.empty()) {
    base = written([](wchar_t* buffer, DWORD size) { return GetTempPathW(size, buffer); });
  }
  if (base.back() != L'\\' && base.back() != L'/') base.push_back(L'\\');
  for (;;) {
    const std::wstring path = base + wide(prefix) + L"." + std::to_wstring(GetCurrentProcessId()) +
                              L"." + std::to_wstring(++counter);
    if (CreateDirectoryW(path.c_str(), nullptr)) return withSlashes(narrow(canonical(path)));
    if (GetLastError() != ERROR_ALREADY_EXISTS) fail("a temporary directory cannot be made");
  }
}

std::optional<std::string> variable(const char* name) {
  const std::wstring wideName = wide(name);
  if (GetEnvironmentVariableW(wideName.c_str(), nullptr, 0) == 0) return std::nullopt;
  return narrow(written([&](wchar_t* buffer, DWORD size) {
    return GetEnvironmentVariableW(wideName.c_str(), buffer, size);
  }));
}

void setVariable(const char* name, const std::optional<std::string>& value) {
  _wputenv_s(wide(name).c_str(), wide(value.value_or("")).c_str());
}

std::optional<std::string> toAnsi(const std::string& utf8) {
  const std::string ansi = narrow(wide(utf8), CP_ACP);
  return fromAnsi(ansi) == utf8 ? std::optional<std::string>(ansi) : std::nullopt;
}

std::string fromAnsi(const std::string& ansi) { return narrow(wide(ansi, CP_ACP)); }

ptrdiff_t openDescriptors() {
  DWORD count = 0;
  GetProcessHandleCount(GetCurrentProcess(), &count);
  return static_cast<ptrdiff_t>(count);
}

size_t usableSize(void* block) { return _msize(block); }

std::string ownExecutable() {
  return withSlashes(narrow(written(
      [](wchar_t* buffer, DWORD size) { return GetModuleFileNameW(nullptr, buffer, size); })));
}

std::vector<std::string> commandLine(int, char**) {
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 0; i < count; ++i) arguments.push_back(narrow(words[i]));
  LocalFree(words);
  return arguments;
}

void markForTracers(const char*) {}

void killOwnProcess() {
  TerminateProcess(GetCurrentProcess(), kKilled);
  abort();
}

ChildProcess ChildProcess::start(const char* name, const Arguments& arguments) {
  const std::wstring executable = wide(ownExecutable());
  std::wstring line = quoted(executable) + L" " + wide(kChildOption) + L" " + quoted(wide(name));
  for (const std::string& argument : arguments) line += L" " + quoted(wide(argument));
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  return ChildProcess(
      reinterpret_cast<intptr_t>(started({.executable = executable, .line = line}, startup)));
}

int ChildProcess::result() {
  if (handle_ == kNone) return result_;
  const auto process = reinterpret_cast<HANDLE>(std::exchange(handle_, kNone));
  DWORD code = kKilled;
  WaitForSingleObject(process, INFINITE);
  GetExitCodeProcess(process, &code);
  CloseHandle(process);
  // A crash ends a process with a code whose top bit is set.
  result_ = std::max(static_cast<int>(code), -1);
  return result_;
}

void ChildProcess::kill() {
  if (handle_ != kNone) TerminateProcess(reinterpret_cast<HANDLE>(handle_), kKilled);
}

SharedMemory::SharedMemory(size_t size)
    : name_(newSharedName()),
      size_(size),
      owned_(true),
      mapping_(reinterpret_cast<intptr_t>(
          checked(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                     static_cast<DWORD>(size), wide(name_).c_str())))),
      address_(mapShared(mapping_, size)) {}

SharedMemory::SharedMemory(const std::string& name, size_t size)
    : name_(name),
      size_(size),
      owned_(false),
      mapping_(reinterpret_cast<intptr_t>(
          checked(OpenFileMappingW(FILE_MAP_ALL_ACCESS, FALSE, wide(name).c_str())))),
      address_(mapShared(mapping_, size)) {}

SharedMemory::~SharedMemory() {
  UnmapViewOfFile(address_);
  CloseHandle(reinterpret_cast<HANDLE>(mapping_));
}

}  // namespace ksv::test
