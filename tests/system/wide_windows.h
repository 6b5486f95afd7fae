// UTF-16 for the calls of the Windows sides of the tests.
#pragma once

#include <windows.h>

#include <string>

namespace ksv::test {

inline std::wstring wide(const std::string& text, UINT codePage = CP_UTF8) {
  const int length = static_cast<int>(text.size());
  std::wstring units(text.size(), L'\0');
  const int count = MultiByteToWideChar(codePage, 0, text.data(), length, units.data(), length);
  units.resize(static_cast<size_t>(count));
  return units;
}

inline std::string narrow(const std::wstring& units, UINT codePage = CP_UTF8) {
  const int length = static_cast<int>(units.size());
  std::string text(units.size() * 3, '\0');
  const int count = WideCharToMultiByte(codePage, 0, units.data(), length, text.data(),
                                        static_cast<int>(text.size()), nullptr, nullptr);
  text.resize(static_cast<size_t>(count));
  return text;
}

// As the system takes a command line apart again.
inline std::wstring quoted(const std::wstring& word) {
  std::wstring text = L"\"";
  size_t backslashes = 0;
  for (const wchar_t unit : word) {
    if (unit == L'"') text.append(backslashes + 1, L'\\');
    backslashes = unit == L'\\' ? backslashes + 1 : 0;
    text.push_back(unit);
  }
  return text.append(backslashes, L'\\') + L'"';
}

}  // namespace ksv::test
