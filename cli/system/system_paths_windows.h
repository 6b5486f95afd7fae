// Text and paths as the system has them, in units of UTF-16.
#pragma once

#include <windows.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ksv_cli::platform {

inline constexpr wchar_t kSeparators[] = L"/\\";

std::string utf8Of(std::wstring_view units);
// None when the bytes are no UTF-8.
std::optional<std::wstring> utf16Of(std::string_view text);

bool isVerbatimOrDevice(const std::wstring& path);

// A path as the system takes it: one that is too long for the usual form in the
// form without a limit. Directories have to leave room for a short name.
std::wstring systemPath(std::wstring path);
// Throws Failure for what is no UTF-8.
std::wstring systemPath(const std::string& path);

// How much of a path is in front of its last component.
template <typename Text>
size_t directoryLength(const Text& path, const typename Text::value_type* separators) {
  const size_t separator = path.find_last_of(separators);
  if (separator != Text::npos) return separator + 1;
  return path.size() >= 2 && path[1] == ':' ? 2 : 0;
}

}  // namespace ksv_cli::platform
