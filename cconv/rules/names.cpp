#include "cconv/rules/names.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

namespace ksv {
namespace {

struct KnownName {
  std::string_view name;
  CharsetId id;
};

constexpr KnownName kKnownNames[] = {
    {"shift_jis", 1001},       {"windows31j", 1002},     {"iso-10646-ucs-2", 1003},
    {"iso-10646-ucs-4", 1004}, {"utf-16", 1005},         {"utf-8", 1006},
    {"euc-jp", 1007},          {"euc-jp-fix", 1008},     {"iso-2022-jp", 1009},
    {"shift_jis-2004", 1010},  {"euc-jis-2004", 1011},   {"iso-2022-jp-2004", 1012},
    {"windows31j-usr", 3001},  {"windowsntj-usr", 3002}, {"oasys_extset", 3003},
    {"oasys2_extset", 3004},   {"iso-646irv", 2001},     {"jis_x0201latin", 2002},
    {"jis_x0201kana", 2003},   {"jis_c6226-1978", 2004}, {"jis_x0208-1983", 2005},
    {"jis_x0208-1990", 2006},  {"jis_x0212-1990", 2007}, {"nec_extset", 2008},
    {"ibm_extset", 2009},      {"necibm_extset", 2012},  {"jis-78-83", 2010},
    {"jis_x0213", 2011},       {"chinesegbk", 5000},     {"chinesebig5", 5001},
    {"koreanksc", 5002},       {"gb18030", 5003},
};

constexpr CharsetId kFirstHashedId = 4000;

constexpr char loweredLetter(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Lengths and last letters tell most names apart: which last letters the known names of a length
// have, a bit each.
class Endings {
 public:
  constexpr Endings() {
    for (const KnownName& known : kKnownNames) bits_[known.name.size()] |= bitOf(known.name);
  }
  constexpr bool haveThatOf(std::string_view name) const {
    return !name.empty() && name.size() < bits_.size() && (bits_[name.size()] & bitOf(name)) != 0;
  }

 private:
  static constexpr uint32_t bitOf(std::string_view name) {
    return uint32_t{1} << (name.back() & 0x1F);
  }
  std::array<uint32_t, 32> bits_{};
};

constexpr Endings kEndings;

const KnownName* findKnown(std::string_view name) {
  if (!kEndings.haveThatOf(name)) return nullptr;
  const auto found = std::ranges::find_if(kKnownNames, [&](const KnownName& known) {
    return std::ranges::equal(known.name, name, {}, {}, loweredLetter);
  });
  return found == std::end(kKnownNames) ? nullptr : found;
}

}  // namespace

void lowerAscii(char* text) {
  for (; *text != '\0'; ++text) *text = loweredLetter(*text);
}

CharsetId idOfName(std::string_view name) {
  if (const KnownName* const known = findKnown(name)) return known->id;
  CharsetId id = kFirstHashedId;
  for (uint32_t position = 1; const char c : name)
    id += static_cast<unsigned char>(loweredLetter(c)) * position++;
  return id;
}

CharsetId nameToId(char* name) {
  lowerAscii(name);
  return idOfName(name);
}

}  // namespace ksv
