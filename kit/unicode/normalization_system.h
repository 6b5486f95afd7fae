// What normalization takes from the system or from a library.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kit/unicode/normalization.h"

namespace ksv_kit {

struct CharacterInForm {
  bool stays;   // a text of this character alone is in the form
  bool begins;  // nothing in front of it changes it, nor does it change that
};

// Of the four forms of Unicode.
CharacterInForm characterInForm(NormalizationForm form, char32_t character);

// Appends one of the four forms of a text that is not empty.
void appendNormalized(NormalizationForm form, std::string_view text, std::string& out);

// Whether the character is no mark, and yet is joined with what stands in front of it: vowels and
// final consonants of Hangul, and vowel signs of India's scripts.
bool joinsWithFormer(char32_t character);

// The version of Unicode whose characters are known, such as "15.0.0"; empty where the system
// does not tell.
std::string unicodeVersionOfNormalization();

}  // namespace ksv_kit
