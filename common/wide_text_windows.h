// Between the library's byte strings and the UTF-16 of the system's wide calls.
// Only the *_windows.cpp files include it.
#pragma once

#include <windows.h>

#include <memory>
#include <new>
#include <optional>
#include <string>

namespace ksv::platform {

// A string as the system's wide calls take it; null when text is not well-formed
// or memory has run out. Does not throw.
class WideText {
 public:
  explicit WideText(const char* text, UINT codePage = CP_UTF8);

  explicit operator bool() const { return units_ != nullptr; }
  const wchar_t* get() const { return units_.get(); }
  bool ranOutOfMemory() const { return ranOutOfMemory_; }
  // For those who may throw: want of memory is not the absence of what the text names.
  void demandMemory() const {
    if (ranOutOfMemory_) throw std::bad_alloc();
  }

 private:
  bool ranOutOfMemory_ = false;
  std::unique_ptr<wchar_t[]> units_;
};

// The way back; none when a unit has no counterpart.
std::optional<std::string> narrowText(const wchar_t* units, UINT codePage = CP_UTF8);

// What call writes into a buffer of so many units, its result being the length
// without a terminator or, when the buffer is too short, what it takes. Empty when
// the call fails.
template <class Call>
std::wstring writtenBy(Call call) {
  std::wstring units(MAX_PATH, L'\0');
  for (;;) {
    const auto capacity = static_cast<DWORD>(units.size());
    const DWORD length = call(units.data(), capacity);
    units.resize(length);
    if (length < capacity) return units;
    // Some calls cut the text off and tell the capacity.
    if (length == capacity) units.resize(2 * size_t{capacity});
  }
}

// The absolute path of path, without dots in it; empty when the system refuses.
std::wstring absolutePath(const wchar_t* path);

}  // namespace ksv::platform
