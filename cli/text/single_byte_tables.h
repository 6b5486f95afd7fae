// The charsets of one byte a character that a text may be in.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "cli/text/byte_facts.h"
#include "cli/text/language_model.h"
#include "kit/charsets/charset_names.h"

namespace ksv_cli {

using ksv_kit::CharsetNames;

struct SingleByteTable {
  static constexpr uint32_t kNoCharacter = 0xFFFFFFFF;

  std::string name;
  Language language;
  std::array<uint32_t, 256> characters;

  // Whether every byte of the text is a character, and what the text costs.
  bool holds(const ByteFacts& facts) const;
  uint64_t cost(const ByteFacts& facts) const;
  // How many bytes of the text are other characters in the other charset.
  uint64_t differingBytes(const SingleByteTable& other, const ByteFacts& facts) const;
};

class SingleByteTables {
 public:
  // Those that the charset directory has; asked of the library at the first call. May be
  // called from several threads.
  const std::vector<SingleByteTable>& all(const CharsetNames& names) const;

 private:
  // Not by std::call_once, which an exception leaves only with memory to spare.
  mutable std::mutex mutex_;
  mutable bool isFilled_ = false;
  mutable std::vector<SingleByteTable> tables_;
};

}  // namespace ksv_cli
