#include "cconv/rules/names.h"

#include <string_view>

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

}  // namespace

void lowerAscii(char* text) {
  for (; *text != '\0'; ++text) {
    if (*text >= 'A' && *text <= 'Z') *text = static_cast<char>(*text - 'A' + 'a');
  }
}

CharsetId nameToId(char* name) {
  lowerAscii(name);
  const std::string_view lowered = name;
  for (const KnownName& known : kKnownNames) {
    // Lengths and last letters tell most names apart.
    if (known.name.size() == lowered.size() && known.name.back() == lowered.back() &&
        known.name == lowered) {
      return known.id;
    }
  }
  return hashedId(lowered);
}

}  // namespace ksv
