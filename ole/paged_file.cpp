#include "ole/paged_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

#include "common/little_endian.h"
#include "ksv_file.h"

namespace ksv {

std::unique_ptr<PagedFile> PagedFile::open(const char* path) {
  Stream stream(KSV_FileOpen(path, "rb"));
  if (stream == nullptr) return nullptr;
  // The pages are the buffer.
  std::setvbuf(stream.get(), nullptr, _IONBF, 0);
  const int64_t size = KSV_FileTellSize(stream.get());
  if (size < 0) return nullptr;
  return std::unique_ptr<PagedFile>(new PagedFile(std::move(stream), size));
}

void PagedFile::close() {
  stream_.reset();
  for (auto& page : pages_) page.reset();
}

size_t PagedFile::read(int64_t offset, void* dest, size_t count) {
  if (offset < 0) return 0;
  if (count >= kPageSize) return readDirectly(offset, dest, count);
  uint8_t* out = static_cast<uint8_t*>(dest);
  size_t done = 0;
  while (done < count) {
    const int64_t at = offset + static_cast<int64_t>(done);
    const Page& source = page(at / static_cast<int64_t>(kPageSize));
    const size_t inPage = static_cast<size_t>(at) % kPageSize;
    if (inPage >= source.length) break;
    const size_t piece = std::min(count - done, source.length - inPage);
    std::memcpy(out + done, source.bytes.data() + inPage, piece);
    done += piece;
  }
  return done;
}

uint32_t PagedFile::dword(int64_t offset) {
  const Page& source = page(offset / static_cast<int64_t>(kPageSize));
  const size_t inPage = static_cast<size_t>(offset) % kPageSize;
  return inPage + 4 <= source.length ? dwordAt(source.bytes.data() + inPage) : 0;
}

const PagedFile::Page& PagedFile::page(int64_t number) {
  std::unique_ptr<Page>& slot = pages_[static_cast<size_t>(number) % kPages];
  if (!slot) slot.reset(new Page);
  if (slot->number != number) {
    slot->number = -1;
    slot->length =
        readDirectly(number * static_cast<int64_t>(kPageSize), slot->bytes.data(), kPageSize);
    slot->number = number;
  }
  return *slot;
}

size_t PagedFile::readDirectly(int64_t offset, void* dest, size_t count) {
  // What is behind the end need not be asked for.
  if (offset >= size_) return 0;
  if (offset != position_) seekTo(offset);
  const int64_t most = std::min<int64_t>(std::numeric_limits<int32_t>::max(), size_ - offset);
  const int32_t wanted =
      static_cast<int32_t>(std::min<uint64_t>(count, static_cast<uint64_t>(most)));
  const int32_t got = KSV_FileRead(dest, 1, wanted, stream_.get());
  // Whatever was read: where the stream stands after less is not relied upon.
  position_ = got == wanted ? offset + got : -1;
  if (got != wanted && (stream_ == nullptr || std::ferror(stream_.get()) != 0)) fail();
  return static_cast<size_t>(got);
}

void PagedFile::seekTo(int64_t offset) {
  position_ = -1;
  if (stream_ == nullptr || KSV_FileSeek(stream_.get(), offset, SEEK_SET) != 0) fail();
}

void PagedFile::fail() {
  const int error = errno;
  if (stream_ != nullptr) std::clearerr(stream_.get());
  throw std::system_error(error, std::generic_category(), "cannot be read");
}

}  // namespace ksv
