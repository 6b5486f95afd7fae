#include "ole/compound_file.h"

#include <algorithm>
#include <utility>

#include "common/little_endian.h"
#include "ole/limits.h"

namespace ksv {

std::unique_ptr<CompoundFile> CompoundFile::open(const char* path, CompoundFault& fault) {
  std::unique_ptr<CompoundFile> compound(new CompoundFile);
  compound->file_ = PagedFile::open(path);
  if (!compound->file_) {
    fault.reason = nullptr;
    return nullptr;
  }
  if (!compound->load(fault)) return nullptr;
  return compound;
}

bool CompoundFile::load(CompoundFault& fault) {
  const std::optional<CompoundHeader> header = readCompoundHeader(*file_, fault);
  if (!header) return false;
  header_ = *header;
  sectors_ = SectorTable::load(*file_, header_, fault);
  return sectors_ && loadMiniFat(fault) && directory_.load(*file_, header_, *sectors_, fault);
}

// What the chain has fewer than the header says is filled with zeroes; more fails, and
// so does a chain that comes back to itself, which would have more.
bool CompoundFile::loadMiniFat(CompoundFault& fault) {
  using compound_header::kFirstMiniFatSector;
  using compound_header::kMiniFatSectorCount;
  if (header_.miniFatSectors == 0) return true;
  const uint64_t bytes = uint64_t{header_.miniFatSectors} * header_.sectorSize;
  if (bytes > limits::kLargestMiniFat) {
    return refuse(fault, "claims a table of mini sectors that is too large", kMiniFatSectorCount);
  }
  miniFatEntries_ = static_cast<uint32_t>(bytes / 4);
  LoopDetector loop;
  int64_t lastOffset = kFirstMiniFatSector;
  for (uint32_t sector = header_.firstMiniFatSector; sector != kEndOfChain;
       sector = sectors_->next(sector)) {
    const std::optional<uint32_t> offset = sectors_->offsetOfWhole(sector);
    const bool isTooMuch = miniFatOffsets_.size() == header_.miniFatSectors;
    if (sector == kFreeSector || !offset || isTooMuch || loop.comesBackTo(sector)) {
      return refuse(fault, "has a damaged table of mini sectors behind this sector", lastOffset);
    }
    miniFatOffsets_.push_back(*offset);
    lastOffset = *offset;
  }
  return true;
}

std::u16string CompoundFile::nameOf(uint32_t entry) {
  constexpr size_t kNameUnits = 32;
  std::array<uint8_t, 2 * kNameUnits> bytes = {};
  file_->read(directory_.offsetOf(entry), bytes.data(), bytes.size());
  std::u16string name;
  for (size_t at = 0; at < bytes.size() && wordAt(bytes.data() + at) != 0; at += 2) {
    name.push_back(static_cast<char16_t>(wordAt(bytes.data() + at)));
  }
  return name;
}

uint32_t CompoundFile::nextMiniSector(uint32_t miniSector) {
  const uint32_t perSector = header_.sectorSize / 4;
  const size_t index = miniSector / perSector;
  if (index >= miniFatOffsets_.size()) return 0;
  return file_->dword(int64_t{miniFatOffsets_[index]} + 4 * int64_t{miniSector % perSector});
}

std::optional<uint32_t> CompoundFile::offsetOfMini(uint32_t miniSector,
                                                   uint32_t offsetInMiniSector) {
  const uint32_t perSector = header_.miniSectorsPerSector();
  if (perSector == 0) return std::nullopt;
  if (!miniStreamLoaded_) loadMiniStream();
  const size_t index = miniSector / perSector;
  if (index >= miniStream_.size()) return std::nullopt;
  const uint32_t inSector = miniSector % perSector * header_.miniSectorSize;
  return sectors_->offsetOf(miniStream_[index], inSector + offsetInMiniSector);
}

// The sectors up to the end of the chain, to where it is broken, or to where it comes back
// to itself.
void CompoundFile::loadMiniStream() {
  std::vector<uint32_t> chain;
  LoopDetector loop;
  uint32_t sector = directory_.miniStreamStart();
  while (sector != kEndOfChain && sector != kFreeSector) {
    chain.push_back(sector);
    if (loop.comesBackTo(sector)) {
      size_t first = 0;
      while (chain[first] != chain[first + loop.length()]) ++first;
      chain.resize(first + loop.length());
      break;
    }
    sector = sectors_->next(sector);
  }
  // Not before nothing can fail any more: the next call would take a part for the whole.
  miniStream_ = std::move(chain);
  miniStreamLoaded_ = true;
}

}  // namespace ksv
