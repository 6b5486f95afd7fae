// The language that texts are in, as far as it is known.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ksv_cli {

enum class Language { kJapanese, kSimplifiedChinese, kTraditionalChinese, kKorean };

// The language of the texts; none: any.
using TextLanguage = std::optional<Language>;

// "ja", "zh-cn", "zh-tw", "ko" or "any".
TextLanguage textLanguageNamed(std::string_view name);
// The same the other way round.
const char* nameOfTextLanguage(TextLanguage language);

struct Locale {
  std::string name;      // as "ja_JP.UTF-8"; empty: there is none
  std::string variable;  // of the environment, that says so
};
// That of the user: LC_ALL, LC_CTYPE or LANG.
Locale localeOfUser();
TextLanguage textLanguageOf(const Locale& locale);
inline TextLanguage textLanguageOfUser() { return textLanguageOf(localeOfUser()); }

}  // namespace ksv_cli
