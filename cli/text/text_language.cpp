#include "cli/text/text_language.h"

#include <cstring>
#include <utility>

#include "cli/system/process.h"

namespace ksv_cli {
namespace {

constexpr std::pair<const char*, Language> kNames[] = {
    {"ja", Language::kJapanese},
    {"zh-cn", Language::kSimplifiedChinese},
    {"zh-tw", Language::kTraditionalChinese},
    {"ko", Language::kKorean},
};

}  // namespace

TextLanguage textLanguageNamed(std::string_view name) {
  for (const auto& [known, language] : kNames)
    if (name == known) return language;
  return std::nullopt;
}

const char* nameOfTextLanguage(TextLanguage language) {
  for (const auto& [name, known] : kNames)
    if (language == known) return name;
  return "any";
}

Locale localeOfUser() {
  for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    std::string name = platform::environmentValue(variable);
    if (!name.empty()) return {std::move(name), variable};
  }
  return {};
}

TextLanguage textLanguageOf(const Locale& locale) {
  const std::string& name = locale.name;
  const auto isOf = [&](const char* language) {
    const size_t length = std::strlen(language);
    return name.starts_with(language) &&
           (name.size() == length || std::strchr("_-.@", name[length]) != nullptr);
  };
  if (isOf("ja")) return Language::kJapanese;
  if (isOf("ko")) return Language::kKorean;
  if (isOf("zh_TW") || isOf("zh_HK") || isOf("zh_MO") || isOf("zh_Hant"))
    return Language::kTraditionalChinese;
  if (isOf("zh_CN") || isOf("zh_SG") || isOf("zh_Hans")) return Language::kSimplifiedChinese;
  return std::nullopt;
}

}  // namespace ksv_cli
