// The characters of JIS X 0213 that are one code there and a base with a
// combining mark in Unicode (JIS X 0213:2004, annex 4).
#pragma once

#include <cstdint>

namespace ksv {

struct Composition {
  uint32_t jisCode;
  uint32_t base;  // Unicode
  uint32_t mark;  // Unicode
};

constexpr Composition Jisx0213CompositionTable[] = {
    {0x2477, 0x304B, 0x309A}, {0x2478, 0x304D, 0x309A}, {0x2479, 0x304F, 0x309A},
    {0x247A, 0x3051, 0x309A}, {0x247B, 0x3053, 0x309A}, {0x2577, 0x30AB, 0x309A},
    {0x2578, 0x30AD, 0x309A}, {0x2579, 0x30AF, 0x309A}, {0x257A, 0x30B1, 0x309A},
    {0x257B, 0x30B3, 0x309A}, {0x257C, 0x30BB, 0x309A}, {0x257D, 0x30C4, 0x309A},
    {0x257E, 0x30C8, 0x309A}, {0x2678, 0x31F7, 0x309A}, {0x2B44, 0x00E6, 0x0300},
    {0x2B48, 0x0254, 0x0300}, {0x2B49, 0x0254, 0x0301}, {0x2B4A, 0x028C, 0x0300},
    {0x2B4B, 0x028C, 0x0301}, {0x2B4C, 0x0259, 0x0300}, {0x2B4D, 0x0259, 0x0301},
    {0x2B4E, 0x025A, 0x0300}, {0x2B4F, 0x025A, 0x0301}, {0x2B65, 0x02E9, 0x02E5},
    {0x2B66, 0x02E5, 0x02E9},
};

// Null when the code is no composed one.
const Composition* findComposition(uint32_t jisCode);
// Null when the pair does not compose.
const Composition* findComposition(uint32_t base, uint32_t mark);

// Whether some mark may compose with the character: a quick no for nearly all.
constexpr bool mayBeCompositionBase(uint32_t unicode) {
  return (unicode >= 0x304B && unicode <= 0x3053) || (unicode >= 0x30AB && unicode <= 0x30C8) ||
         unicode == 0x31F7 || unicode == 0x00E6 || (unicode >= 0x0254 && unicode <= 0x028C) ||
         unicode == 0x02E5 || unicode == 0x02E9;
}

struct StandaloneMark {
  uint32_t unicode;
  uint32_t jisCode;
};
constexpr StandaloneMark kStandaloneMarks[] = {
    {0x309A, 0x212C}, {0x0300, 0x212E}, {0x0301, 0x212D}, {0x02E5, 0x2824}, {0x02E9, 0x2825}};

// The JIS X 0208/0213 code of a mark on its own, for targets that cannot compose;
// 0 for any other character.
constexpr uint32_t standaloneMark(uint32_t unicode) {
  for (const StandaloneMark& mark : kStandaloneMarks) {
    if (mark.unicode == unicode) return mark.jisCode;
  }
  return 0;
}

}  // namespace ksv
