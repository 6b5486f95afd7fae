#include <algorithm>
#include <cstring>

#include "ole/compound_file.h"
#include "ole/limits.h"

namespace ksv {
namespace {

// Ends the chains of some files; no other reader knows it, and it has to stay.
constexpr uint32_t kOtherEndOfChain = 0xCFFFFFFE;

bool endsChain(uint32_t sector) {
  return sector == kEndOfChain || sector == kFatSector || sector == kOtherEndOfChain;
}

}  // namespace

std::unique_ptr<CompoundStream> CompoundStream::open(CompoundFile& file,
                                                     const DirectoryEntry& entry) {
  const bool isMini = entry.size < file.header().miniStreamCutoff;
  if (isMini && file.directory().miniStreamStart() == kFreeSector) return nullptr;
  std::unique_ptr<CompoundStream> stream(new CompoundStream(file, entry.size, isMini));
  if (!stream->loadChain(entry.startingSector) || stream->moveTo(0) == kFailed) return nullptr;
  return stream;
}

// A chain that comes back to itself is longer than any table; one that does not is never
// longer than its table.
bool CompoundStream::loadChain(uint32_t first) {
  LoopDetector loop;
  for (uint32_t sector = first; !endsChain(sector);) {
    const std::optional<uint32_t> next = linkBehind(sector);
    if (!next || loop.comesBackTo(sector)) return false;
    chain_.push_back(sector);
    sector = *next;
  }
  chain_.push_back(kEndOfChain);
  return true;
}

std::optional<uint32_t> CompoundStream::linkBehind(uint32_t sector) const {
  if (isMini_) {
    if (sector >= file_.miniFatEntries()) return std::nullopt;
    return file_.nextMiniSector(sector);
  }
  const uint32_t next = file_.sectors().next(sector);
  return next == kFreeSector ? std::nullopt : std::optional(next);
}

// Positions are signed: one from 2^31 up is before the start.
uint32_t CompoundStream::moveTo(uint32_t position) {
  const bool isBeforeStart = static_cast<int32_t>(position) < 0;
  position_ = isBeforeStart ? 0 : std::min(position, size_);
  return offsetOf(position_) ? position_ : kFailed;
}

std::optional<int64_t> CompoundStream::offsetOf(uint32_t position) const {
  const size_t index = position / unit_;
  if (index >= chain_.size()) return std::nullopt;
  const uint32_t sector = chain_[index];
  if (sector == kEndOfChain) return file_.file().size();
  const uint32_t inUnit = position % unit_;
  return isMini_ ? file_.offsetOfMini(sector, inUnit) : file_.sectors().offsetOf(sector, inUnit);
}

// How much lies in one piece at an offset of the file: sectors that follow each other
// there are one piece.
uint32_t CompoundStream::pieceAt(uint32_t position, int64_t offset, uint32_t wanted) const {
  uint32_t piece = unit_ - position % unit_;
  if (isMini_) return std::min(piece, wanted);
  size_t index = position / unit_;
  while (piece < wanted && chain_[index] != kEndOfChain && chain_[index + 1] == chain_[index] + 1 &&
         offset + piece + unit_ <= limits::kHighestOffset) {
    piece += unit_;
    ++index;
  }
  return std::min(piece, wanted);
}

uint32_t CompoundStream::readPieces(uint8_t* dest, uint32_t count) {
  uint32_t done = 0;
  while (done < count) {
    const std::optional<int64_t> offset = offsetOf(position_);
    if (!offset) break;
    const uint32_t piece = pieceAt(position_, *offset, count - done);
    const uint32_t got = static_cast<uint32_t>(file_.file().read(*offset, dest + done, piece));
    done += got;
    position_ += got;
    if (got < piece) break;
  }
  return done;
}

uint32_t CompoundStream::readableFrom(uint32_t position, uint32_t count) const {
  if (position >= size_) return 0;
  const uint32_t wanted = std::min(count, size_ - position);
  uint32_t done = 0;
  while (done < wanted) {
    const std::optional<int64_t> offset = offsetOf(position + done);
    if (!offset) break;
    const uint32_t piece = pieceAt(position + done, *offset, wanted - done);
    const int64_t left = std::max<int64_t>(file_.file().size() - *offset, 0);
    if (left < piece) return done + static_cast<uint32_t>(left);
    done += piece;
  }
  return done;
}

// Where memory or the system fails nothing has been read.
uint32_t CompoundStream::read(void* dest, uint32_t count) {
  const uint32_t start = position_ - buffered_ + cursor_;
  try {
    return readOn(dest, count);
  } catch (...) {
    position_ = start;
    cursor_ = buffered_ = 0;
    throw;
  }
}

// All but the last fill of the buffer goes straight to the caller.
uint32_t CompoundStream::readOn(void* dest, uint32_t count) {
  uint8_t* out = static_cast<uint8_t*>(dest);
  uint32_t done = 0;
  while (done < count) {
    if (cursor_ == buffered_) {
      cursor_ = buffered_ = 0;
      const uint32_t wanted = std::min(count - done, size_ - position_);
      if (wanted == 0) break;
      const uint32_t direct = (wanted - 1) / kBufferSize * kBufferSize;
      const uint32_t got = readPieces(out + done, direct);
      done += got;
      if (got < direct) break;
      buffered_ = readPieces(buffer_.data(), std::min(kBufferSize, size_ - position_));
      if (buffered_ == 0) break;
    }
    const uint32_t piece = std::min(count - done, buffered_ - cursor_);
    std::memcpy(out + done, buffer_.data() + cursor_, piece);
    cursor_ += piece;
    done += piece;
  }
  return done;
}

uint32_t CompoundStream::seek(uint32_t offset, uint16_t origin) {
  const uint32_t bufferStart = position_ - buffered_;
  uint32_t target = offset;
  if (origin == kCurrent) {
    target += bufferStart + cursor_;
  } else if (origin == kEnd) {
    target += size_;
  } else if (origin != kStart) {
    return kFailed;
  }
  if (target - bufferStart < buffered_) {
    cursor_ = target - bufferStart;
    return target;
  }
  cursor_ = buffered_ = 0;
  return moveTo(target);
}

}  // namespace ksv
