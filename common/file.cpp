#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>

#include "common/guard.h"
#include "common/path_encoding.h"
#include "common/platform.h"
#include "ksv_file.h"

namespace platform = ksv::platform;

namespace {

constexpr size_t kModeUnits = 32;  // terminator included

bool isUsableMode(const char* mode) {
  if (mode == nullptr) return false;
  const std::optional<size_t> units = ksv::utf16Length(mode);
  return units && *units < kModeUnits;
}

bool isUsable(const void* buffer, int32_t size, int32_t count, const std::FILE* stream) {
  return buffer != nullptr && size >= 0 && count >= 0 && stream != nullptr;
}

// A signal that is handled interrupts, and means nothing.
size_t readOn(void* buffer, size_t bytes, std::FILE* stream) {
  const bool hasFailed = std::ferror(stream) != 0;
  size_t done = 0;
  for (;;) {
    errno = 0;
    done += std::fread(static_cast<char*>(buffer) + done, 1, bytes - done, stream);
    const bool isInterrupted = std::ferror(stream) != 0 && errno == EINTR;
    if (done == bytes || hasFailed || !isInterrupted) return done;
    std::clearerr(stream);
  }
}

template <class Value>
int getValue(std::FILE* stream, Value* value) {
  return KSV_FileRead(value, sizeof *value, 1, stream);
}

template <class Value>
int putValue(std::FILE* stream, Value value) {
  return KSV_FileWrite(&value, sizeof value, 1, stream);
}

}  // namespace

std::FILE* KSV_FileOpen(const char* path, const char* mode) {
  if (path == nullptr || !ksv::isUsablePath(path) || !isUsableMode(mode)) return nullptr;
  return platform::openFile(path, mode);
}

std::FILE* KSV_FileOpenA(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) return nullptr;
  return ksv::guarded<std::FILE*>(nullptr, [&]() -> std::FILE* {
    const std::optional<std::string> utf8 = platform::ansiToUtf8(path);
    return utf8 ? platform::openFile(utf8->c_str(), mode) : nullptr;
  });
}

int KSV_FileClose(std::FILE* stream) { return stream == nullptr ? EOF : std::fclose(stream); }

int32_t KSV_FileRead(void* buffer, int32_t size, int32_t count, std::FILE* stream) {
  if (!isUsable(buffer, size, count, stream) || size == 0) return 0;
  const size_t bytes = static_cast<size_t>(size) * static_cast<size_t>(count);
  return static_cast<int32_t>(readOn(buffer, bytes, stream) / static_cast<size_t>(size));
}

int32_t KSV_FileWrite(const void* buffer, int32_t size, int32_t count, std::FILE* stream) {
  if (!isUsable(buffer, size, count, stream)) return 0;
  return static_cast<int32_t>(
      std::fwrite(buffer, static_cast<size_t>(size), static_cast<size_t>(count), stream));
}

char* KSV_FileReadLine(char* buffer, int32_t capacity, std::FILE* stream) {
  if (buffer == nullptr || capacity <= 0 || stream == nullptr) return nullptr;
  // C runtimes differ about a line that only has room for its terminator.
  if (capacity == 1) {
    buffer[0] = '\0';
    return buffer;
  }
  return std::fgets(buffer, capacity, stream);
}

int KSV_FileSeek(std::FILE* stream, int64_t offset, int origin) {
  return stream == nullptr ? -1 : platform::seekFile(stream, offset, origin);
}

int64_t KSV_FileTell(std::FILE* stream) {
  return stream == nullptr ? -1 : platform::tellFile(stream);
}

int64_t KSV_FileTellSize(std::FILE* stream) {
  const int64_t position = KSV_FileTell(stream);
  if (position < 0) return -1;
  const int64_t size = KSV_FileSeek(stream, 0, SEEK_END) == 0 ? KSV_FileTell(stream) : -1;
  // Where the stream stands elsewhere now, its caller would read or write the wrong bytes.
  return KSV_FileSeek(stream, position, SEEK_SET) == 0 ? size : -1;
}

int KSV_FileGetByte(std::FILE* stream, uint8_t* value) { return getValue(stream, value); }
int KSV_FileGetWord(std::FILE* stream, uint16_t* value) { return getValue(stream, value); }
int KSV_FileGetDWord(std::FILE* stream, uint32_t* value) { return getValue(stream, value); }
int KSV_FilePutByte(std::FILE* stream, uint8_t value) { return putValue(stream, value); }
int KSV_FilePutWord(std::FILE* stream, uint16_t value) { return putValue(stream, value); }
int KSV_FilePutDWord(std::FILE* stream, uint32_t value) { return putValue(stream, value); }

int KSV_VfPrintf(std::FILE* stream, const char* format, va_list arguments) {
  if (stream == nullptr || format == nullptr) return -1;
  return platform::printTo(stream, format, arguments);
}

int KSV_FileRemove(const char* path) {
  if (path == nullptr || !ksv::isUsablePath(path)) return -1;
  return platform::removeFile(path) ? 0 : -1;
}

int KSV_FileRemoveA(const char* path) {
  if (path == nullptr) return -1;
  return ksv::guarded(-1, [&] {
    const std::optional<std::string> utf8 = platform::ansiToUtf8(path);
    return utf8 && platform::removeFile(utf8->c_str()) ? 0 : -1;
  });
}

int64_t KSV_GetFileSizeByPath(const char* path) {
  platform::FileStatus status;
  if (path == nullptr || !ksv::isUsablePath(path)) return -1;
  return platform::fileStatus(path, status) ? status.size : -1;
}

int KSV_FileRemoveIfSizeIsZero(const char* path) {
  const int64_t size = KSV_GetFileSizeByPath(path);
  if (size < 0) return -1;
  if (size > 0) return 0;
  // 1 tells that the file was empty: callers do not mind one that stays.
  KSV_FileRemove(path);
  return 1;
}

int KSV_Is_NT(void) { return 1; }
