// An open handle of the system. Only the *_windows.cpp files include it.
#pragma once

#include <windows.h>

#include <utility>

namespace ksv::platform {

class Handle {
 public:
  // Takes what a call gives, INVALID_HANDLE_VALUE and null included.
  explicit Handle(HANDLE handle = nullptr)
      : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Handle() {
    if (handle_ != nullptr) CloseHandle(handle_);
  }

  explicit operator bool() const { return handle_ != nullptr; }
  HANDLE get() const { return handle_; }
  // Leaves closing it to the caller.
  HANDLE release() { return std::exchange(handle_, nullptr); }

 private:
  HANDLE handle_;
};

}  // namespace ksv::platform
