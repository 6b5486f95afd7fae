// The clean-up of a rule text.
#include "cconv/rules/rule_text.h"

#include "tests/rules/support.h"

namespace ksv::test {
namespace {

struct Cleaning {
  const char* text;
  const char* cleaned;
};

void expectCleaned(std::initializer_list<Cleaning> cleanings) {
  for (const Cleaning& cleaning : cleanings) {
    EXPECT_EQ(asciiOf(cleaned(cleaning.text)), cleaning.cleaned) << cleaning.text;
  }
}

TEST(CleaningText, drops_processing_instructions) {
  expectCleaned({{"a<?xml version=\"1.0\"?>b", "ab"},
                 {"<?a?><?b?>c", "c"},
                 {"<?"
                  "?>c",
                  "c"},
                 {"<?>?>c", "c"},
                 {"<?a <?b?> c?>d", " c?>d"},
                 {"<?a -- ?>b", "b"}});
}

TEST(CleaningText, of_an_unclosed_instruction_drops_its_first_character) {
  expectCleaned({{"a<?xml b", "a?xml b"}, {"<?", "?"}, {"<?>", "?>"}, {"<?a?><?b", "?b"}});
}

TEST(CleaningText, drops_comments_but_for_what_stands_around_the_hyphens) {
  expectCleaned({{"a<!-- comment -->b", "a<!>b"},
                 {"<!---->b", "<!>b"},
                 {"a -- b -- c", "a  c"},
                 {"<!-- <name>x</name> -->b", "<!>b"},
                 {"<!-- <?x -->?>b", "<!>?>b"},
                 {"<!-- \r\n -->b", "<!>b"}});
}

TEST(CleaningText, looks_for_the_end_of_a_comment_behind_its_opening_hyphens) {
  // Two hyphens close, whatever stands behind them.
  expectCleaned({{"<!--->b", "<!->b"},
                 {"<!-- a --- b -->c", "<!- b ->c"},
                 {"<!-- a -- b -- c -->d", "<! b >d"}});
}

TEST(CleaningText, of_an_unclosed_comment_drops_the_first_hyphen) {
  expectCleaned(
      {{"<!-- comment", "<!- comment"}, {"--", "-"}, {"---", "-"}, {"a-b", "a-b"}, {"-", "-"}});
}

TEST(CleaningText, turns_line_ends_and_tabs_into_blanks) {
  expectCleaned({{"a\r\nb", "a b"},
                 {"a\rb", "a b"},
                 {"a\nb", "a b"},
                 {"a\tb", "a b"},
                 {"a\n\rb", "a  b"},
                 {"a\r\r\nb", "a  b"},
                 {"a\r", "a "},
                 {"a\r\n", "a "},
                 {"\t\r\n\n", "   "},
                 {"a\vb\fc", "a\vb\fc"}});
}

TEST(CleaningText, of_nothing_leaves_nothing) {
  const RuleText text = cleaned("");
  EXPECT_TRUE(text.chars.empty());
  EXPECT_TRUE(text.markers.empty());
}

TEST(Markers, stand_at_every_less_than_and_every_slash_before_a_greater_than) {
  using Indexes = std::vector<uint32_t>;
  EXPECT_EQ(cleaned("<a b=\"/\"/></a>").markers, (Indexes{0, 8, 10}));
  EXPECT_EQ(cleaned("a/b>").markers, Indexes{});
  EXPECT_EQ(cleaned("/>").markers, Indexes{0});
  EXPECT_EQ(cleaned("<</>").markers, (Indexes{0, 1, 2}));
  EXPECT_EQ(cleaned("<?x?>ab<c>").markers, Indexes{2}) << "indexes of the cleaned text";
  EXPECT_EQ(cleaned("<!-- <a> --><b>").markers, (Indexes{0, 3}));
  EXPECT_EQ(cleaned("a\r\n<b>").markers, Indexes{2});
}

}  // namespace
}  // namespace ksv::test
