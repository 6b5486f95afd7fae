// The language that texts are in, as far as it is known.
#pragma once

#include <optional>
#include <string_view>

#include "cli/text/language_model.h"

namespace ksv_cli {

// The language of the texts: one of the first four models; none: any.
using TextLanguage = std::optional<Language>;

// "ja", "zh-cn", "zh-tw", "ko" or "any".
TextLanguage textLanguageNamed(std::string_view name);
// That of the user's environment: LC_ALL, LC_CTYPE or LANG.
TextLanguage textLanguageOfUser();

}  // namespace ksv_cli
