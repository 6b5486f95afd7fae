#include "common/wide_text_windows.h"

#include <cstring>
#include <limits>
#include <new>

namespace ksv::platform {
namespace {

bool isUtf8(UINT codePage) {
  return codePage == CP_UTF8 || (codePage == CP_ACP && GetACP() == CP_UTF8);
}

}  // namespace

WideText::WideText(const char* text, UINT codePage) {
  const size_t size = std::strlen(text) + 1;
  if (size > static_cast<size_t>(std::numeric_limits<int>::max())) return;
  // No code page has characters of fewer bytes than units.
  units_.reset(new (std::nothrow) wchar_t[size]);
  ranOutOfMemory_ = !units_;
  if (ranOutOfMemory_) return;
  const DWORD flags = MB_ERR_INVALID_CHARS | (isUtf8(codePage) ? 0 : MB_PRECOMPOSED);
  const int length = static_cast<int>(size);
  if (MultiByteToWideChar(codePage, flags, text, length, units_.get(), length) == 0) {
    units_.reset();
  }
}

std::optional<std::string> narrowText(const wchar_t* units, UINT codePage) {
  // A character that only resembles the one that is meant would name another file.
  const bool utf8 = isUtf8(codePage);
  const DWORD flags = utf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
  BOOL replaced = FALSE;
  BOOL* const replacedOut = utf8 ? nullptr : &replaced;
  const int size =
      WideCharToMultiByte(codePage, flags, units, -1, nullptr, 0, nullptr, replacedOut);
  if (size <= 0 || replaced) return std::nullopt;
  std::string text(static_cast<size_t>(size), '\0');
  if (WideCharToMultiByte(codePage, flags, units, -1, text.data(), size, nullptr, nullptr) !=
      size) {
    return std::nullopt;
  }
  text.pop_back();
  return text;
}

std::wstring absolutePath(const wchar_t* path) {
  return writtenBy([path](wchar_t* buffer, DWORD capacity) {
    return GetFullPathNameW(path, capacity, buffer, nullptr);
  });
}

}  // namespace ksv::platform
