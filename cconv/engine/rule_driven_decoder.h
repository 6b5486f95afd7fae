// The decoder that rule files alone drive: codes of one to many bytes, looked up
// in the groups of the source charset in order.
#pragma once

#include <cstdint>

#include "ksv_cconv.h"

namespace ksv {

// Turns the bytes read, as one number, into a group code; 0: they are no code.
using ByteTransform = uint32_t (*)(uint32_t rawCode);

void decodeByRules(ConverterRecord& record, ByteTransform transform = nullptr);

}  // namespace ksv
