// ISO-2022-JP with half-width katakana behind SO, as older mail has it.
#ifndef KSV_CLI_ISO_2022_SHIFTS_H
#define KSV_CLI_ISO_2022_SHIFTS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "offset_links.h"
#include "streams.h"

namespace ksv_cli {

// Puts escape sequences in the place of SO and SI, which the converter does not know. An
// escape sequence ends what SO began as well.
class ShiftSource : public ByteSource {
 public:
  explicit ShiftSource(ByteSource& source) : source_(source) {}

  size_t read(uint8_t* buffer, size_t size) override;
  uint64_t fileOffset(uint64_t offset) const override {
    return source_.fileOffset(links_.originOf(offset));
  }
  void forgetBefore(uint64_t offset) override { links_.forgetBefore(offset); }

 private:
  void take(uint8_t byte);
  void followEscape(uint8_t byte);

  ByteSource& source_;
  OffsetLinks links_;
  std::string escape_;                 // the beginning of an escape sequence
  std::string designated_ = "\x1B(B";  // what SI goes back to
  std::vector<uint8_t> text_;
  size_t read_ = 0;
  uint64_t made_ = 0;
  uint64_t taken_ = 0;
};

}  // namespace ksv_cli

#endif
