#include "cli/text/text_failure.h"

#include <cstdio>

namespace ksv_cli {

std::string atOffset(uint64_t offset) { return " at byte offset " + std::to_string(offset); }

Failure invalidText(const std::string& charset, std::optional<uint8_t> byte, uint64_t offset) {
  char shown[16] = "";
  if (byte) std::snprintf(shown, sizeof shown, " (0x%02X)", static_cast<unsigned>(*byte));
  return Failure("invalid " + charset + shown + atOffset(offset));
}

Failure truncatedText(const std::string& charset, uint64_t offset) {
  return Failure("the text ends inside a " + charset + " character" + atOffset(offset));
}

}  // namespace ksv_cli
