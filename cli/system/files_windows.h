// What files and standard streams share.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "cli/system/files.h"
#include "cli/system/open_file_windows.h"
#include "cli/system/streams.h"

namespace ksv_cli::platform {

class HandleSource : public ByteSource {
 public:
  explicit HandleSource(HANDLE handle) : handle_(handle) {}
  size_t read(uint8_t* buffer, size_t size) override;

 private:
  HANDLE handle_;
};

class HandleSink : public ByteSink {
 public:
  explicit HandleSink(HANDLE handle) : handle_(handle) {}
  void write(const uint8_t* bytes, size_t size) override { writeAll(handle_, bytes, size); }

 private:
  HANDLE handle_;
};

FileFacts factsOf(HANDLE handle);

// For a look at it, which no other program's use of it forbids.
HANDLE openToLook(const std::wstring& path);

}  // namespace ksv_cli::platform
