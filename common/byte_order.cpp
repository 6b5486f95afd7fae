#include "common/byte_order.h"

#include <cstring>

#include "ksv_file.h"

uint16_t KSV_GetW_x(const void* p) {
  uint16_t value;
  std::memcpy(&value, p, sizeof value);
  return ksv::reversed(value);
}

// Reads 16 bits, not 32: callers hold words here and use the upper half of the
// result. KSV_PutDW_x, its apparent counterpart, handles all 32.
uint32_t KSV_GetDW_x(const void* p) {
  uint16_t word;
  std::memcpy(&word, p, sizeof word);
  return ksv::reversed(static_cast<uint32_t>(word));
}

uint16_t KSV_PutW_x(void* p, uint16_t value) {
  const uint16_t stored = ksv::reversed(value);
  std::memcpy(p, &stored, sizeof stored);
  return stored;
}

uint32_t KSV_PutDW_x(void* p, uint32_t value) {
  const uint32_t stored = ksv::reversed(value);
  std::memcpy(p, &stored, sizeof stored);
  return stored;
}
