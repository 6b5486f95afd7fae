// All that can be wrong with the structure of a document, and is not come upon by reading it.

#include <algorithm>

#include "kit/documents/document.h"
#include "kit/documents/entry_names.h"

namespace ksv_kit::documents {
namespace {

namespace at = ksv::compound_header;

// Files of version 4 have a sector at this offset that is kept free of data: programs lock it.
constexpr uint64_t kLockedOffset = 0x7FFFFF00;

}  // namespace

class DocumentCheck {
 public:
  explicit DocumentCheck(Document& document) : document_(document) {}

  CheckedFacts run() {
    checkTable();
    ownChains();
    checkStreams();
    checkOrder();
    checkCounts();
    return {lostSectors()};
  }

 private:
  DamageList& damages() { return document_.damages_; }
  SectorTable& sectors() { return *document_.sectors_; }

  // The sectors of the table itself, and of the list of them.
  void checkTable() {
    const std::vector<uint32_t>& table = sectors().tableSectors();
    for (size_t i = 0; i < table.size(); ++i) {
      if (table[i] > kHighestSector || !isInFile(table[i]))
        damages().tell(KSV_DAMAGE_SECTOR_TABLE, placeInList(i), "lacks a sector of its table");
      else
        ownMarked(table[i], ksv::kFatSector);
    }
    for (const uint32_t sector : sectors().difatSectors()) ownMarked(sector, ksv::kDifatSector);
  }

  // Where a sector of the table is named.
  uint64_t placeInList(size_t index) {
    if (index < ksv::kHeaderTableSectors) return at::kDifat + 4 * index;
    index -= ksv::kHeaderTableSectors;
    const size_t perSector = sectors().linksPerSector() - 1;
    return sectors().offsetOf(sectors().difatSectors()[index / perSector]) +
           4 * (index % perSector);
  }

  void ownMarked(uint32_t sector, uint32_t mark) {
    if (sectors().next(sector) != mark)
      damages().tell(KSV_DAMAGE_SECTOR_TABLE, sectors().placeOf(sector),
                     "has a sector of its table that is not marked as one");
    own(owned_, sector, damages());
  }

  bool isInFile(uint32_t sector) {
    return sectors().offsetOf(sector) + document_.header_.sectorSize() <= document_.fileSize();
  }

  // False: it was owned already.
  bool own(SectorSet& owned, uint32_t sector, DamageList& list) {
    if (owned.add(sector)) return true;
    const bool isMini = &owned == &ownedMini_;
    const uint64_t offset =
        isMini ? document_.miniTable_->placeOf(sector) : sectors().offsetOf(sector);
    list.tell(KSV_DAMAGE_SHARED, offset,
              isMini ? "has a mini sector that belongs to two streams"
                     : "has a sector that belongs to two");
    return false;
  }

  // Whatever is behind a sector with another owner is that one's as well: to follow such chains
  // from each of many entries would cost their product.
  bool ownChain(SectorSet& owned, Chain& chain, DamageList& list) {
    constexpr uint64_t kMostAtOnce = 4096;
    uint64_t wanted = 1;
    uint64_t index = 0;
    while (const std::optional<Chain::Run> run = chain.from(index, wanted)) {
      for (uint32_t i = 0; i < run->count; ++i)
        if (!own(owned, run->sector + i, list)) return false;
      index += run->count;
      wanted = std::min(2 * wanted, kMostAtOnce);
    }
    return true;
  }

  void ownChains() {
    DamageList told;  // when the directory was read
    Chain directory(sectors(), told,
                    {document_.header_.firstDirectorySector, at::kFirstDirectorySector});
    ownChain(owned_, directory, damages());
    directorySectors_ = directory.length();
    ownChain(owned_, document_.miniTable_->chain(), damages());
    ownChain(owned_, *document_.miniStream_, damages());
  }

  void checkStreams() {
    checkMiniStream();
    DamageList ignored;
    StreamTables unheard = *document_.tables_;
    StreamTables withoutTelling{unheard.bytes,   unheard.header,    ignored,
                                unheard.sectors, unheard.miniTable, unheard.miniStream};
    for (const Entry& entry : document_.entries_) {
      if (!entry.isStream()) continue;
      StreamTables& tables = entry.isOrphan ? withoutTelling : *document_.tables_;
      StreamBytes stream(tables, *entry.stored, entry.id);
      SectorSet& owned = stream.isMini() ? ownedMini_ : owned_;
      if (ownChain(owned, stream.chain(), tables.damages)) stream.examine();
    }
  }

  void checkMiniStream() {
    if (document_.entries_.empty()) return;
    const DirectoryEntry& root = *document_.entries_[0].stored;
    const uint64_t claimed = root.size >> document_.header_.sectorShift;
    Chain& chain = *document_.miniStream_;
    if (chain.length() < claimed && !chain.isBroken())
      damages().tell(KSV_DAMAGE_SIZE, root.offset + ksv::compound_entry::kStreamSize,
                     "has fewer mini sectors than it claims", document_.entries_[0].id);
  }

  // Other readers look for a name by the order that it has to have.
  void checkOrder() {
    for (const Entry& entry : document_.entries_) {
      if (entry.isOrphan || entry.nextSibling == kNoEntry) continue;
      const Entry& next = document_.entries_[entry.nextSibling];
      const int order = compareNames(entry.name(), next.name());
      if (order >= 0)
        damages().tell(KSV_DAMAGE_ORDER, next.stored->offset,
                       order == 0 ? "has two entries of one name in a storage"
                                  : "has entries that are not in the order of their names",
                       next.id);
    }
  }

  void checkCounts() {
    const Header& header = document_.header_;
    const auto check = [&](bool holds, size_t offset, const char* reason) {
      if (!holds) damages().tell(KSV_DAMAGE_HEADER, offset, reason);
    };
    check(header.fatSectors == sectors().tableSectors().size(), at::kFatSectorCount,
          "counts the sectors of its table wrongly");
    check(header.difatSectors == sectors().difatSectors().size(), at::kDifatSectorCount,
          "counts the sectors of the list of its table wrongly");
    check(header.miniFatSectors == document_.miniTable_->chain().length(), at::kMiniFatSectorCount,
          "counts the sectors of its table of mini sectors wrongly");
    check(header.directorySectors == 0 || header.directorySectors == directorySectors_,
          at::kDirectorySectorCount, "counts the sectors of its directory wrongly");
  }

  uint64_t lostSectors() {
    const uint64_t reached = uint64_t{sectors().linksPerSector()} * sectors().tableSectors().size();
    const uint64_t most = std::min<uint64_t>(reached, uint64_t{kHighestSector} + 1);
    uint64_t lost = 0;
    for (uint64_t at = 0; at < most; ++at) {
      const auto sector = static_cast<uint32_t>(at);
      const uint64_t offset = sectors().offsetOf(sector);
      if (offset >= document_.fileSize()) break;
      if (owned_.has(sector) || isLocked(offset)) continue;
      if (sectors().next(sector).value_or(ksv::kFreeSector) != ksv::kFreeSector) ++lost;
    }
    return lost;
  }

  bool isLocked(uint64_t offset) const {
    return offset <= kLockedOffset && kLockedOffset - offset < document_.header_.sectorSize();
  }

  Document& document_;
  SectorSet owned_;
  SectorSet ownedMini_;
  uint64_t directorySectors_ = 0;
};

CheckedFacts Document::check() { return DocumentCheck(*this).run(); }

}  // namespace ksv_kit::documents
