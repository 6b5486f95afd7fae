#include "cconv/engine/composition.h"

namespace ksv {

const Composition* findComposition(uint32_t jisCode) {
  if (jisCode < 0x2477 || jisCode > 0x2B66) return nullptr;
  for (const Composition& row : Jisx0213CompositionTable) {
    if (row.jisCode == jisCode) return &row;
  }
  return nullptr;
}

const Composition* findComposition(uint32_t base, uint32_t mark) {
  if (!mayBeCompositionBase(base) || standaloneMark(mark) == 0) return nullptr;
  for (const Composition& row : Jisx0213CompositionTable) {
    if (row.base == base && row.mark == mark) return &row;
  }
  return nullptr;
}

}  // namespace ksv
