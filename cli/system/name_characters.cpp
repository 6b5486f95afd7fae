#include "cli/system/name_characters.h"

#include <algorithm>
#include <iterator>

namespace ksv_cli {
namespace {

constexpr std::string_view kLeftOut = "...";

struct Range {
  uint32_t first;
  uint32_t last;
};

// Unicode Standard Annex #11: wide and full-width, in whole blocks where that makes no difference.
constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x2329, 0x232A},   {0x23E9, 0x23EC},
    {0x23F0, 0x23F0},   {0x23F3, 0x23F3},   {0x25FD, 0x25FE},   {0x2614, 0x2615},
    {0x2648, 0x2653},   {0x267F, 0x267F},   {0x2693, 0x2693},   {0x26A1, 0x26A1},
    {0x26AA, 0x26AB},   {0x26BD, 0x26BE},   {0x26C4, 0x26C5},   {0x26CE, 0x26CE},
    {0x26D4, 0x26D4},   {0x26EA, 0x26EA},   {0x26F2, 0x26F3},   {0x26F5, 0x26F5},
    {0x26FA, 0x26FA},   {0x26FD, 0x26FD},   {0x2705, 0x2705},   {0x270A, 0x270B},
    {0x2728, 0x2728},   {0x274C, 0x274C},   {0x274E, 0x274E},   {0x2753, 0x2755},
    {0x2757, 0x2757},   {0x2795, 0x2797},   {0x27B0, 0x27B0},   {0x27BF, 0x27BF},
    {0x2B1B, 0x2B1C},   {0x2B50, 0x2B50},   {0x2B55, 0x2B55},   {0x2E80, 0x303E},
    {0x3041, 0x4DBF},   {0x4E00, 0xA4CF},   {0xA960, 0xA97C},   {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},   {0xFE10, 0xFE19},   {0xFE30, 0xFE6B},   {0xFF01, 0xFF60},
    {0xFFE0, 0xFFE6},   {0x16FE0, 0x18CFF}, {0x1AFF0, 0x1B2FB}, {0x1F004, 0x1F004},
    {0x1F0CF, 0x1F0CF}, {0x1F18E, 0x1F18E}, {0x1F191, 0x1F19A}, {0x1F200, 0x1F320},
    {0x1F32D, 0x1F335}, {0x1F337, 0x1F37C}, {0x1F37E, 0x1F393}, {0x1F3A0, 0x1F3CA},
    {0x1F3CF, 0x1F3D3}, {0x1F3E0, 0x1F3F0}, {0x1F3F4, 0x1F3F4}, {0x1F3F8, 0x1F43E},
    {0x1F440, 0x1F440}, {0x1F442, 0x1F4FC}, {0x1F4FF, 0x1F53D}, {0x1F54B, 0x1F54E},
    {0x1F550, 0x1F567}, {0x1F57A, 0x1F57A}, {0x1F595, 0x1F596}, {0x1F5A4, 0x1F5A4},
    {0x1F5FB, 0x1F64F}, {0x1F680, 0x1F6C5}, {0x1F6CC, 0x1F6CC}, {0x1F6D0, 0x1F6D2},
    {0x1F6D5, 0x1F6DF}, {0x1F6EB, 0x1F6EC}, {0x1F6F4, 0x1F6FC}, {0x1F7E0, 0x1F7F0},
    {0x1F90C, 0x1F93A}, {0x1F93C, 0x1F945}, {0x1F947, 0x1F9FF}, {0x1FA70, 0x1FAFF},
    {0x20000, 0x3FFFD}};

// Marks that stand over or under what is in front of them, as names have them.
constexpr Range kWithoutWidth[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD},
                                   {0x064B, 0x065F}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},
                                   {0x200B, 0x200F}, {0x20D0, 0x20F0}, {0x3099, 0x309A},
                                   {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xE0100, 0xE01EF}};

template <size_t count>
bool isIn(const Range (&ranges)[count], uint32_t character) {
  const auto range = std::ranges::lower_bound(ranges, character, {}, &Range::last);
  return range != std::end(ranges) && range->first <= character;
}

size_t columnsOfCharacter(uint32_t character) {
  if (isIn(kWithoutWidth, character)) return 0;
  return isIn(kWide, character) ? 2 : 1;
}

// The bytes of a character that begins so; 0: none does.
size_t lengthByLead(uint8_t lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

bool isCharacter(uint32_t value, size_t length) {
  constexpr uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = value >= 0xD800 && value < 0xE000;
  return value >= kSmallest[length] && value < kFirstLoneByte && !isSurrogate;
}

// As much of the front of a text as fits, with question marks.
std::string beginOf(std::string_view text, size_t columns) {
  std::string begin;
  while (!text.empty()) {
    const NameCharacter character = firstCharacterOf(text);
    const size_t width = columnsOfCharacter(character.value);
    if (width > columns) break;
    columns -= width;
    begin += character.value < kFirstLoneByte ? text.substr(0, character.length) : "?";
    text.remove_prefix(character.length);
  }
  return begin;
}

// What has to be left out of the front for the rest to fit.
std::string_view endOf(std::string_view text, size_t columns) {
  size_t width = columnsOf(text);
  while (width > columns) {
    const NameCharacter character = firstCharacterOf(text);
    width -= columnsOfCharacter(character.value);
    text.remove_prefix(character.length);
  }
  return text;
}

}  // namespace

NameCharacter firstCharacterOf(std::string_view text) {
  const auto lead = static_cast<uint8_t>(text[0]);
  const size_t length = lengthByLead(lead);
  const NameCharacter loneByte = {kFirstLoneByte + lead, 1};
  if (length == 1) return {lead, 1};
  if (length == 0 || length > text.size()) return loneByte;
  uint32_t value = lead & (0xFFU >> (length + 1));
  for (size_t at = 1; at < length; ++at) {
    const auto byte = static_cast<uint8_t>(text[at]);
    if ((byte & 0xC0) != 0x80) return loneByte;
    value = value << 6 | (byte & 0x3FU);
  }
  return isCharacter(value, length) ? NameCharacter{value, length} : loneByte;
}

size_t columnsOf(std::string_view text) {
  size_t columns = 0;
  while (!text.empty()) {
    const NameCharacter character = firstCharacterOf(text);
    columns += columnsOfCharacter(character.value);
    text.remove_prefix(character.length);
  }
  return columns;
}

std::string fittedInto(size_t columns, std::string_view text) {
  if (columnsOf(text) <= columns) return beginOf(text, columns);
  if (columns <= kLeftOut.size()) return std::string(kLeftOut.substr(0, columns));
  const size_t shown = columns - kLeftOut.size();
  const std::string_view end = endOf(text, shown - shown / 2);
  return beginOf(text, shown / 2) + std::string(kLeftOut) + beginOf(end, shown);
}

}  // namespace ksv_cli
