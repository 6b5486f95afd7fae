#include "kit/documents/sector_tables.h"

#include "common/little_endian.h"

namespace ksv_kit::documents {

std::optional<uint32_t> SectorTable::next(uint32_t sector) {
  const std::optional<uint64_t> place = placeInTable(sector);
  return place ? bytes_.dword(*place) : std::nullopt;
}

uint64_t SectorTable::placeOf(uint32_t sector) { return placeInTable(sector).value_or(0); }

std::optional<uint64_t> SectorTable::placeInTable(uint32_t sector) {
  const std::optional<uint32_t> table = tableSector(sector / linksPerSector());
  if (!table || *table > kHighestSector) return std::nullopt;
  return offsetOf(*table) + uint64_t{sector % linksPerSector()} * 4;
}

std::optional<uint32_t> SectorTable::tableSector(size_t index) {
  if (index < header_.difat.size()) return header_.difat[index];
  index -= header_.difat.size();
  while (index >= listed_.size())
    if (!readOnInList()) return std::nullopt;
  return listed_[index];
}

// The list ends where the file does, where it comes back to itself, and where it says so: by either
// mark, since writers differ in it.
bool SectorTable::readOnInList() {
  if (nextDifat_ == ksv::kEndOfChain || nextDifat_ == ksv::kFreeSector) return false;
  if (nextDifat_ > kHighestSector)
    return endList("has a list of its table that leads to no sector");
  std::vector<uint8_t> sector(header_.sectorSize());
  const uint64_t offset = offsetOf(nextDifat_);
  if (bytes_.readTable(offset, sector.data(), sector.size()) < sector.size())
    return endList("lacks a sector of the list of its table");
  if (!seenDifat_.add(nextDifat_))
    return endList("has a list of its table that comes back to itself");
  difat_.push_back(nextDifat_);
  const size_t links = linksPerSector() - 1;
  for (size_t i = 0; i < links; ++i) listed_.push_back(ksv::dwordAt(sector.data() + 4 * i));
  nextDifat_ = ksv::dwordAt(sector.data() + 4 * links);
  nextDifatNamedAt_ = offset + 4 * links;
  return true;
}

bool SectorTable::endList(const char* reason) {
  damages_.tell(KSV_DAMAGE_SECTOR_TABLE, nextDifatNamedAt_, reason);
  nextDifat_ = ksv::kEndOfChain;
  return false;
}

const std::vector<uint32_t>& SectorTable::difatSectors() {
  while (readOnInList()) continue;
  return difat_;
}

const std::vector<uint32_t>& SectorTable::tableSectors() {
  if (isComplete_) return all_;
  difatSectors();
  all_.assign(header_.difat.begin(), header_.difat.end());
  all_.insert(all_.end(), listed_.begin(), listed_.end());
  while (!all_.empty() && all_.back() == ksv::kFreeSector) all_.pop_back();
  isComplete_ = true;
  return all_;
}

std::optional<uint32_t> MiniTable::next(uint32_t miniSector) {
  const std::optional<uint64_t> place = placeInTable(miniSector);
  return place ? bytes_.dword(*place) : std::nullopt;
}

uint64_t MiniTable::placeOf(uint32_t miniSector) { return placeInTable(miniSector).value_or(0); }

std::optional<uint64_t> MiniTable::placeInTable(uint32_t miniSector) {
  const uint32_t perSector = sectors_.linksPerSector();
  const std::optional<Chain::Run> run = chain_.from(miniSector / perSector);
  if (!run) return std::nullopt;
  return sectors_.offsetOf(run->sector) + uint64_t{miniSector % perSector} * 4;
}

}  // namespace ksv_kit::documents
