// Between the pairs of Shift_JIS (JIS X 0208:1997, annex 1; JIS X 0213:2004, annex 1) and the
// codes of JIS.
//
// Lead bytes are 0x81-0x9F and 0xE0-0xFC, trail bytes 0x40-0xFC without 0x7F. A
// pair of lead bytes' worth of trail bytes, 188 codes, holds two rows of JIS.
#pragma once

#include <cstdint>

namespace ksv {

// Codes below 0x100 pass unchanged; 0: no such code.
uint32_t shiftJisToJisX0208(uint32_t pair);
uint32_t shiftJis2004ToJisX0213(uint32_t pair);
uint32_t jisX0208ToShiftJis(uint32_t code);
uint32_t jisX0213ToShiftJis2004(uint32_t code);

}  // namespace ksv
