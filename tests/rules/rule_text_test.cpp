// The clean-up of a rule text, and the searches and extractors over it.
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

constexpr size_t kNone = SIZE_MAX;

size_t find(std::string_view text, size_t from, const std::string& pattern) {
  return findString(cleaned(text), from, pattern).value_or(kNone);
}

TEST(FindString, gives_the_position_behind_the_first_match) {
  EXPECT_EQ(find("abcabcx", 0, "abc"), 3u);
  EXPECT_EQ(find("abcabcx", 1, "abc"), 6u);
  EXPECT_EQ(find("abcabcx", 3, "abc"), 6u);
  EXPECT_EQ(find("abcabcx", 4, "abc"), kNone);
  EXPECT_EQ(find("abcabcx", 0, "ABC"), kNone);
}

TEST(FindString, misses_a_pattern_at_the_very_end) {
  EXPECT_EQ(find("xabc", 0, "abc"), kNone);
  EXPECT_EQ(find("xabc ", 0, "abc"), 4u);
  EXPECT_EQ(find("abc", 0, "abc"), kNone);
  EXPECT_EQ(find("ab", 0, "abc"), kNone);
  EXPECT_EQ(find("", 0, "a"), kNone);
  EXPECT_EQ(find("abc", 99, "a"), kNone);
}

TEST(FindString, finds_a_tag_at_the_very_end) {
  EXPECT_EQ(find("x</a>", 0, "</a>"), 5u);
  EXPECT_EQ(find("x/>", 0, "/>"), 3u);
  EXPECT_EQ(find("<a>", 0, "<a>"), 3u);
}

TEST(FindString, finds_tags_from_the_position_on) {
  EXPECT_EQ(find("<a><b><a>", 0, "<a>"), 3u);
  EXPECT_EQ(find("<a><b><a>", 1, "<a>"), 9u);
  EXPECT_EQ(find("<a><b><a>", 6, "<a>"), 9u);
  EXPECT_EQ(find("<a><b><a>", 7, "<a>"), kNone);
  EXPECT_EQ(find("<a", 0, "<a>"), kNone);
}

TEST(FindString, finds_a_slash_pattern_without_a_marker_as_any_other) {
  EXPECT_EQ(find("a/b/c ", 0, "/c"), 5u);
  EXPECT_EQ(find("a/b/c", 0, "/c"), kNone) << "at the very end";
  // Where a marker matches, it wins over an earlier match without one.
  EXPECT_EQ(find("/ab />ab", 0, "/"), 5u);
}

TEST(FindString, refuses_patterns_of_512_characters) {
  const std::string text(600, 'a');
  EXPECT_EQ(find(text, 0, std::string(511, 'a')), 511u);
  EXPECT_EQ(find(text, 0, std::string(512, 'a')), kNone);
  const std::string tag = "<" + text;
  EXPECT_EQ(find(tag, 0, tag.substr(0, 511)), 511u);
  EXPECT_EQ(find(tag, 0, tag.substr(0, 512)), kNone);
}

TEST(FindString, compares_whole_characters) {
  RuleText text;
  text.chars = {0x161, 0x10061, 'a', ' '};
  EXPECT_EQ(findString(text, 0, "a"), 3u);
  text.chars = {0xE9, ' '};
  EXPECT_EQ(findString(text, 0, "\xE9"), 1u) << "bytes are unsigned";
}

// The content of the element, or "none".
std::string element(std::string_view text, const std::string& tag, size_t from = 0) {
  const RuleText rules = cleaned(text);
  const auto span = findElement(rules, from, tag);
  return span ? "[" + elementText(rules, *span) + "]" : "none";
}

TEST(FindElement, gives_the_content_between_its_tags) {
  EXPECT_EQ(element("<name>Shift_JIS</name>", "name"), "[Shift_JIS]");
  EXPECT_EQ(element("<name></name>", "name"), "[]");
  EXPECT_EQ(element("<a><name> x </name></a>", "name"), "[ x ]") << "not trimmed";
  EXPECT_EQ(element("<name>a<b>c</b></name>", "name"), "[a<b>c</b>]");
}

TEST(FindElement, begins_the_content_with_the_attributes) {
  EXPECT_EQ(element("<rule a=\"1\">x</rule>", "rule"), "[a=\"1\">x]");
  EXPECT_EQ(element("<rule\r\na=\"1\">x</rule>", "rule"), "[a=\"1\">x]");
  EXPECT_EQ(element("<rule\ta=\"1\">x</rule>", "rule"), "[a=\"1\">x]");
  EXPECT_EQ(element("<name >Shift_JIS</name>", "name"), "[>Shift_JIS]");
}

TEST(FindElement, ends_an_empty_element_at_its_slash) {
  EXPECT_EQ(element("<rule a=\"1\"/>", "rule"), "[a=\"1\"]");
  EXPECT_EQ(element("<rule a=\"1\" />", "rule"), "[a=\"1\" ]");
  EXPECT_EQ(element("<rule a=\"1\"><b/>", "rule"), "[a=\"1\"><b]") << "whosever slash it is";
}

TEST(FindElement, prefers_a_closing_tag_however_far_away) {
  EXPECT_EQ(element("<rule a=\"1\"/><b/></rule>", "rule"), "[a=\"1\"/><b/>]");
  EXPECT_EQ(element("<a x=\"1\"/><a>y</a>", "a"), "[x=\"1\"/><a>y]");
}

TEST(FindElement, takes_the_earlier_of_both_forms_of_the_start_tag) {
  EXPECT_EQ(element("<a>1</a><a x>2</a>", "a"), "[1]");
  EXPECT_EQ(element("<a x>1</a><a>2</a>", "a"), "[x>1]");
  EXPECT_EQ(element("<a x>1</a><a>2</a>", "a", 3), "[2]");
}

TEST(FindElement, needs_the_exact_name_and_an_end) {
  EXPECT_EQ(element("<names>x</names>", "name"), "none");
  EXPECT_EQ(element("<Name>x</Name>", "name"), "none");
  EXPECT_EQ(element("<name/>", "name"), "none") << "without a blank it is another name";
  EXPECT_EQ(element("<name>x", "name"), "none");
  EXPECT_EQ(element("<name>x</name", "name"), "none");
  EXPECT_EQ(element("<name>x</ name>", "name"), "none");
  EXPECT_EQ(element("", "name"), "none");
}

TEST(FindElement, never_finds_what_stands_in_a_comment) {
  EXPECT_EQ(element("<!-- <name>x</name> --><name>y</name>", "name"), "[y]");
  EXPECT_EQ(element("<!-- <name>x</name> -->", "name"), "none");
  EXPECT_EQ(element("<!-- <name>x</name>", "name"), "[x]") << "an unclosed one is no comment";
}

TEST(ElementText, keeps_low_bytes_up_to_one_that_is_zero) {
  RuleText text;
  text.chars = {0x3041, 0x10042, 'c', 0x3000, 'd'};
  EXPECT_EQ(elementText(text, {0, 3}), "ABc");
  EXPECT_EQ(elementText(text, {0, 5}), "ABc");
  EXPECT_EQ(elementText(text, {4, 99}), "d");
}

std::string quoted(std::string_view text, size_t from = 0) {
  return quotedAfter(cleaned(text), from).value_or("none");
}

TEST(QuotedText, is_what_stands_between_the_next_two_double_quotes) {
  EXPECT_EQ(quoted("a=\"b\" c=\"d\""), "b");
  EXPECT_EQ(quoted("a=\"b\" c=\"d\"", 3), " c=") << "a quote is a quote";
  EXPECT_EQ(quoted("a=\"b\" c=\"d\"", 5), "d");
  EXPECT_EQ(quoted("a=  x \"b\""), "b");
  EXPECT_EQ(quoted("\"\""), "");
  EXPECT_EQ(quoted("a='b' \"c\""), "c") << "single quotes are no quotes";
  EXPECT_EQ(quoted("\"b"), "none");
  EXPECT_EQ(quoted("b"), "none");
  EXPECT_EQ(quoted("\"b\"", 99), "none");
}

std::string attribute(std::string_view text, Span span, const std::string& word) {
  return attributeInSpan(cleaned(text), span, word).value_or("none");
}

TEST(Attributes, have_their_word_inside_the_span) {
  const std::string_view text = "domain=\"ja\" bytenum=\"2\"";
  EXPECT_EQ(attribute(text, {0, 23}, "domain="), "ja");
  EXPECT_EQ(attribute(text, {0, 23}, "bytenum="), "2");
  EXPECT_EQ(attribute(text, {1, 23}, "domain="), "none");
  EXPECT_EQ(attribute(text, {0, 20}, "bytenum="), "2") << "the word ends with the span";
  EXPECT_EQ(attribute(text, {0, 19}, "bytenum="), "none");
  EXPECT_EQ(attribute("bytenum=", {0, 8}, "bytenum="), "none");
}

TEST(HexNumbers, are_the_runs_of_hexadecimal_digits_of_a_span) {
  const RuleText text = cleaned(" 8140-84be x FF");
  const auto first = nextHexNumber(text, {0, 15});
  ASSERT_TRUE(first);
  EXPECT_EQ(first->value, 0x8140u);
  EXPECT_EQ(first->end, 5u);
  const auto second = nextHexNumber(text, {first->end, 15});
  ASSERT_TRUE(second);
  EXPECT_EQ(second->value, 0x84BEu);
  EXPECT_EQ(second->end, 10u);
  EXPECT_EQ(nextHexNumber(text, {10, 15})->value, 0xFFu);
  EXPECT_EQ(nextHexNumber(text, {10, 14})->value, 0xFu) << "the span cuts it";
  EXPECT_FALSE(nextHexNumber(text, {10, 13}));
  EXPECT_FALSE(nextHexNumber(text, {15, 15}));
  EXPECT_FALSE(nextHexNumber(text, {99, 99}));
  EXPECT_EQ(nextHexNumber(cleaned("123456789"), {0, 9})->value, 0x23456789u);
}

TEST(HexNumbers, end_at_the_first_other_character) {
  EXPECT_EQ(parseHex("1f"), 0x1Fu);
  EXPECT_EQ(parseHex(" \t1Fg2"), 0x1Fu);
  EXPECT_EQ(parseHex("0x1F"), 0u);
  EXPECT_EQ(parseHex(""), 0u);
  EXPECT_EQ(parseHex("  "), 0u);
  EXPECT_EQ(parseHex("-1"), 0u);
  EXPECT_EQ(parseHex("F12345678"), 0x12345678u);
}

std::string reference(std::string_view text, Span span) {
  return entityReference(cleaned(text), span).value_or("none");
}

TEST(EntityReferences, run_from_the_ampersand_to_the_semicolon) {
  EXPECT_EQ(reference("a&name;b", {0, 8}), "name");
  EXPECT_EQ(reference("&a;&b;", {0, 6}), "a");
  EXPECT_EQ(reference("&a;&b;", {1, 6}), "b");
  EXPECT_EQ(reference("&  a b;", {0, 7}), "a b") << "only leading blanks go";
  EXPECT_EQ(reference("&\r\n\ta;", {0, 5}), "a");
  EXPECT_EQ(reference("&;", {0, 2}), "");
}

TEST(EntityReferences, lie_whole_in_the_span) {
  EXPECT_EQ(reference("&a;", {0, 2}), "none");
  EXPECT_EQ(reference("x&a;", {0, 1}), "none");
  EXPECT_EQ(reference("&a", {0, 2}), "none");
  EXPECT_EQ(reference("a;", {0, 2}), "none");
  EXPECT_EQ(reference("&   ", {0, 4}), "none");
  EXPECT_EQ(reference("", {0, 0}), "none");
}

std::string fileOf(std::string_view text, const std::string& name) {
  return entityFile(cleaned(text), name).value_or("none");
}

TEST(EntityDeclarations, are_the_name_a_blank_system_and_a_quoted_file) {
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM \"a.xml\">", "a"), "a.xml");
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM \"a.xml\"><!ENTITY b SYSTEM \"b.xml\">", "b"), "b.xml");
  EXPECT_EQ(fileOf("a SYSTEM \"\"", "a"), "");
  EXPECT_EQ(fileOf("<!ENTITY\r\na\r\nSYSTEM\t\"a.xml\">", "a"), "a.xml");
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM \"a.xml\">", "b"), "none");
  EXPECT_EQ(fileOf("", "a"), "none");
}

TEST(EntityDeclarations, may_follow_other_uses_of_the_name) {
  EXPECT_EQ(fileOf("&a; a\"a a. <!ENTITY a SYSTEM \"a.xml\">", "a"), "a.xml");
}

TEST(EntityDeclarations, are_found_by_any_occurrence_before_a_blank) {
  // The end of another name serves, so no name may be the ending of another.
  EXPECT_EQ(fileOf("<!ENTITY xa SYSTEM \"xa.xml\"><!ENTITY a SYSTEM \"a.xml\">", "a"), "xa.xml");
  EXPECT_EQ(fileOf("a word <!ENTITY b SYSTEM \"b.xml\"><!ENTITY a SYSTEM \"a.xml\">", "a"),
            "b.xml");
}

TEST(EntityDeclarations, need_double_quotes_right_behind_system_and_its_blank) {
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM 'a.xml'>", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM  \"a.xml\">", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM\"a.xml\">", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a system \"a.xml\">", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM \"a.xml", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a SYSTEM ", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a", "a"), "none");
  EXPECT_EQ(fileOf("<!ENTITY a PUBLIC \"x\"><!ENTITY b SYSTEM \"b.xml\">", "a"), "b.xml");
}

TEST(EntityDeclarations, have_no_empty_name) {
  EXPECT_EQ(fileOf(" SYSTEM \"a.xml\"> ", ""), "none");
}

}  // namespace
}  // namespace ksv::test
