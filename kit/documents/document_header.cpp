#include "kit/documents/document_header.h"

#include <cstring>

#include "common/little_endian.h"
#include "kit/documents/limits.h"

namespace ksv_kit::documents {
namespace {

namespace at = ksv::compound_header;

constexpr uint16_t kByteOrderMark = 0xFFFE;
constexpr unsigned kUsualSectorShift = 9;
constexpr unsigned kLargeSectorShift = 12;
constexpr unsigned kUsualMiniShift = 6;
constexpr uint32_t kUsualCutoff = 4096;

using HeaderBytes = std::array<uint8_t, ksv::kHeaderSize>;

unsigned usualShift(const Header& header) {
  return header.hasLargeSizes() ? kLargeSectorShift : kUsualSectorShift;
}

void takeShifts(const HeaderBytes& bytes, Header& header, DamageList& damages) {
  header.sectorShift = ksv::wordAt(bytes.data() + at::kSectorShift);
  if (header.sectorShift != usualShift(header))
    damages.tell(KSV_DAMAGE_HEADER, at::kSectorShift, "has sectors of a size that is not usual");
  const bool isPossible = header.sectorShift >= limits::kLeastSectorShift &&
                          header.sectorShift <= limits::kMostSectorShift;
  if (!isPossible) header.sectorShift = usualShift(header);
  header.miniShift = ksv::wordAt(bytes.data() + at::kMiniSectorShift);
  if (header.miniShift == kUsualMiniShift) return;
  damages.tell(KSV_DAMAGE_HEADER, at::kMiniSectorShift,
               "has mini sectors of a size that is not usual");
  if (header.miniShift < limits::kLeastMiniShift || header.miniShift > header.sectorShift)
    header.miniShift = kUsualMiniShift;
}

void takeVersion(const HeaderBytes& bytes, Header& header, DamageList& damages) {
  constexpr uint16_t kUsualVersion = 3;
  header.version = ksv::wordAt(bytes.data() + at::kMajorVersion);
  if (header.version != kUsualVersion && header.version != Header::kLargeVersion)
    damages.tell(KSV_DAMAGE_HEADER, at::kMajorVersion, "has a version that is not known");
  if (ksv::wordAt(bytes.data() + at::kByteOrder) != kByteOrderMark)
    damages.tell(KSV_DAMAGE_HEADER, at::kByteOrder, "has a mark of byte order that is none");
}

// What a file cut short lacks of its header reads as the end of chains.
HeaderBytes headerBytes(PagedBytes& bytes, size_t& count) {
  HeaderBytes header;
  header.fill(0xFF);
  count = bytes.readTable(0, header.data(), header.size());
  return header;
}

}  // namespace

std::optional<Header> readHeader(PagedBytes& source, DamageList& damages) {
  size_t count = 0;
  const HeaderBytes bytes = headerBytes(source, count);
  if (std::memcmp(bytes.data(), ksv::kCompoundSignature, sizeof ksv::kCompoundSignature) != 0)
    return std::nullopt;
  if (count < bytes.size()) damages.tell(KSV_DAMAGE_CUT_SHORT, count, "ends inside the header");
  const auto dword = [&](size_t offset) { return ksv::dwordAt(bytes.data() + offset); };
  Header header;
  takeVersion(bytes, header, damages);
  takeShifts(bytes, header, damages);
  header.directorySectors = dword(at::kDirectorySectorCount);
  header.fatSectors = dword(at::kFatSectorCount);
  header.firstDirectorySector = dword(at::kFirstDirectorySector);
  header.transaction = dword(at::kTransaction);
  header.cutoff = dword(at::kMiniStreamCutoff);
  header.firstMiniFatSector = dword(at::kFirstMiniFatSector);
  header.miniFatSectors = dword(at::kMiniFatSectorCount);
  header.firstDifatSector = dword(at::kFirstDifatSector);
  header.difatSectors = dword(at::kDifatSectorCount);
  for (size_t i = 0; i < header.difat.size(); ++i) header.difat[i] = dword(at::kDifat + 4 * i);
  if (header.cutoff != kUsualCutoff)
    damages.tell(KSV_DAMAGE_HEADER, at::kMiniStreamCutoff,
                 "has a limit of small streams that is not usual");
  return header;
}

}  // namespace ksv_kit::documents
