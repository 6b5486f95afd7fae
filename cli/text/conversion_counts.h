// What a conversion left out or wrote otherwise.
#pragma once

#include <cstdint>
#include <string>

namespace ksv_cli {

struct ConversionCounts {
  uint64_t invalidBytes = 0;  // that were skipped
  uint64_t replaced = 0;      // characters

  bool any() const { return invalidBytes != 0 || replaced != 0; }

  // "3 invalid bytes skipped, 2 characters replaced"
  std::string inWords() const {
    return std::to_string(invalidBytes) + (invalidBytes == 1 ? " invalid byte" : " invalid bytes") +
           " skipped, " + std::to_string(replaced) +
           (replaced == 1 ? " character" : " characters") + " replaced";
  }
};

}  // namespace ksv_cli
