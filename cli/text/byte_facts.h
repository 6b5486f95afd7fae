// What can be seen of a text without knowing its charset, in one pass.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "cli/system/streams.h"

namespace ksv_cli {

// How often a byte stands behind another one.
struct BytePair {
  uint8_t before;
  uint8_t byte;
  uint64_t count;
};

struct ByteFacts {
  uint64_t size = 0;
  uint8_t first = 0;
  std::vector<BytePair> pairs;  // those that there are
  bool isUsed[256] = {};

  bool isUtf8 = false;     // well-formed
  bool isIso2022 = false;  // well-formed, with a known escape sequence
  // An escape sequence that only text in ISO-2022-JP has: those that go back to single
  // bytes are written by terminals, too.
  bool designatesPairs = false;
  bool designatesPlanes = false;  // those of JIS X 0213

  // A byte above 7F, and a control code that texts do not have.
  bool isAscii() const;
  uint64_t highBytes() const;
  bool hasOddControls() const;
};

// Throws Failure when the text cannot be read.
ByteFacts byteFacts(ByteSource& source);

}  // namespace ksv_cli
