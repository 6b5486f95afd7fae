#include "detect/language.h"

#include <clocale>
#include <cstdlib>
#include <string>
#include <string_view>

namespace ksv::detect {
namespace {

// Only A to Z have a case, whatever the locale.
std::string lowered(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return result;
}

struct NamedPreference {
  std::string_view name;
  Preference preference;
};

constexpr NamedPreference kLanguages[] = {
    {"japanese", Preference::kJapanese},
    {"simplified chinese", Preference::kSimplifiedChinese},
    {"traditional chinese", Preference::kTraditionalChinese},
    {"korean", Preference::kKorean},
};

// What names of locales hold, the first that is found decides. English stands among
// them so that "en_" wins over what comes behind it.
constexpr NamedPreference kLocaleParts[] = {
    {"ja_", Preference::kJapanese},
    {"japanese", Preference::kJapanese},
    {"jpn", Preference::kJapanese},
    {"en_", Preference::kNone},
    {"english", Preference::kNone},
    {"zh_cn", Preference::kSimplifiedChinese},
    {"chinese-simplified", Preference::kSimplifiedChinese},
    {"chs", Preference::kSimplifiedChinese},
    {"zh_tw", Preference::kTraditionalChinese},
    {"chinese-traditional", Preference::kTraditionalChinese},
    {"cht", Preference::kTraditionalChinese},
    {"ko_", Preference::kKorean},
    {"korean", Preference::kKorean},
    {"kor", Preference::kKorean},
};

constexpr NamedPreference kWholeLocales[] = {
    {"ja", Preference::kJapanese},
    {"zh", Preference::kSimplifiedChinese},
    {"ko", Preference::kKorean},
};

Preference preferenceOfLocale(const std::string& name) {
  for (const NamedPreference& part : kLocaleParts) {
    if (name.find(part.name) != name.npos) return part.preference;
  }
  for (const NamedPreference& whole : kWholeLocales) {
    if (name == whole.name) return whole.preference;
  }
  return Preference::kNone;
}

// A LANG that is set to nothing names no locale, and the process's is not asked for.
const char* localeName() {
  const char* name = std::getenv("LANG");
  if (name == nullptr) name = std::setlocale(LC_CTYPE, "");
  return name == nullptr ? "" : name;
}

}  // namespace

Preference preferenceFor(const char* language) {
  if (language == nullptr || *language == '\0') return preferenceOfLocale(lowered(localeName()));
  const std::string name = lowered(language);
  for (const NamedPreference& known : kLanguages) {
    if (name == known.name) return known.preference;
  }
  return Preference::kNone;
}

}  // namespace ksv::detect
