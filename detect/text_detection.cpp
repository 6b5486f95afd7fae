// dtctText: reads a file piece by piece until its encoding is settled.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "common/guard.h"
#include "common/path_encoding.h"
#include "common/platform.h"
#include "detect/language.h"
#include "detect/text_race.h"
#include "ksv_detect.h"

namespace ksv::detect {
namespace {

constexpr uint32_t kChunkSize = 2048;
constexpr uint32_t kMostRead = 4 * 1024 * 1024;  // behind it no further chunk is read

// Most texts are settled by their first chunk, which is all that is read of them. Of
// the others many chunks are read at once.
constexpr uint32_t kBlockSize = 16 * kChunkSize;

// A file as chunks, read one behind the other. Its size is taken once.
class ChunkReader {
 public:
  explicit ChunkReader(platform::InputFile& file)
      : file_(file),
        size_(static_cast<uint32_t>(
            std::min<int64_t>(file.size(), std::numeric_limits<uint32_t>::max()))) {}

  bool hasMore() const { return offset_ < size_; }
  bool hasReadMost() const { return offset_ > kMostRead; }

  Chunk read() {
    if (next_ == held_) fill();
    const uint32_t length = std::min(held_ - next_, kChunkSize);
    const uint8_t* const data = buffer_ + next_;
    next_ += length;
    offset_ += length;
    return {data, length, hasMore()};
  }

 private:
  // A file that has become shorter meanwhile counts as zeroes for what is missing.
  void fill() {
    held_ = std::min(size_ - offset_, offset_ == 0 ? kChunkSize : kBlockSize);
    next_ = 0;
    const size_t count = file_.read(buffer_, held_);
    std::memset(buffer_ + count, 0, held_ - count);
  }

  platform::InputFile& file_;
  const uint32_t size_;
  uint32_t offset_ = 0;
  uint32_t next_ = 0;
  uint32_t held_ = 0;
  uint8_t buffer_[kBlockSize];
};

uint32_t detectText(ChunkReader& reader, Preference preference) {
  TextRace race(preference);
  Chunk chunk = reader.read();
  if (race.decideByMark(chunk)) return race.result();
  while (!race.decide(chunk) && reader.hasMore() && !reader.hasReadMost()) chunk = reader.read();
  return race.result();
}

uint32_t detectFile(const char* path, const char* language) {
  if (path == nullptr || !isUsablePath(path)) return KSV_TEXT_FAILURE;
  platform::InputFile file(path);
  if (file.size() <= 0) return KSV_TEXT_FAILURE;
  ChunkReader reader(file);
  const uint32_t result = detectText(reader, preferenceFor(language));
  // Zeroes stood for what could not be read.
  return file.error() == 0 ? result : KSV_TEXT_FAILURE;
}

}  // namespace
}  // namespace ksv::detect

uint32_t dtctText(const char* path, const char* language) {
  return ksv::guarded(KSV_TEXT_FAILURE, [&] { return ksv::detect::detectFile(path, language); });
}
