// Texts that are held in memory as a whole, for what cannot be told of their pieces.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "cli/system/memory_streams.h"
#include "cli/system/streams.h"

namespace ksv_cli {

// What is left of a text. size: as far as it is known in front, else 0. Throws Failure where it
// cannot be read, or is longer than a text may be that is held.
std::string heldText(ByteSource& source, uint64_t size);

// Reads a text that it owns.
class HeldSource : public ByteSource {
 public:
  explicit HeldSource(std::string text) : text_(std::move(text)), source_(text_) {}

  size_t read(uint8_t* buffer, size_t size) override { return source_.read(buffer, size); }

 private:
  const std::string text_;
  TextSource source_;
};

}  // namespace ksv_cli
