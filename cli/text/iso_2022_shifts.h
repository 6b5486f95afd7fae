// ISO-2022-JP with half-width katakana behind SO, as older mail has it.
#pragma once

#include <cstdint>
#include <string>

#include "cli/text/rewriting_source.h"

namespace ksv_cli {

// Puts escape sequences in the place of SO and SI, which the converter does not know. An
// escape sequence ends what SO began as well.
class ShiftSource : public RewritingSource {
 public:
  using RewritingSource::RewritingSource;

 private:
  void take(uint8_t byte) override;
  void followEscape(uint8_t byte);

  std::string escape_;                 // the beginning of an escape sequence
  std::string designated_ = "\x1B(B";  // what SI goes back to
};

}  // namespace ksv_cli
