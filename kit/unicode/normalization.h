// The normalization forms of Unicode, and one for texts that go to charsets of before it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "kit/unicode/text_change.h"

namespace ksv_kit {

enum class NormalizationForm {
  kNfc,
  kNfd,
  kNfkc,
  kNfkd,
  // Marks are joined with what they stand behind, as by NFC, and nothing else is changed: a
  // character without marks stays, whatever it is a duplicate of. NFC would take from charsets
  // characters that they have: U+212B of JIS X 0208 becomes U+00C5, and a dozen kanji of the IBM
  // extensions, such as U+FA19, others that have codes of their own.
  kComposed,
};

// No run of marks is put in order over more characters than these: a longer one, which no language
// has, is normalized in parts. What comes out is canonically the same text then, but no longer in
// the form. Up to so many characters wait for more text.
constexpr size_t kMostCharactersPutInOrder = 1024;

std::unique_ptr<TextChange> normalization(NormalizationForm form);

// A whole text at once.
std::string normalized(NormalizationForm form, std::string_view text);

}  // namespace ksv_kit
