// dtctText: reads a file piece by piece until its encoding is settled.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>

#include "common/guard.h"
#include "detect/language.h"
#include "detect/text_race.h"
#include "ksv_detect.h"
#include "ksv_file.h"

namespace ksv::detect {
namespace {

constexpr uint32_t kChunkSize = 2048;
constexpr uint32_t kMostRead = 4 * 1024 * 1024;  // behind it no further chunk is read

struct CloseFile {
  void operator()(std::FILE* file) const { KSV_FileClose(file); }
};

// A file as chunks, read one behind the other. Its size is taken once.
class ChunkReader {
 public:
  ChunkReader(std::FILE* file, int64_t size)
      : file_(file),
        size_(
            static_cast<uint32_t>(std::min<int64_t>(size, std::numeric_limits<uint32_t>::max()))) {}

  bool hasMore() const { return offset_ < size_; }
  bool hasReadMost() const { return offset_ > kMostRead; }

  // A file that has become shorter meanwhile leaves in the buffer what was there;
  // that is scored for what is missing.
  Chunk read() {
    const uint32_t length = std::min(size_ - offset_, kChunkSize);
    KSV_FileRead(buffer_, 1, static_cast<int32_t>(length), file_);
    offset_ += length;
    return {buffer_, length, hasMore()};
  }

 private:
  std::FILE* file_;
  const uint32_t size_;
  uint32_t offset_ = 0;
  uint8_t buffer_[kChunkSize] = {};
};

uint32_t detectText(ChunkReader& reader, Preference preference) {
  TextRace race(preference);
  Chunk chunk = reader.read();
  if (race.decideByMark(chunk)) return race.result();
  while (!race.decide(chunk) && reader.hasMore() && !reader.hasReadMost()) chunk = reader.read();
  return race.result();
}

uint32_t detectFile(const char* path, const char* language) {
  const std::unique_ptr<std::FILE, CloseFile> file(KSV_FileOpen(path, "rb"));
  const int64_t size = file ? KSV_FileTellSize(file.get()) : 0;
  if (size <= 0) return KSV_TEXT_FAILURE;
  ChunkReader reader(file.get(), size);
  return detectText(reader, preferenceFor(language));
}

}  // namespace
}  // namespace ksv::detect

uint32_t dtctText(const char* path, const char* language) {
  return ksv::guarded(KSV_TEXT_FAILURE, [&] { return ksv::detect::detectFile(path, language); });
}
