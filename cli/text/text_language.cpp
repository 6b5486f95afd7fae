#include "cli/text/text_language.h"

#include <cstring>
#include <string>

#include "cli/system/process.h"

namespace ksv_cli {

TextLanguage textLanguageNamed(std::string_view name) {
  if (name == "ja") return Language::kJapanese;
  if (name == "zh-cn") return Language::kSimplifiedChinese;
  if (name == "zh-tw") return Language::kTraditionalChinese;
  if (name == "ko") return Language::kKorean;
  return std::nullopt;
}

TextLanguage textLanguageOfUser() {
  std::string locale;
  for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"})
    if (locale.empty()) locale = platform::environmentValue(variable);
  const auto isOf = [&](const char* language) {
    const size_t length = std::strlen(language);
    return locale.starts_with(language) &&
           (locale.size() == length || std::strchr("_-.@", locale[length]) != nullptr);
  };
  if (isOf("ja")) return Language::kJapanese;
  if (isOf("ko")) return Language::kKorean;
  if (isOf("zh_TW") || isOf("zh_HK") || isOf("zh_MO") || isOf("zh_Hant"))
    return Language::kTraditionalChinese;
  if (isOf("zh_CN") || isOf("zh_SG") || isOf("zh_Hans")) return Language::kSimplifiedChinese;
  return std::nullopt;
}

}  // namespace ksv_cli
