#include "ole/directory_entries.h"

#include <algorithm>
#include <cstring>

#include "common/little_endian.h"
#include "ksv_sjis.h"
#include "ksv_ucs2.h"
#include "ole/limits.h"

namespace ksv {
namespace {

using namespace compound_entry;

constexpr char kRootName[] = "Root Entry";

// A search through a tree of siblings that may be anything but a tree. Each entry is
// searched once; where it comes up again, how deep it went is remembered.
class StreamSearch {
 public:
  StreamSearch(const Directory& directory, const char* name)
      : directory_(directory), name_(name), heights_(directory.size()) {}

  std::optional<uint32_t> from(uint32_t id) {
    Outcome outcome = enter(id);
    while (outcome == Outcome::kGoOn && depth_ != 0) outcome = step();
    if (outcome != Outcome::kFound) return std::nullopt;
    return found_;
  }

 private:
  static constexpr uint16_t kOnPath = 0xFFFF;

  enum class Outcome { kGoOn, kFound, kFailed };

  struct Level {
    uint32_t id;
    uint8_t subtreesDone;
    uint16_t height;  // of the higher subtree searched so far
  };

  // Looks at an entry and puts it on the path, to have its subtrees searched.
  Outcome enter(uint32_t id) {
    if (id == kFreeSector) return Outcome::kGoOn;
    if (depth_ == limits::kMostLevels || id >= directory_.size()) return Outcome::kFailed;
    const uint16_t known = heights_[id];
    if (known != 0) return enterAgain(known);
    if (KSV_stricmp(directory_.nameOf(id), name_) == 0) {
      found_ = id;
      return Outcome::kFound;
    }
    heights_[id] = kOnPath;
    path_[depth_++] = {id, 0, 0};
    return Outcome::kGoOn;
  }

  // A cycle is as deep as can be.
  Outcome enterAgain(uint16_t height) {
    if (height == kOnPath || depth_ + height > limits::kMostLevels) return Outcome::kFailed;
    noteSubtree(height);
    return Outcome::kGoOn;
  }

  Outcome step() {
    Level& level = path_[depth_ - 1];
    const DirectoryEntry& entry = directory_[level.id];
    if (level.subtreesDone < 2) return enter(level.subtreesDone++ == 0 ? entry.left : entry.right);
    const uint16_t height = static_cast<uint16_t>(level.height + 1);
    heights_[level.id] = height;
    --depth_;
    noteSubtree(height);
    return Outcome::kGoOn;
  }

  void noteSubtree(uint16_t height) {
    if (depth_ == 0) return;
    Level& above = path_[depth_ - 1];
    above.height = std::max(above.height, height);
  }

  const Directory& directory_;
  const char* const name_;
  std::vector<uint16_t> heights_;  // 0: not searched
  std::array<Level, limits::kMostLevels> path_;
  size_t depth_ = 0;
  uint32_t found_ = 0;
};

}  // namespace

bool Directory::load(PagedFile& file, const CompoundHeader& header, const SectorTable& sectors,
                     CompoundFault& fault) {
  if (!loadChain(file, header, sectors, fault)) return false;
  entriesPerSector_ = header.sectorSize / kDirectoryEntrySize;
  entries_.resize(sectorOffsets_.size() * entriesPerSector_);
  names_.assign(1, '\0');  // the name of the entries that are not in use
  for (uint32_t id = 0; id < entries_.size(); ++id) {
    std::array<uint8_t, kDirectoryEntrySize> bytes;
    const int64_t offset = offsetOf(id);
    if (file.read(offset, bytes.data(), bytes.size()) != bytes.size()) {
      return refuse(fault, "ends inside its directory", offset);
    }
    if (!readEntry(bytes.data(), entries_[id])) {
      return refuse(fault, "has a directory entry whose name is too long", offset);
    }
  }
  if (!findRoot()) {
    return refuse(fault, "has a directory without a root", offsetOf(0));
  }
  return true;
}

// A chain that ends is never longer than the table, which is the limit of all chains; one
// that comes back to a sector would pass it.
bool Directory::loadChain(PagedFile& file, const CompoundHeader& header, const SectorTable& sectors,
                          CompoundFault& fault) {
  constexpr int64_t kFirstDirectorySector = 48;
  if (header.sectorSize < kDirectoryEntrySize) {
    return refuse(fault, "has sectors that hold no directory entry", kFirstDirectorySector);
  }
  LoopDetector loop;
  int64_t lastOffset = kFirstDirectorySector;
  for (uint32_t sector = header.firstDirectorySector; sector != kEndOfChain;
       sector = sectors.next(sector)) {
    const bool isSector = static_cast<int32_t>(sector) >= 0;
    const auto offset = isSector ? sectors.offsetOfWhole(sector) : std::nullopt;
    // Sectors that overlap each other could make more of a file than is in it.
    const bool fits = file.holds(
        0, (static_cast<int64_t>(sectorOffsets_.size()) + 1) * int64_t{header.sectorSize});
    if (!offset || !fits || loop.comesBackTo(sector)) {
      return refuse(fault, "has a damaged directory chain behind this sector", lastOffset);
    }
    sectorOffsets_.push_back(*offset);
    lastOffset = *offset;
  }
  if (sectorOffsets_.empty()) {
    return refuse(fault, "has no directory", kFirstDirectorySector);
  }
  return true;
}

bool Directory::readEntry(const uint8_t* bytes, DirectoryEntry& entry) {
  const uint16_t nameLength = wordAt(bytes + kNameLength);
  const uint8_t type = bytes[kType];
  if (nameLength == 0 || type == 0) return true;
  ++usedEntries_;
  if (!readName(bytes, nameLength, entry)) return false;
  entry.type = type;
  entry.left = dwordAt(bytes + kLeft);
  entry.right = dwordAt(bytes + kRight);
  entry.child = dwordAt(bytes + kChild);
  const bool isRoot = type == DirectoryEntry::kRoot;
  if (isRoot || type == DirectoryEntry::kStorage) {
    std::copy_n(bytes + kClassId, entry.classId.size(), entry.classId.begin());
  }
  entry.startingSector = kFreeSector;
  if (isRoot || type == DirectoryEntry::kStream) {
    entry.startingSector = dwordAt(bytes + kStartingSector);
    entry.size = dwordAt(bytes + kStreamSize);
  }
  if (isRoot) miniStreamStart_ = entry.startingSector;
  return true;
}

// The length counts the terminator, and one unit more is read than it says: a length that
// is too large takes what follows the name for characters, as far as the entry goes.
bool Directory::readName(const uint8_t* bytes, uint16_t length, DirectoryEntry& entry) {
  if (length >= kDirectoryEntrySize) return false;
  entry.name = static_cast<uint32_t>(names_.size());
  for (size_t at = 0; at <= length; at += 2) {
    const uint16_t unit = wordAt(bytes + at);
    const uint16_t code = KSV_unicodetosjis(unit);
    const uint16_t stored = code != 0 ? code : static_cast<uint16_t>(unit & 0xFF);
    if (stored == 0) break;
    if (stored > 0xFF) names_.push_back(static_cast<char>(stored >> 8));
    names_.push_back(static_cast<char>(stored & 0xFF));
  }
  names_.push_back('\0');
  return true;
}

size_t Directory::searchedEntries() const {
  return std::min<size_t>(size_t{usedEntries_} + 1, entries_.size());
}

bool Directory::findRoot() {
  if (usedEntries_ == 0) return false;
  for (uint32_t id = 0; id < searchedEntries(); ++id) {
    const DirectoryEntry& entry = entries_[id];
    if (entry.type == DirectoryEntry::kRoot || std::strcmp(nameOf(id), kRootName) == 0) {
      rootId_ = id;
      return entry.child != kFreeSector;
    }
  }
  return false;
}

int64_t Directory::offsetOf(uint32_t id) const {
  return int64_t{sectorOffsets_[id / entriesPerSector_]} +
         int64_t{id % entriesPerSector_} * kDirectoryEntrySize;
}

std::optional<uint32_t> Directory::findStorage(uint32_t parent, std::string_view name) const {
  std::vector<bool> visited(searchedEntries());
  std::vector<uint32_t> waiting = {entries_[parent].child};
  while (!waiting.empty()) {
    const uint32_t id = waiting.back();
    waiting.pop_back();
    if (id >= visited.size() || visited[id]) continue;
    visited[id] = true;
    if (name == nameOf(id)) return id;
    waiting.push_back(entries_[id].right);
    waiting.push_back(entries_[id].left);
  }
  return std::nullopt;
}

std::optional<uint32_t> Directory::findStream(uint32_t parent, const char* name) const {
  const std::optional<uint32_t> found = StreamSearch(*this, name).from(entries_[parent].child);
  if (!found || entries_[*found].type != DirectoryEntry::kStream) return std::nullopt;
  return found;
}

}  // namespace ksv
