// The header of a compound file ([MS-CFB] 2.2).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "common/compound_format.h"
#include "kit/documents/damage.h"
#include "kit/documents/paged_bytes.h"

namespace ksv_kit::documents {

struct Header {
  static constexpr uint16_t kLargeVersion = 4;  // whose sizes have 64 bits

  uint16_t version = 0;
  unsigned sectorShift = 0;
  unsigned miniShift = 0;
  uint32_t directorySectors = 0;
  uint32_t fatSectors = 0;
  uint32_t firstDirectorySector = 0;
  uint32_t transaction = 0;
  uint32_t cutoff = 0;
  uint32_t firstMiniFatSector = 0;
  uint32_t miniFatSectors = 0;
  uint32_t firstDifatSector = 0;
  uint32_t difatSectors = 0;
  std::array<uint32_t, ksv::kHeaderTableSectors> difat = {};

  uint64_t sectorSize() const { return uint64_t{1} << sectorShift; }
  bool hasLargeSizes() const { return version >= kLargeVersion; }
};

// None when the bytes do not begin with the signature of the format. Of what lies behind the end of
// a file cut short, and of shifts that no sectors have, what is usual is taken.
std::optional<Header> readHeader(PagedBytes& bytes, DamageList& damages);

}  // namespace ksv_kit::documents
