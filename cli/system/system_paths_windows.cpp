#include "cli/system/system_paths_windows.h"

#include <system_error>
#include <utility>

#include "cli/system/open_file_windows.h"
#include "common/wide_text_windows.h"

namespace ksv_cli::platform {

std::string utf8Of(std::wstring_view units) {
  const int length = static_cast<int>(units.size());
  std::string text(units.size() * 3, '\0');
  const int count = ::WideCharToMultiByte(CP_UTF8, 0, units.data(), length, text.data(),
                                          static_cast<int>(text.size()), nullptr, nullptr);
  text.resize(static_cast<size_t>(count));
  return text;
}

std::optional<std::wstring> utf16Of(std::string_view text) {
  const int length = static_cast<int>(text.size());
  std::wstring units(text.size(), L'\0');
  const int count = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length,
                                          units.data(), length);
  if (count == 0 && length != 0) return std::nullopt;
  units.resize(static_cast<size_t>(count));
  return units;
}

bool isVerbatimOrDevice(const std::wstring& path) {
  const std::wstring begin = path.substr(0, 4);
  return begin == L"\\\\?\\" || begin == L"\\\\.\\" || begin == L"//?/" || begin == L"//./";
}

std::wstring systemPath(std::wstring path) {
  constexpr size_t kLongest = MAX_PATH - 12;
  if (path.size() < kLongest || isVerbatimOrDevice(path)) return path;
  const std::wstring full = ksv::platform::absolutePath(path.c_str());
  if (full.empty()) return path;
  return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

std::wstring systemPath(const std::string& path) {
  std::optional<std::wstring> units = utf16Of(path);
  if (!units) fail(std::errc::illegal_byte_sequence);
  return systemPath(std::move(*units));
}

}  // namespace ksv_cli::platform
