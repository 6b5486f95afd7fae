#include "cli/mail/line_reader.h"

#include <cstring>

namespace ksv_cli {
namespace {

constexpr size_t kBlock = 64 * 1024;

}  // namespace

LineReader::LineReader(ByteSource& source)
    : source_(source), block_(std::make_unique_for_overwrite<uint8_t[]>(kBlock)) {}

// More bytes behind those that are there. False when there are none, or no room.
bool LineReader::fill() {
  if (at_ > 0) std::memmove(block_.get(), block_.get() + at_, end_ - at_);
  end_ -= at_;
  at_ = 0;
  if (end_ == kBlock) return false;
  const size_t count = source_.read(block_.get() + end_, kBlock - end_);
  end_ += count;
  return count != 0;
}

bool LineReader::next(LinePiece& piece) {
  size_t searched = 0;
  const void* lineEnd = nullptr;
  do {
    const uint8_t* begin = block_.get() + at_;
    const size_t held = end_ - at_;
    lineEnd = held == searched ? nullptr : std::memchr(begin + searched, '\n', held - searched);
    searched = held;
  } while (lineEnd == nullptr && fill());
  if (at_ == end_) return false;
  const uint8_t* begin = block_.get() + at_;
  const size_t size = lineEnd == nullptr
                          ? end_ - at_
                          : static_cast<size_t>(static_cast<const uint8_t*>(lineEnd) - begin) + 1;
  piece = {{reinterpret_cast<const char*>(begin), size}, offset_, !isInLine_, lineEnd != nullptr};
  at_ += size;
  offset_ += size;
  isInLine_ = lineEnd == nullptr;
  return true;
}

}  // namespace ksv_cli
