// A chain of sectors, or of mini sectors, found as far as it is asked for. Sectors that follow each
// other in the file are one run, so that a stream in one piece costs a run and not its length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "kit/documents/damage.h"
#include "kit/documents/sector_set.h"

namespace ksv_kit::documents {

// The highest number that a sector may have; those above are marks.
inline constexpr uint32_t kHighestSector = 0xFFFFFFFA;

// Where links are written: the table of sectors, or that of mini sectors.
class LinkTable {
 public:
  virtual ~LinkTable() = default;
  // What stands behind a sector; none where the table does not reach it.
  virtual std::optional<uint32_t> next(uint32_t sector) = 0;
  // Where the table says so, if it reaches the sector.
  virtual uint64_t placeOf(uint32_t sector) = 0;
};

class Chain {
 public:
  struct Start {
    uint32_t sector;
    uint64_t namedAt;  // in the file
    uint32_t id = kNoEntry;
  };
  struct Run {
    uint64_t index;  // in the chain, of the first sector
    uint32_t sector;
    uint32_t count;
  };

  // Both have to stay.
  Chain(LinkTable& links, DamageList& damages, const Start& start)
      : links_(links),
        damages_(damages),
        next_(start.sector),
        namedAt_(start.namedAt),
        id_(start.id) {}

  // From an index on, at most so many sectors that follow each other; none behind the end.
  std::optional<Run> from(uint64_t index, uint64_t wanted = 1);

  // Follows the chain to its end: how many sectors it has.
  uint64_t length();
  // Whether it ended otherwise than by the mark for it, which was told.
  bool isBroken() const { return isBroken_; }

 private:
  void reach(uint64_t count);
  void step();
  void append(uint32_t sector);
  void breakOff(ksv_damage_kind kind, const char* reason);

  LinkTable& links_;
  DamageList& damages_;
  std::vector<Run> runs_;
  SectorSet seen_;
  uint64_t known_ = 0;  // sectors
  uint32_t next_;
  uint64_t namedAt_;  // where next_ is
  const uint32_t id_;
  bool isEnded_ = false;
  bool isBroken_ = false;
};

}  // namespace ksv_kit::documents
