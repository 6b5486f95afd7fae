// Pre-conversions: mail encodings that are turned as a whole into a charset of
// the rule base before the decoder sees them.
#pragma once

#include <cstdint>

namespace ksv {

enum PreConversion : uint32_t { kNoPreConversion = 0, kUtf7 = 1, kHz = 2 };

struct PreConverted {
  int32_t length = 0;      // bytes of converted text
  bool truncated = false;  // there is more text than fits the output
};

// UTF-7 (RFC 2152) into 32-bit Unicode units in host byte order. Stops at the
// first byte that does not decode.
PreConverted preConvertUtf7(const uint8_t* input, int32_t length, uint8_t* output,
                            int32_t capacity);

// HZ (RFC 1843) into GBK bytes, up to the first zero byte. The output must be
// zeroed.
PreConverted preConvertHz(const uint8_t* input, int32_t length, uint8_t* output, int32_t capacity);

}  // namespace ksv
