// Texts that are made from fixed seeds and read like natural ones to a processor.
#pragma once

#include <string>
#include <string_view>

namespace ksv_bench {

struct WordStyle {
  size_t shortest;  // letters of a word
  size_t longest;
  std::u32string_view comma;
  std::u32string_view fullStop;
  bool hasSpaces;
};

std::u32string japaneseText(const std::u32string& kanji, const std::u32string& katakana);

// Words of letters, of which the first come up most often.
std::u32string textOfWords(const WordStyle& style, const std::u32string& letters,
                           size_t characters);

std::u32string asciiText();

}  // namespace ksv_bench
