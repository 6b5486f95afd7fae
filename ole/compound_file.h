// An open compound file: its tables, its directory, and the streams in it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ole/directory_entries.h"
#include "ole/limits.h"
#include "ole/paged_file.h"
#include "ole/sectors.h"

namespace ksv {

class CompoundFile {
 public:
  // Null when the file is missing, no compound file or damaged; fault says which,
  // with the reason left null when the file cannot be opened at all. May throw
  // std::bad_alloc, or std::system_error where the system refuses to read, as the other
  // functions here.
  static std::unique_ptr<CompoundFile> open(const char* path, CompoundFault& fault);

  PagedFile& file() { return *file_; }
  const CompoundHeader& header() const { return header_; }
  const SectorTable& sectors() const { return *sectors_; }
  const Directory& directory() const { return directory_; }

  // The name of an entry in UTF-16, as it stands in the file.
  std::u16string nameOf(uint32_t entry);

  // How many entries the mini-FAT has, and the mini sector behind this one, which is
  // one of them.
  uint32_t miniFatEntries() const { return miniFatEntries_; }
  uint32_t nextMiniSector(uint32_t miniSector);

  // Where a mini sector lies in the file; none when the mini stream does not reach
  // it.
  std::optional<uint32_t> offsetOfMini(uint32_t miniSector, uint32_t offsetInMiniSector);

 private:
  CompoundFile() = default;

  bool load(CompoundFault& fault);
  bool loadMiniFat(CompoundFault& fault);
  void loadMiniStream();

  std::unique_ptr<PagedFile> file_;
  CompoundHeader header_ = {};
  std::unique_ptr<SectorTable> sectors_;
  Directory directory_;
  std::vector<uint32_t> miniFatOffsets_;  // of its sectors; those it lacks hold zeroes
  uint32_t miniFatEntries_ = 0;
  std::vector<uint32_t> miniStream_;  // its sectors, once one has been asked for
  bool miniStreamLoaded_ = false;
};

// A stream that is read through a buffer of 1024 bytes.
class CompoundStream {
 public:
  // Null when the entry's chain is damaged or the first byte has no place.
  static std::unique_ptr<CompoundStream> open(CompoundFile& file, const DirectoryEntry& entry);

  static constexpr uint32_t kFailed = 0xFFFFFFFF;

  enum Origin : uint16_t { kStart = 0, kCurrent = 1, kEnd = 2 };

  // What the directory says, whether or not the chain has as much.
  uint32_t size() const { return size_; }

  // Reads up to count bytes: how many there were.
  uint32_t read(void* dest, uint32_t count);

  // How many of so many bytes could be read from a position on, without reading them.
  uint32_t readableFrom(uint32_t position, uint32_t count) const;

  // The new position, within the stream, or kFailed: the position has moved all the
  // same.
  uint32_t seek(uint32_t offset, uint16_t origin);

 private:
  static constexpr uint32_t kBufferSize = limits::kStreamBuffer;

  CompoundStream(CompoundFile& file, uint32_t size, bool isMini)
      : file_(file),
        size_(size),
        unit_(isMini ? file.header().miniSectorSize : file.header().sectorSize),
        isMini_(isMini) {}

  bool loadChain(uint32_t first);
  std::optional<uint32_t> linkBehind(uint32_t sector) const;
  uint32_t moveTo(uint32_t position);
  std::optional<int64_t> offsetOf(uint32_t position) const;
  uint32_t pieceAt(uint32_t position, int64_t offset, uint32_t wanted) const;
  uint32_t readOn(void* dest, uint32_t count);
  uint32_t readPieces(uint8_t* dest, uint32_t count);

  CompoundFile& file_;
  const uint32_t size_;
  const uint32_t unit_;  // bytes of a link of the chain
  const bool isMini_;
  std::vector<uint32_t> chain_;  // ends in kEndOfChain
  uint32_t position_ = 0;        // of what is read next into the buffer
  uint32_t cursor_ = 0;          // in the buffer
  uint32_t buffered_ = 0;        // bytes in the buffer
  std::array<uint8_t, kBufferSize> buffer_;
};

}  // namespace ksv
