// The language whose encodings are to be preferred.
#pragma once

#include <cstdint>

namespace ksv::detect {

enum class Preference : uint8_t {
  kNone,
  kJapanese,
  kSimplifiedChinese,
  kTraditionalChinese,
  kKorean
};

// That of a language's name, without regard to case. Null or empty: of the language
// that the environment variable LANG names, or, where there is none, the locale of
// the process, which is set to the user's for that. Throws std::bad_alloc.
Preference preferenceFor(const char* language);

}  // namespace ksv::detect
