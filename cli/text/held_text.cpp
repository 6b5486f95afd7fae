#include "cli/text/held_text.h"

#include <memory>

#include "cli/system/failure.h"
#include "cli/system/resource_limits.h"

namespace ksv_cli {
namespace {

void refuseLonger(uint64_t size) {
  if (size > limits::kLongestHeld)
    throw Failure("is longer than 2 GiB, and would have to be held in memory as a whole");
}

}  // namespace

std::string heldText(ByteSource& source, uint64_t size) {
  constexpr size_t kBlock = 64 * 1024;
  refuseLonger(size);
  std::string text;
  text.reserve(size);
  const auto block = std::make_unique<uint8_t[]>(kBlock);
  while (const size_t count = source.read(block.get(), kBlock)) {
    text.append(reinterpret_cast<const char*>(block.get()), count);
    refuseLonger(text.size());
  }
  return text;
}

}  // namespace ksv_cli
