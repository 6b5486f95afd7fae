// A build for a machine for which there is no library that normalizes.
#include "kit/unicode/normalization_system.h"

namespace ksv_kit {

bool canNormalize() { return false; }

CharacterInForm characterInForm(NormalizationForm, char32_t) { return {true, true}; }

void appendNormalized(NormalizationForm, std::string_view text, std::string& out) { out += text; }

bool joinsWithFormer(char32_t) { return false; }

std::string unicodeVersionOfNormalization() { return {}; }

}  // namespace ksv_kit
