// Characters, settings and places of Windows.
#include <windows.h>

#include <array>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <memory>
#include <system_error>

#include "common/platform.h"
#include "common/wide_text_windows.h"

namespace ksv::platform {
namespace {

constexpr wchar_t kSettingsLibrary[] = L"ksv_conf.dll";
constexpr WORD kSettingOrdinal = 100;
constexpr int kSettingSize = 260;
using ReadSetting = int (*)(const char* key, char* buffer, int size);

// An address inside the file that this code was loaded from.
const char ownAddress = 0;

struct FreeModule {
  using pointer = HMODULE;
  void operator()(HMODULE module) const { FreeLibrary(module); }
};
using Module = std::unique_ptr<HMODULE, FreeModule>;

std::wstring ownFile() {
  HMODULE own = nullptr;
  constexpr DWORD kFlags =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (!GetModuleHandleExW(kFlags, reinterpret_cast<const wchar_t*>(&ownAddress), &own)) return {};
  return writtenBy(
      [own](wchar_t* buffer, DWORD capacity) { return GetModuleFileNameW(own, buffer, capacity); });
}

// With the separator that ends it.
std::wstring ownDirectory() {
  const std::wstring file = ownFile();
  return file.substr(0, file.rfind(L'\\') + 1);
}

// One that cannot be loaded is no reason for the system to show a message.
Module load(const std::wstring& file, DWORD flags) {
  DWORD before = 0;
  SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &before);
  Module library(LoadLibraryExW(file.c_str(), nullptr, flags));
  SetThreadErrorMode(before, nullptr);
  return library;
}

// Looked for where programs are installed: the host's own directory, those it has
// added and the system's, then this library's. Never in the current directory or
// along PATH, where anybody who can write a file to a place that the user happens
// to work in would get code into the host.
Module loadSettingsLibrary() {
  Module library = load(kSettingsLibrary, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
  if (library) return library;
  const std::wstring directory = ownDirectory();
  if (directory.empty()) return nullptr;
  return load(directory + kSettingsLibrary,
              LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
}

std::optional<std::string> converted(const char* text, UINT from, UINT to) {
  const WideText wide(text, from);
  wide.demandMemory();
  return wide ? narrowText(wide.get(), to) : std::nullopt;
}

std::string systemMessage(DWORD error) {
  wchar_t text[512];
  DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, error, 0, text, std::size(text) - 1, nullptr);
  while (length > 0 && std::wcschr(L"\r\n .", text[length - 1]) != nullptr) --length;
  text[length] = L'\0';
  const std::optional<std::string> narrow = narrowText(text);
  return length == 0 || !narrow ? "error " + std::to_string(error) : *narrow;
}

}  // namespace

// In the words of the C library where it has any.
std::string errorText(SystemError error) {
  const std::error_condition kind = std::system_category().default_error_condition(error);
  if (kind.category() == std::generic_category()) return kind.message();
  return systemMessage(static_cast<DWORD>(error));
}

std::optional<std::string> environmentValue(const char* name) {
  const WideText wide(name);
  wide.demandMemory();
  if (!wide) return std::nullopt;
  const std::wstring value = writtenBy([&](wchar_t* buffer, DWORD capacity) {
    return GetEnvironmentVariableW(wide.get(), buffer, capacity);
  });
  if (value.empty()) return std::nullopt;
  return narrowText(value.c_str());
}

// What the function returns says nothing: a value is there when it wrote one.
std::optional<std::string> settingFromLibrary(const char* key) {
  const Module library = loadSettingsLibrary();
  if (!library) return std::nullopt;
  const FARPROC function = GetProcAddress(library.get(), MAKEINTRESOURCEA(kSettingOrdinal));
  if (function == nullptr) return std::nullopt;
  std::array<char, kSettingSize> value = {};
  reinterpret_cast<ReadSetting>(reinterpret_cast<void*>(function))(key, value.data(), kSettingSize);
  value.back() = '\0';
  if (value[0] == '\0') return std::nullopt;
  return std::string(value.data());
}

std::vector<std::string> configurationDirectories() {
  std::vector<std::string> directories;
  if (auto applications = environmentValue("APPDATA")) directories.push_back(*applications);
  if (auto library = libraryDirectory()) directories.push_back(*library);
  return directories;
}

std::optional<std::string> libraryDirectory() {
  std::wstring directory = ownDirectory();
  if (directory.empty()) return std::nullopt;
  constexpr size_t kRootLength = 3;
  if (directory.size() > kRootLength) directory.pop_back();
  return narrowText(directory.c_str());
}

char pathSeparator() { return '\\'; }

size_t driveLength(const char* path) {
  const char letter = static_cast<char>(path[0] | 0x20);
  return letter >= 'a' && letter <= 'z' && path[1] == ':' ? 2 : 0;
}

// Upper case, by the plain table that file systems use: no character turns into
// two, and no language has its way. They fold nothing beyond the first plane.
char32_t foldNameCharacter(char32_t character) {
  if (character < 0x80) {
    return character >= U'a' && character <= U'z' ? character - (U'a' - U'A') : character;
  }
  if (character > 0xFFFF) return character;
  const auto unit = static_cast<wchar_t>(character);
  wchar_t upper = unit;
  LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, &unit, 1, &upper, 1, nullptr, nullptr, 0);
  return upper;
}

std::optional<std::string> ansiToUtf8(const char* ansi) { return converted(ansi, CP_ACP, CP_UTF8); }

std::optional<std::string> utf8ToAnsi(const char* utf8) { return converted(utf8, CP_UTF8, CP_ACP); }

std::optional<std::string> canonicalDirectory(const char* path) {
  const WideText wide(path);
  wide.demandMemory();
  const DWORD attributes = wide ? GetFileAttributesW(wide.get()) : INVALID_FILE_ATTRIBUTES;
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
    return std::nullopt;
  const std::wstring absolute = absolutePath(wide.get());
  return absolute.empty() ? std::nullopt : narrowText(absolute.c_str());
}

std::string temporaryDirectory() {
  const std::wstring directory =
      writtenBy([](wchar_t* buffer, DWORD capacity) { return GetTempPathW(capacity, buffer); });
  return narrowText(directory.c_str()).value_or(std::string());
}

}  // namespace ksv::platform
