#include "kit/documents/directory.h"

#include <algorithm>

#include "common/compound_format.h"
#include "common/little_endian.h"

namespace ksv_kit::documents {
namespace {

namespace at = ksv::compound_entry;
namespace type = ksv::compound_type;

uint64_t qwordAt(const uint8_t* bytes) {
  return ksv::dwordAt(bytes) | uint64_t{ksv::dwordAt(bytes + 4)} << 32;
}

// A name ends at its first zero, whatever length it claims.
void takeName(const uint8_t* bytes, DirectoryEntry& entry, uint32_t id, DamageList& damages) {
  while (entry.nameLength < DirectoryEntry::kMostUnits) {
    const uint16_t unit = ksv::wordAt(bytes + size_t{2} * entry.nameLength);
    if (unit == 0) break;
    entry.units[entry.nameLength++] = static_cast<char16_t>(unit);
  }
  if (ksv::wordAt(bytes + at::kNameLength) != 2 * (entry.nameLength + 1))
    damages.tell(KSV_DAMAGE_ENTRY, entry.offset + at::kNameLength,
                 "has a name of another length than it claims", id);
  else if (entry.nameLength == 0)
    damages.tell(KSV_DAMAGE_ENTRY, entry.offset, "has an entry without a name", id);
}

void takeType(const uint8_t* bytes, DirectoryEntry& entry, uint32_t id, DamageList& damages) {
  entry.type = bytes[at::kType];
  const bool isKnown = entry.type == type::kUnused || entry.type == type::kStorage ||
                       entry.type == type::kStream || entry.type == type::kRoot;
  if (isKnown) return;
  damages.tell(KSV_DAMAGE_ENTRY, entry.offset + at::kType, "has an entry of no known type", id);
  entry.type = entry.child == kNoEntry ? type::kStream : type::kStorage;
}

// In files of version 3 nothing is said of the upper half of sizes, where some writers leave what
// they please.
DirectoryEntry readEntry(const uint8_t* bytes, uint64_t offset, uint32_t id, const Header& header,
                         DamageList& damages) {
  DirectoryEntry entry;
  entry.offset = offset;
  entry.left = ksv::dwordAt(bytes + at::kLeft);
  entry.right = ksv::dwordAt(bytes + at::kRight);
  entry.child = ksv::dwordAt(bytes + at::kChild);
  takeType(bytes, entry, id, damages);
  if (!entry.isUsed()) return entry;
  takeName(bytes, entry, id, damages);
  std::copy_n(bytes + at::kClassId, entry.classId.size(), entry.classId.begin());
  entry.stateBits = ksv::dwordAt(bytes + at::kStateBits);
  entry.created = qwordAt(bytes + at::kCreated);
  entry.modified = qwordAt(bytes + at::kModified);
  entry.start = ksv::dwordAt(bytes + at::kStartingSector);
  entry.size = header.hasLargeSizes() ? qwordAt(bytes + at::kStreamSize)
                                      : ksv::dwordAt(bytes + at::kStreamSize);
  return entry;
}

// Finds the places of entries, each once.
class TreeWalk {
 public:
  // There is at least one.
  TreeWalk(const std::vector<DirectoryEntry>& entries, DamageList& damages)
      : entries_(entries), damages_(damages), isPlaced_(entries.size()) {
    places_.reserve(static_cast<size_t>(
        std::count_if(entries.begin(), entries.end(), [](const auto& e) { return e.isUsed(); })));
  }

  std::vector<TreePlace> walk() {
    const uint32_t root = rootId();
    place(root, kNoEntry, 0);
    placeBelow(0);
    placeOrphans();
    return std::move(places_);
  }

 private:
  // Storages whose children are to be placed, and how far that has come.
  struct Level {
    uint32_t storage;  // a place
    std::vector<uint32_t> siblings;
    size_t done = 0;
  };

  uint32_t rootId() {
    const auto isRoot = [](const DirectoryEntry& entry) { return entry.type == type::kRoot; };
    if (isRoot(entries_[0])) return 0;
    damages_.tell(KSV_DAMAGE_ROOT, entries_[0].offset + at::kType,
                  "has a first entry that is no root", 0);
    const auto found = std::find_if(entries_.begin(), entries_.end(), isRoot);
    return found == entries_.end() ? 0 : static_cast<uint32_t>(found - entries_.begin());
  }

  void place(uint32_t id, uint32_t parent, uint32_t depth) {
    isPlaced_[id] = true;
    places_.push_back({id, parent, depth, isOrphaned_});
  }

  bool hasChildren(uint32_t id) const {
    return entries_[id].type != type::kStream && entries_[id].child != kNoEntry;
  }

  void placeBelow(uint32_t top) {
    const uint32_t topId = places_[top].id;
    if (!hasChildren(topId)) return;
    std::vector<Level> levels;
    levels.push_back({top, siblingsFrom(entries_[topId].child, childPlace(topId), topId)});
    while (!levels.empty()) {
      Level& level = levels.back();
      if (level.done == level.siblings.size()) {
        levels.pop_back();
        continue;
      }
      const uint32_t id = level.siblings[level.done++];
      place(id, level.storage, places_[top].depth + static_cast<uint32_t>(levels.size()));
      if (!hasChildren(id)) continue;
      const auto here = static_cast<uint32_t>(places_.size() - 1);
      levels.push_back({here, siblingsFrom(entries_[id].child, childPlace(id), id)});
    }
  }

  uint64_t childPlace(uint32_t id) const { return entries_[id].offset + at::kChild; }

  // The entries linked to each other, from the leftmost to the rightmost. namedAt: where the top
  // of them is named, and by which entry.
  std::vector<uint32_t> siblingsFrom(uint32_t top, uint64_t namedAt, uint32_t namedBy) {
    std::vector<uint32_t> siblings;
    std::vector<uint32_t> path;
    descend(top, namedAt, namedBy, path);
    while (!path.empty()) {
      const uint32_t id = path.back();
      path.pop_back();
      siblings.push_back(id);
      descend(entries_[id].right, entries_[id].offset + at::kRight, id, path);
    }
    return siblings;
  }

  void descend(uint32_t id, uint64_t namedAt, uint32_t namedBy, std::vector<uint32_t>& path) {
    while (id != kNoEntry && isLinkSound(id, namedAt, namedBy)) {
      isPlaced_[id] = true;
      path.push_back(id);
      namedAt = entries_[id].offset + at::kLeft;
      namedBy = id;
      id = entries_[id].left;
    }
  }

  // What is wrong among orphans nobody can tell from what was left behind.
  bool isLinkSound(uint32_t id, uint64_t namedAt, uint32_t namedBy) {
    const bool isThere = id < entries_.size() && entries_[id].isUsed();
    if (isThere && !isPlaced_[id]) return true;
    if (!isOrphaned_)
      damages_.tell(KSV_DAMAGE_LINK, namedAt,
                    isThere ? "has a link to an entry that stands elsewhere already"
                            : "has a link to an entry that is none",
                    namedBy);
    return false;
  }

  // Those first that no other orphan leads to, with what is below them; then what only leads in
  // circles.
  void placeOrphans() {
    isOrphaned_ = true;
    std::vector<bool> isNamed(entries_.size());
    for (uint32_t id = 0; id < entries_.size(); ++id) {
      const DirectoryEntry& entry = entries_[id];
      if (isPlaced_[id] || !entry.isUsed()) continue;
      for (const uint32_t link : {entry.left, entry.right, entry.child})
        if (link < entries_.size() && link != id) isNamed[link] = true;
    }
    for (const bool takesNamed : {false, true})
      for (uint32_t id = 0; id < entries_.size(); ++id)
        if (!isPlaced_[id] && entries_[id].isUsed() && (takesNamed || !isNamed[id]))
          placeOrphan(id);
  }

  void placeOrphan(uint32_t id) {
    for (const uint32_t sibling : siblingsFrom(id, entries_[id].offset, id)) {
      place(sibling, kNoEntry, 1);
      placeBelow(static_cast<uint32_t>(places_.size() - 1));
    }
  }

  const std::vector<DirectoryEntry>& entries_;
  DamageList& damages_;
  std::vector<bool> isPlaced_;
  std::vector<TreePlace> places_;
  bool isOrphaned_ = false;
};

}  // namespace

void Directory::read(PagedBytes& bytes, SectorTable& sectors, const Header& header,
                     DamageList& damages) {
  Chain chain(sectors, damages,
              {header.firstDirectorySector, ksv::compound_header::kFirstDirectorySector});
  std::vector<uint8_t> sector(header.sectorSize());
  for (uint64_t index = 0; const auto run = chain.from(index); ++index) {
    const uint64_t offset = sectors.offsetOf(run->sector);
    // Sectors that the file does not have may be claimed at four bytes each.
    if (entries_.size() * ksv::kDirectoryEntrySize > bytes.size()) break;
    const size_t count = bytes.readTable(offset, sector.data(), sector.size());
    readSector(sector.data(), count, offset, header, damages);
    if (count < sector.size())
      damages.tell(KSV_DAMAGE_CUT_SHORT, bytes.size(), "ends inside the directory");
  }
  isToldBroken_ = chain.isBroken();
}

void Directory::readSector(const uint8_t* bytes, size_t size, uint64_t offset, const Header& header,
                           DamageList& damages) {
  const size_t perSector = header.sectorSize() / ksv::kDirectoryEntrySize;
  for (size_t i = 0; i < perSector; ++i) {
    const size_t begin = i * ksv::kDirectoryEntrySize;
    const auto id = static_cast<uint32_t>(entries_.size());
    // Entries keep their numbers, whatever the file lacks in front of them.
    entries_.emplace_back().offset = offset + begin;
    if (begin + ksv::kDirectoryEntrySize <= size)
      entries_.back() = readEntry(bytes + begin, offset + begin, id, header, damages);
  }
}

std::vector<TreePlace> Directory::places(DamageList& damages) const {
  if (!entries_.empty()) return TreeWalk(entries_, damages).walk();
  if (!isToldBroken_)
    damages.tell(KSV_DAMAGE_ROOT, ksv::compound_header::kFirstDirectorySector, "has no directory");
  return {};
}

}  // namespace ksv_kit::documents
