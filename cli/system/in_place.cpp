#include "cli/system/in_place.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "cli/system/failure.h"

namespace ksv_cli {
namespace {

using Block = std::array<uint8_t, 64 * 1024>;

// Less only where the source ends.
size_t fill(ByteSource& source, Block& block) {
  size_t held = 0;
  while (held < block.size()) {
    const size_t count = source.read(block.data() + held, block.size() - held);
    if (count == 0) break;
    held += count;
  }
  return held;
}

}  // namespace

bool haveSameBytes(ByteSource& one, ByteSource& other) {
  const auto first = std::make_unique<Block>();
  const auto second = std::make_unique<Block>();
  for (;;) {
    const size_t count = fill(one, *first);
    if (fill(other, *second) != count) return false;
    const auto end = first->begin() + static_cast<ptrdiff_t>(count);
    if (!std::equal(first->begin(), end, second->begin())) return false;
    if (count < first->size()) return true;
  }
}

void checkThatNothingIsLost(const platform::FileFacts& original, const platform::FileFacts& now) {
  if (!now.isSameTextAs(original)) throw Failure("another program has changed it meanwhile");
  if (now.names > 1)
    throw Failure("it has " + std::to_string(now.names) +
                  " names (hard links), and the others would keep the older text");
}

}  // namespace ksv_cli
