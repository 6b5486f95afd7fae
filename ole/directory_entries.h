// The directory of a compound file ([MS-CFB] 2.6): trees of siblings, whose nodes name
// each other by their place in it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ole/paged_file.h"
#include "ole/sectors.h"

namespace ksv {

// What is left as it is for an entry that is not in use.
struct DirectoryEntry {
  static constexpr uint8_t kStorage = 1;
  static constexpr uint8_t kStream = 2;
  static constexpr uint8_t kRoot = 5;

  uint32_t name = 0;  // where it begins among the names of the directory
  uint8_t type = 0;
  uint32_t left = 0;
  uint32_t right = 0;
  uint32_t child = 0;
  uint32_t startingSector = 0;
  uint32_t size = 0;
  std::array<uint8_t, 16> classId = {};
};

class Directory {
 public:
  // False when the directory is damaged or has no root with anything in it.
  bool load(PagedFile& file, const CompoundHeader& header, const SectorTable& sectors,
            CompoundFault& fault);

  uint32_t rootId() const { return rootId_; }
  // The first sector of the mini stream; kFreeSector when there is none.
  uint32_t miniStreamStart() const { return miniStreamStart_; }

  size_t size() const { return entries_.size(); }
  const DirectoryEntry& operator[](uint32_t id) const { return entries_[id]; }
  // In Shift_JIS; a character that it lacks is there with the low byte of its code.
  const char* nameOf(uint32_t id) const { return names_.data() + entries_[id].name; }
  // Where the entry stands in the file.
  int64_t offsetOf(uint32_t id) const;

  // The child of an entry with this name, in the order node, left, right. Case
  // counts, the type does not; a damaged tree ends where it is damaged.
  std::optional<uint32_t> findStorage(uint32_t parent, std::string_view name) const;

  // The stream among the children of an entry with this name, without regard to
  // the case of ASCII letters. None when the first of that name is no stream, and
  // when an entry that is not there, a cycle or a path of more than 256 entries is
  // met before it.
  std::optional<uint32_t> findStream(uint32_t parent, const char* name) const;

 private:
  bool loadChain(PagedFile& file, const CompoundHeader& header, const SectorTable& sectors,
                 CompoundFault& fault);
  bool readEntry(const uint8_t* bytes, DirectoryEntry& entry);
  bool readName(const uint8_t* bytes, uint16_t length, DirectoryEntry& entry);
  bool findRoot();
  // The ids up to which an entry may lie that a search for a storage or the root
  // looks at: as many as are in use, wherever these stand.
  size_t searchedEntries() const;

  std::vector<DirectoryEntry> entries_;
  std::vector<char> names_;
  std::vector<uint32_t> sectorOffsets_;  // of the sectors of the directory
  uint32_t entriesPerSector_ = 0;
  uint16_t usedEntries_ = 0;  // modulo 2^16: the count has no more bits
  uint32_t rootId_ = 0;
  uint32_t miniStreamStart_ = kFreeSector;
};

}  // namespace ksv
