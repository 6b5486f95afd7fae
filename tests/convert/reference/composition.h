// Pairs of a base and a combining mark that JIS X 0213 has one code for.
#pragma once

#include <cstdint>

namespace ksv_reference {

struct Composition {
  uint32_t code = 0;
  uint32_t base = 0;
  uint32_t mark = 0;
};

const Composition* findCompositionByCode(uint32_t code);
const Composition* findCompositionByPair(uint32_t base, uint32_t mark);

// The JIS X 0208 or JIS X 0213 code of a mark that stands alone, else 0.
uint32_t standaloneMark(uint32_t mark);

}  // namespace ksv_reference
