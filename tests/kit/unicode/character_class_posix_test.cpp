// The classes against the Unicode Character Database. One of a later version has more characters.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "kit/unicode/character_class.h"
#include "tests/kit/unicode/unicode_data_posix.h"

namespace ksv_kit {
namespace {

constexpr const char* kVersion = "15.0.0";

// General categories: which of the names may stand for them. Their own is the last.
const std::map<std::string, std::vector<std::string_view>>& namesOfCategories() {
  static const std::map<std::string, std::vector<std::string_view>> kNames = {
      {"Cc", {"control"}},
      {"Cf", {"format"}},
      {"Cn", {"noncharacter", "unassigned"}},
      {"Co", {"private use"}},
      {"Cs", {"surrogate"}},
      {"L",
       {"half-width", "full-width", "CJK ideograph", "compatibility ideograph", "hiragana",
        "katakana", "Hangul", "letter"}},
      {"M", {"variation selector", "combining mark"}},
      {"N", {"full-width", "CJK ideograph", "number"}},
      {"P", {"half-width", "full-width", "punctuation"}},
      {"S", {"half-width", "full-width", "emoji", "symbol"}},
      {"Z", {"space"}}};
  return kNames;
}

const std::vector<std::string_view>& namesOf(const std::string& category) {
  const auto& all = namesOfCategories();
  const auto whole = all.find(category);
  return whole == all.end() ? all.at(category.substr(0, 1)) : whole->second;
}

TEST(ClassOfAll, agrees_with_the_category_of_each_character) {
  const std::vector<bool> known = charactersUpTo(kVersion);
  size_t count = 0;
  eachLine(KSV_UNICODE_DATA "/extracted/DerivedGeneralCategory.txt",
           [&](const std::vector<std::string>& fields) {
             const CodeRange range = codeRange(fields[0]);
             for (char32_t code = range.first; code <= range.last; ++code, ++count) {
               const auto& names = namesOf(known[code] ? fields[1] : "Cn");
               EXPECT_NE(std::find(names.begin(), names.end(), classOf(code)), names.end())
                   << std::hex << static_cast<uint32_t>(code) << ' ' << classOf(code);
             }
           });
  EXPECT_EQ(count, 0x110000U);
}

size_t countWhere(const std::string& file, const std::string& value, std::string_view name) {
  const std::vector<bool> known = charactersUpTo(kVersion);
  size_t count = 0;
  eachLine(KSV_UNICODE_DATA "/" + file, [&](const std::vector<std::string>& fields) {
    if (fields.size() < 2 || fields[1] != value) return;
    const CodeRange range = codeRange(fields[0]);
    for (char32_t code = range.first; code <= range.last; ++code) {
      if (!known[code]) continue;
      ++count;
      EXPECT_EQ(classOf(code), name) << std::hex << static_cast<uint32_t>(code);
    }
  });
  return count;
}

size_t countOf(std::string_view name) {
  size_t count = 0;
  for (uint32_t code = 0; code <= 0x10FFFF; ++code) count += classOf(code) == name;
  return count;
}

TEST(ClassOfAll, knows_ideographs_selectors_noncharacters_and_emoji) {
  EXPECT_EQ(countWhere("PropList.txt", "Unified_Ideograph", "CJK ideograph"),
            countOf("CJK ideograph"));
  EXPECT_EQ(countWhere("PropList.txt", "Variation_Selector", "variation selector"),
            countOf("variation selector"));
  EXPECT_EQ(countWhere("PropList.txt", "Noncharacter_Code_Point", "noncharacter"), 66U);
  EXPECT_EQ(countOf("noncharacter"), 66U);
  EXPECT_EQ(countWhere("emoji/emoji-data.txt", "Emoji_Presentation", "emoji"), countOf("emoji"));
  EXPECT_EQ(countWhere("EastAsianWidth.txt", "H", "half-width"), countOf("half-width"));
}

}  // namespace
}  // namespace ksv_kit
