#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "ksv_ucs2.h"

namespace {

using Units = std::vector<uint16_t>;

// A block of exactly so many units, so that a sanitizer sees one too many.
class Block {
 public:
  explicit Block(const Units& units)
      : size_(units.size()), units_(std::make_unique<uint16_t[]>(size_)) {
    std::copy(units.begin(), units.end(), get());
  }
  uint16_t* get() const { return units_.get(); }
  Units units() const { return {get(), get() + size_}; }

 private:
  const size_t size_;
  const std::unique_ptr<uint16_t[]> units_;
};

// With its terminator.
Units terminated(const std::u16string& text) {
  Units units(text.begin(), text.end());
  units.push_back(0);
  return units;
}

std::u16string textOf(const uint16_t* s) {
  std::u16string text;
  for (; *s != 0; ++s) text.push_back(*s);
  return text;
}

// All strings of these units, up to a length.
std::vector<std::u16string> allStrings(const std::u16string& alphabet, size_t longest) {
  std::vector<std::u16string> strings{u""};
  for (size_t begin = 0, length = 0; length < longest; ++length) {
    const size_t end = strings.size();
    for (; begin < end; ++begin) {
      for (const char16_t unit : alphabet) strings.push_back(strings[begin] + unit);
    }
  }
  return strings;
}

// A small, a large and a "negative" unit beside a letter.
const std::vector<std::u16string>& someStrings() {
  static const auto strings = allStrings({u'a', u'b', char16_t{0x7FFF}, char16_t{0x8000}}, 4);
  return strings;
}

int signOf(int number) { return (number > 0) - (number < 0); }

}  // namespace

TEST(Ucs2String, counts_units) {
  for (const std::u16string& text : someStrings()) {
    ASSERT_EQ(KSV_ucs2strlen(Block(terminated(text)).get()), static_cast<int32_t>(text.size()));
  }
  EXPECT_EQ(KSV_ucs2strlen(Block(terminated(u"日本語\U00020BB7")).get()), 5);
}

TEST(Ucs2String, copies_with_the_terminator) {
  for (const std::u16string& text : someStrings()) {
    const Block dest(Units(text.size() + 1, 0xEEEE));
    ASSERT_EQ(KSV_ucs2strcpy(dest.get(), Block(terminated(text)).get()), dest.get());
    ASSERT_EQ(dest.units(), terminated(text));
  }
}

TEST(Ucs2String, appends_at_the_terminator) {
  const auto strings = allStrings(u"ab", 3);
  for (const std::u16string& first : strings) {
    for (const std::u16string& second : strings) {
      Units room = terminated(first);
      room.resize(first.size() + second.size() + 1, 0xEEEE);
      const Block dest(room);
      ASSERT_EQ(KSV_ucs2strcat(dest.get(), Block(terminated(second)).get()), dest.get());
      ASSERT_EQ(dest.units(), terminated(first + second));
    }
  }
}

TEST(Ucs2String, appends_a_string_to_itself) {
  const Block dest({'a', 'b', 0, 9, 9});
  KSV_ucs2strcat(dest.get(), dest.get());
  EXPECT_EQ(dest.units(), (Units{'a', 'b', 'a', 'b', 0}));
}

TEST(Ucs2String, copies_at_most_n_units_and_terminates_them) {
  for (const std::u16string& text : someStrings()) {
    for (int32_t n = 0; n <= 6; ++n) {
      const std::u16string wanted = text.substr(0, static_cast<size_t>(n));
      Units expected = terminated(wanted);
      expected.resize(8, 0xEEEE);  // nothing is padded
      const Block dest(Units(8, 0xEEEE));
      ASSERT_EQ(KSV_ucs2strncpy(dest.get(), Block(terminated(text)).get(), n), dest.get());
      ASSERT_EQ(dest.units(), expected);
    }
  }
}

TEST(Ucs2String, reads_no_unit_behind_the_last_that_it_copies) {
  const Block unterminated({'a', 'b', 'c'});
  const Block dest(Units(4, 0xEEEE));
  KSV_ucs2strncpy(dest.get(), unterminated.get(), 3);
  EXPECT_EQ(dest.units(), (Units{'a', 'b', 'c', 0}));
}

TEST(Ucs2String, finds_the_first_of_equal_units) {
  for (const std::u16string& text : someStrings()) {
    const Block s(terminated(text));
    for (const char16_t unit : std::u16string{u'a', u'b', char16_t{0x8000}, u'x'}) {
      const size_t at = text.find(unit);
      ASSERT_EQ(KSV_ucs2strchr(s.get(), unit), at == text.npos ? nullptr : s.get() + at);
    }
  }
}

TEST(Ucs2String, never_finds_the_terminator) {
  EXPECT_EQ(KSV_ucs2strchr(Block(terminated(u"abc")).get(), 0), nullptr);
  EXPECT_EQ(KSV_ucs2strchr(Block(terminated(u"")).get(), 0), nullptr);
}

TEST(Ucs2String, compares_units_as_unsigned_numbers) {
  for (const std::u16string& a : someStrings()) {
    const Block blockA(terminated(a));
    for (const std::u16string& b : someStrings()) {
      ASSERT_EQ(KSV_ucs2strcmp(blockA.get(), Block(terminated(b)).get()), signOf(a.compare(b)));
    }
  }
}

TEST(Ucs2String, compares_one_unit_more_than_it_is_asked_for) {
  const auto compare = [](const std::u16string& a, const std::u16string& b, int32_t n) {
    return KSV_ucs2strncmp(Block(terminated(a)).get(), Block(terminated(b)).get(), n);
  };
  EXPECT_EQ(compare(u"abc", u"abd", 2), -1);
  EXPECT_EQ(compare(u"abc", u"abd", 3), -1);
  EXPECT_EQ(compare(u"abc", u"abd", 1), 0);
  EXPECT_EQ(compare(u"ab", u"ac", 1), -1);
  EXPECT_EQ(compare(u"b", u"a", 0), 1);
  EXPECT_EQ(compare(u"ab", u"aa", 0), 0);
  EXPECT_EQ(compare(u"b", u"a", -5), 1);
  EXPECT_EQ(compare(u"abc", u"ab", 2), 1);
  EXPECT_EQ(compare(u"", u"", 100), 0);
}

TEST(Ucs2String, compares_the_first_n_and_one_units) {
  const auto strings = allStrings({u'a', char16_t{0x8000}}, 4);
  for (const std::u16string& a : strings) {
    for (const std::u16string& b : strings) {
      for (int32_t n = 0; n <= 6; ++n) {
        const auto count = static_cast<size_t>(n) + 1;
        ASSERT_EQ(KSV_ucs2strncmp(Block(terminated(a)).get(), Block(terminated(b)).get(), n),
                  signOf(a.substr(0, count).compare(b.substr(0, count))));
      }
    }
  }
}

TEST(Ucs2String, reads_no_unit_behind_the_last_that_it_compares) {
  const Block a({'a', 'b', 'c'});
  const Block b({'a', 'b', 'd'});
  EXPECT_EQ(KSV_ucs2strncmp(a.get(), b.get(), 2), -1);
}

TEST(Ucs2String, changes_the_case_of_ascii_letters_only) {
  Units all;
  for (unsigned unit = 1; unit < 0x10000; ++unit) all.push_back(static_cast<uint16_t>(unit));
  all.push_back(0);
  Units small = all;
  Units large = all;
  for (char letter = 'a'; letter <= 'z'; ++letter) {
    const auto capital = static_cast<uint16_t>(letter - 'a' + 'A');
    std::replace(small.begin(), small.end(), capital, static_cast<uint16_t>(letter));
    std::replace(large.begin(), large.end(), static_cast<uint16_t>(letter), capital);
  }
  const Block lowered(all);
  const Block raised(all);
  EXPECT_EQ(KSV_ucs2strlwr(lowered.get()), lowered.get());
  EXPECT_EQ(KSV_ucs2strupr(raised.get()), raised.get());
  EXPECT_EQ(lowered.units(), small);
  EXPECT_EQ(raised.units(), large);
}

TEST(Ucs2String, takes_a_null_source_for_an_empty_string) {
  const Block dest({'a', 'b', 0});
  EXPECT_EQ(KSV_ucs2strlen(nullptr), 0);
  EXPECT_EQ(KSV_ucs2strcat(dest.get(), nullptr), dest.get());
  EXPECT_EQ(textOf(dest.get()), u"ab");
  EXPECT_EQ(KSV_ucs2strncpy(dest.get(), nullptr, 5), dest.get());
  EXPECT_EQ(textOf(dest.get()), u"");
  EXPECT_EQ(KSV_ucs2strcpy(dest.get(), nullptr), dest.get());
  EXPECT_EQ(KSV_ucs2strchr(nullptr, 'a'), nullptr);
  EXPECT_EQ(KSV_ucs2strcmp(nullptr, nullptr), 0);
  const Block letter({'a', 0});
  EXPECT_EQ(KSV_ucs2strcmp(letter.get(), nullptr), 1);
  EXPECT_EQ(KSV_ucs2strncmp(nullptr, letter.get(), 3), -1);
}

TEST(Ucs2String, does_nothing_without_a_destination) {
  const Block text({'a', 0});
  EXPECT_EQ(KSV_ucs2strcpy(nullptr, text.get()), nullptr);
  EXPECT_EQ(KSV_ucs2strcat(nullptr, text.get()), nullptr);
  EXPECT_EQ(KSV_ucs2strncpy(nullptr, text.get(), 1), nullptr);
  EXPECT_EQ(KSV_ucs2strlwr(nullptr), nullptr);
  EXPECT_EQ(KSV_ucs2strupr(nullptr), nullptr);
}

TEST(Ucs2String, takes_a_negative_count_for_none) {
  const Block dest({9, 9});
  KSV_ucs2strncpy(dest.get(), Block({'a', 0}).get(), -1);
  EXPECT_EQ(dest.units(), (Units{0, 9}));
  KSV_ucs2strncpy(dest.get(), Block({'a', 0}).get(), INT32_MIN);
  EXPECT_EQ(dest.units(), (Units{0, 9}));
}
