// ISO-2022-JP with half-width katakana behind SO, as older mail has it.
#pragma once

#include <cstdint>
#include <string>

#include "kit/convert/rewriting_stage.h"

namespace ksv_kit {

// Puts escape sequences in the place of SO and SI, which the converter does not know. An
// escape sequence ends what SO began as well.
class ShiftStage : public RewritingStage {
 private:
  void takeByte(uint8_t byte) override;
  void forget() override;
  void followEscape(uint8_t byte);

  std::string escape_;                 // the beginning of an escape sequence
  std::string designated_ = "\x1B(B";  // what SI goes back to
};

}  // namespace ksv_kit
