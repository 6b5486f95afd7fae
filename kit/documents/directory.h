// The directory of a compound file ([MS-CFB] 2.6): entries that name each other by their number in
// it, as trees of siblings. Such trees may have any shape, and nothing follows them by recursion.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "kit/documents/chain.h"
#include "kit/documents/damage.h"
#include "kit/documents/document_header.h"
#include "kit/documents/paged_bytes.h"
#include "kit/documents/sector_tables.h"

namespace ksv_kit::documents {

// An entry as it stands in the directory.
struct DirectoryEntry {
  static constexpr size_t kMostUnits = 32;

  std::array<char16_t, kMostUnits> units = {};
  uint8_t nameLength = 0;
  uint8_t type = 0;  // a compound_type; of what is none of those the one that it looks like
  uint32_t left = kNoEntry;
  uint32_t right = kNoEntry;
  uint32_t child = kNoEntry;
  uint32_t stateBits = 0;
  uint32_t start = 0;
  uint64_t size = 0;
  uint64_t created = 0;  // FILETIME
  uint64_t modified = 0;
  std::array<uint8_t, 16> classId = {};
  uint64_t offset = 0;  // in the file

  bool isUsed() const { return type != 0; }
  std::u16string_view name() const { return {units.data(), nameLength}; }
};

// A place in the tree that the entries make.
struct TreePlace {
  uint32_t id;
  uint32_t parent;  // the index of its storage among the places; kNoEntry: it has none
  uint32_t depth;   // of the root 0; of orphans the same as if they stood in the root
  bool isOrphan;
};

class Directory {
 public:
  // As much as there is; the damages are told.
  void read(PagedBytes& bytes, SectorTable& sectors, const Header& header, DamageList& damages);

  const std::vector<DirectoryEntry>& entries() const { return entries_; }

  // The root first, each storage in front of what is in it, siblings in the order of their tree;
  // behind these the orphans: entries in use that no storage of the tree leads to.
  std::vector<TreePlace> places(DamageList& damages) const;

 private:
  void readSector(const uint8_t* bytes, size_t size, uint64_t offset, const Header& header,
                  DamageList& damages);

  std::vector<DirectoryEntry> entries_;
  bool isToldBroken_ = false;
};

}  // namespace ksv_kit::documents
