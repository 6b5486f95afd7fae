#include "reference/parts.h"

namespace ksv_reference {
namespace {

// Plane-2 rows of the lead bytes F0 to FC: for trail bytes up to 9E, and above.
const uint32_t kPlane2Rows[13][2] = {{1, 8},   {3, 4},   {5, 12},  {13, 14}, {15, 78},
                                     {79, 80}, {81, 82}, {83, 84}, {85, 86}, {87, 88},
                                     {89, 90}, {91, 92}, {93, 94}};

bool isPair(uint8_t lead, uint8_t trail) {
  const bool leadFits = (lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xFC);
  return leadFits && trail >= 0x40 && trail <= 0xFC && trail != 0x7F;
}

bool isPlane2SmallRow(uint32_t row) {
  return row == 1 || row == 3 || row == 4 || row == 5 || row == 8 || (row >= 12 && row <= 15);
}

// The lead byte of a row of JIS X 0213, or 0.
uint32_t leadOfRow(uint32_t row, bool plane2) {
  if (plane2) {
    if (isPlane2SmallRow(row)) return (row + 479) / 2 - 3 * (row / 8);
    return row >= 64 && row <= 94 ? (row + 411) / 2 : 0;
  }
  if (row >= 1 && row <= 62) return (row + 257) / 2;
  return row >= 63 && row <= 94 ? (row + 385) / 2 : 0;
}

}  // namespace

uint32_t shiftJisToJis(uint8_t lead, uint8_t trail) {
  if (!isPair(lead, trail)) return 0;
  const uint32_t rowPair = lead - (lead >= 0xE0 ? 0xC1U : 0x81U);
  const uint32_t cellIndex = trail - 0x40U - (trail >= 0x80 ? 1U : 0U);
  const uint32_t row = 2 * rowPair + (cellIndex < 94 ? 0x21U : 0x22U);
  const uint32_t cell = cellIndex < 94 ? cellIndex + 0x21 : cellIndex - 94 + 0x21;
  return row * 256 + cell;
}

uint32_t shiftJis2004ToJis(uint8_t lead, uint8_t trail) {
  const uint32_t code = shiftJisToJis(lead, trail);
  if (code == 0 || lead < 0xF0) return code;
  const uint32_t row = kPlane2Rows[lead - 0xF0][trail <= 0x9E ? 0 : 1] + 0x20;
  return 0x10000 | (row * 256) | (code & 0xFF);
}

uint32_t jisToShiftJis(uint32_t code) {
  if (code < 0x100) return code;
  if (code < 0x2121 || code > 0x987E) return 0;
  const uint32_t d = code - 0x2121;
  const uint32_t lead = d / 512 + 0x81 + (d / 512 >= 31 ? 0x40U : 0U);
  uint32_t trail = d % 256 + 0x40;
  if (((code >> 8) - 0x21) % 2 == 1) trail += 94;
  if (trail >= 0x7F) ++trail;
  return lead * 256 + (trail & 0xFF);
}

uint32_t jisToShiftJis2004(uint32_t code) {
  if (code < 0x100) return code;
  const uint32_t high = (code >> 8) & 0xFF;
  const uint32_t cell = code & 0xFF;
  if (code > 0x1FFFF || high <= 0x20 || cell < 0x21 || cell > 0x7E) return 0;
  const uint32_t row = high - 0x20;
  const uint32_t lead = leadOfRow(row, (code & 0x10000) != 0);
  if (lead == 0) return 0;
  if (row % 2 == 0) return lead * 256 + cell + 0x7E;
  return lead * 256 + cell + (cell <= 0x5F ? 0x1F : 0x20);
}

}  // namespace ksv_reference
