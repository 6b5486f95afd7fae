// The order of names, and how they are shown.
#include "kit/documents/entry_names.h"

#include <gtest/gtest.h>

namespace ksv_kit::documents {
namespace {

TEST(EntryNames, shorter_names_come_first) {
  EXPECT_LT(compareNames(u"z", u"aa"), 0);
  EXPECT_GT(compareNames(u"aaa", u"zz"), 0);
  EXPECT_LT(compareNames(u"", u"\u0001"), 0);
}

TEST(EntryNames, names_of_one_length_are_compared_by_their_upper_case) {
  EXPECT_EQ(compareNames(u"Name", u"nAME"), 0);
  EXPECT_LT(compareNames(u"a", u"B"), 0);
  EXPECT_LT(compareNames(u"Z", u"_"), 0);  // 'z' would stand behind '_'
  EXPECT_LT(compareNames(u"z", u"_"), 0);
  EXPECT_EQ(compareNames(u"\u00E4\u03B1\u0434", u"\u00C4\u0391\u0414"), 0);
}

TEST(EntryNames, letters_without_an_upper_case_of_one_unit_stay) {
  EXPECT_EQ(upperCase(u'\u00DF'), u'\u00DF');  // sharp s
  EXPECT_EQ(upperCase(u'\u0149'), u'\u0149');
  EXPECT_EQ(upperCase(0xD800), 0xD800);
  EXPECT_EQ(upperCase(u'\u0250'), u'\u0250');  // whose upper case came with a later Unicode
  EXPECT_EQ(upperCase(u'\u00FF'), u'\u0178');
  EXPECT_EQ(upperCase(u'\uFF41'), u'\uFF21');
  EXPECT_EQ(upperCase(u'\u0100'), u'\u0100');
  EXPECT_EQ(upperCase(u'\u0101'), u'\u0100');
}

TEST(EntryNames, what_cannot_be_shown_is_escaped) {
  EXPECT_EQ(shownName(u"Word \u65E5\u672C"), "Word 日本");
  EXPECT_EQ(shownName(u"\u0005Summary"), "\\x05Summary");
  EXPECT_EQ(shownName(u"a/b\\c"), "a\\x2Fb\\x5Cc");
  EXPECT_EQ(shownName(u"\u007F\u0085"), "\\x7F\\x85");
  EXPECT_EQ(shownName(std::u16string(u"a\0b", 3)), "a\\x00b");
  EXPECT_EQ(shownName(u"\U0001F600\xD800"
                      u"x"),
            "😀\\uD800x");
  EXPECT_EQ(shownName(u"\u202Eexe.\u2028\uFFFF"), "\\u202Eexe.\\u2028\\uFFFF");
}

TEST(EntryNames, every_unit_is_read_back_as_it_was) {
  for (uint32_t unit = 0; unit < 0x10000; ++unit) {
    const std::u16string name = {u'a', static_cast<char16_t>(unit), u'b'};
    EXPECT_EQ(nameShownAs(shownName(name)), name) << unit;
  }
  EXPECT_EQ(nameShownAs(shownName(u"\U0001F600")), u"\U0001F600");
}

TEST(EntryNames, what_no_name_is_shown_as_is_none) {
  for (const char* text : {"\\", "\\q", "\\x", "\\x0", "\\x0g", "\\u12", "\\u12g4", "\x80",
                           "\xC0\x80", "\xE3\x81", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xFF"})
    EXPECT_EQ(nameShownAs(text), std::nullopt) << text;
  EXPECT_EQ(nameShownAs(""), u"");
  EXPECT_EQ(nameShownAs("\\x0a\\u00E9"), u"\u000A\u00E9");
}

}  // namespace
}  // namespace ksv_kit::documents
