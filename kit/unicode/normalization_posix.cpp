#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <new>
#include <vector>

#include "kit/unicode/normalization_system.h"
#include "kit/unicode/utf8_text.h"

namespace ksv_kit {
namespace {

// No character has a longer decomposition: U+FDFA has 18.
constexpr size_t kLongestDecomposition = 32;

bool isComposed(NormalizationForm form) {
  return form == NormalizationForm::kNfc || form == NormalizationForm::kNfkc;
}

utf8proc_option_t decomposition(NormalizationForm form) {
  const bool isCompatible = form == NormalizationForm::kNfkc || form == NormalizationForm::kNfkd;
  return static_cast<utf8proc_option_t>(UTF8PROC_DECOMPOSE | UTF8PROC_STABLE |
                                        (isCompatible ? UTF8PROC_COMPAT : 0));
}

utf8proc_propval_t combiningClass(utf8proc_int32_t character) {
  return utf8proc_get_property(character)->combining_class;
}

struct Decomposed {
  std::array<utf8proc_int32_t, kLongestDecomposition> characters;
  size_t count;

  const utf8proc_int32_t* begin() const { return characters.data(); }
  const utf8proc_int32_t* end() const { return characters.data() + count; }
};

Decomposed decomposed(NormalizationForm form, char32_t character) {
  Decomposed found;
  int boundClass = 0;
  const utf8proc_ssize_t count = utf8proc_decompose_char(
      static_cast<utf8proc_int32_t>(character), found.characters.data(),
      static_cast<utf8proc_ssize_t>(found.characters.size()), decomposition(form), &boundClass);
  found.count = static_cast<size_t>(count);
  return found;
}

using Characters = std::vector<utf8proc_int32_t>;

// utf8proc's own sort takes quadratic time for marks in the worst order.
void putMarksInOrder(Characters& characters) {
  auto at = characters.begin();
  while (at != characters.end()) {
    const auto isMark = [](utf8proc_int32_t character) { return combiningClass(character) != 0; };
    const auto first = std::find_if(at, characters.end(), isMark);
    const auto behind = std::find_if_not(first, characters.end(), isMark);
    std::stable_sort(first, behind, [](utf8proc_int32_t left, utf8proc_int32_t right) {
      return combiningClass(left) < combiningClass(right);
    });
    at = behind;
  }
}

void compose(Characters& characters) {
  const utf8proc_ssize_t count =
      utf8proc_normalize_utf32(characters.data(), static_cast<utf8proc_ssize_t>(characters.size()),
                               static_cast<utf8proc_option_t>(UTF8PROC_COMPOSE | UTF8PROC_STABLE));
  characters.resize(static_cast<size_t>(count));
}

}  // namespace

bool canNormalize() { return true; }

CharacterInForm characterInForm(NormalizationForm form, char32_t character) {
  const Decomposed found = decomposed(form, character);
  const utf8proc_int32_t first = found.characters[0];
  const bool begins = combiningClass(first) == 0 && !joinsWithFormer(static_cast<char32_t>(first));
  Characters made(found.begin(), found.end());
  if (isComposed(form)) compose(made);
  return {made.size() == 1 && static_cast<char32_t>(made[0]) == character, begins};
}

void appendNormalized(NormalizationForm form, std::string_view text, std::string& out) {
  Characters characters;
  for (; !text.empty(); text.remove_prefix(utf8LengthOf(text[0]))) {
    const Decomposed found = decomposed(form, firstCharacter(text));
    characters.insert(characters.end(), found.begin(), found.end());
  }
  putMarksInOrder(characters);
  if (isComposed(form)) compose(characters);
  for (const utf8proc_int32_t character : characters) {
    appendUtf8(static_cast<char32_t>(character), out);
  }
}

std::string unicodeVersionOfNormalization() { return utf8proc_unicode_version(); }

}  // namespace ksv_kit
