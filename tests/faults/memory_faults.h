// Memory that fails when a test wants it to. A test program that links this has the operator
// new and delete of memory_faults.cpp in place of the others.
#pragma once

#include <cstdint>

namespace ksv::test {

// The same for the blocks that the library takes from the C library. Call it before it has
// taken any: they go back where they came from.
void watchBlocksOfLibrary();

// What is alive: blocks, and the bytes that were asked for.
struct LiveMemory {
  int64_t blocks;
  int64_t bytes;

  bool operator==(const LiveMemory&) const = default;
};
LiveMemory liveMemory();

enum class Refused { kOne, kAllFromThere };
enum class Thread { kThisOne, kAny };

// While it lives, one allocation finds no memory, or all from that one on. They are counted
// from 0 and from when this was made. There is one at a time.
class FailingMemory {
 public:
  FailingMemory(uint64_t number, Refused refused, Thread thread = Thread::kThisOne);
  ~FailingMemory() { stop(); }
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;

  // From here on there is memory again; the counts stay.
  void stop();

  // How many allocations there were, and how many found no memory.
  static uint64_t asked();
  static uint64_t refused();
};

// Counts, and refuses nothing.
inline constexpr uint64_t kNoAllocation = UINT64_MAX;

}  // namespace ksv::test
