// A file that is read here and there, through a few of its pages kept in memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <utility>

#include "common/stream.h"
#include "ole/limits.h"

namespace ksv {

class PagedFile {
 public:
  // Null when the file cannot be opened or has no size. May throw std::bad_alloc.
  static std::unique_ptr<PagedFile> open(const char* path);

  PagedFile(const PagedFile&) = delete;
  PagedFile& operator=(const PagedFile&) = delete;

  // In bytes, as it was when the file was opened.
  int64_t size() const { return size_; }

  // Whether count bytes lie at offset.
  bool holds(int64_t offset, int64_t count) const { return offset >= 0 && offset <= size_ - count; }

  // The functions below throw std::system_error where the system refuses to read: that is
  // not the end of the file.

  // Copies count bytes at offset; fewer, 0 included, where the file ends.
  size_t read(int64_t offset, void* dest, size_t count);

  // The value at an offset that is a multiple of 4; 0 behind the end of the file.
  uint32_t dword(int64_t offset);

  // Gives the file back to the system; nothing can be read any more.
  void close();

 private:
  static constexpr size_t kPageSize = limits::kPageSize;
  static constexpr size_t kPages = limits::kPages;

  struct Page {
    int64_t number = -1;
    size_t length = 0;
    std::array<uint8_t, kPageSize> bytes;
  };

  PagedFile(Stream stream, int64_t size) : stream_(std::move(stream)), size_(size) {}

  const Page& page(int64_t number);
  size_t readDirectly(int64_t offset, void* dest, size_t count);
  void seekTo(int64_t offset);
  [[noreturn]] void fail();

  Stream stream_;
  const int64_t size_;
  int64_t position_ = 0;  // of the stream
  // Page n of the file stands in slot n modulo the slots.
  std::array<std::unique_ptr<Page>, kPages> pages_;
};

}  // namespace ksv
