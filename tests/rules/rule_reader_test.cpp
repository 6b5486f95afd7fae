// The searches in a rule text, and the steps of its readers.
#include "cconv/rules/rule_reader.h"

#include "tests/rules/support.h"

namespace ksv::test {
namespace {

constexpr size_t kNone = SIZE_MAX;

// Where a reader goes from a position.
size_t find(const RuleText& text, size_t from, const std::string& pattern) {
  RuleReader reader(text, from);
  const bool found = reader.passString(pattern);
  EXPECT_TRUE(found || reader.position() == from) << "it stays where it is";
  return found ? reader.position() : kNone;
}

size_t find(std::string_view text, size_t from, const std::string& pattern) {
  return find(cleaned(text), from, pattern);
}

TEST(PassString, gives_the_position_behind_the_first_match) {
  EXPECT_EQ(find("abcabcx", 0, "abc"), 3u);
  EXPECT_EQ(find("abcabcx", 1, "abc"), 6u);
  EXPECT_EQ(find("abcabcx", 3, "abc"), 6u);
  EXPECT_EQ(find("abcabcx", 4, "abc"), kNone);
  EXPECT_EQ(find("abcabcx", 0, "ABC"), kNone);
}

TEST(PassString, misses_a_pattern_at_the_very_end) {
  EXPECT_EQ(find("xabc", 0, "abc"), kNone);
  EXPECT_EQ(find("xabc ", 0, "abc"), 4u);
  EXPECT_EQ(find("abc", 0, "abc"), kNone);
  EXPECT_EQ(find("ab", 0, "abc"), kNone);
  EXPECT_EQ(find("", 0, "a"), kNone);
  EXPECT_EQ(find("abc", 99, "a"), kNone);
}

TEST(PassString, finds_a_tag_at_the_very_end) {
  EXPECT_EQ(find("x</a>", 0, "</a>"), 5u);
  EXPECT_EQ(find("x/>", 0, "/>"), 3u);
  EXPECT_EQ(find("<a>", 0, "<a>"), 3u);
}

TEST(PassString, finds_tags_from_the_position_on) {
  EXPECT_EQ(find("<a><b><a>", 0, "<a>"), 3u);
  EXPECT_EQ(find("<a><b><a>", 1, "<a>"), 9u);
  EXPECT_EQ(find("<a><b><a>", 6, "<a>"), 9u);
  EXPECT_EQ(find("<a><b><a>", 7, "<a>"), kNone);
  EXPECT_EQ(find("<a", 0, "<a>"), kNone);
}

TEST(PassString, finds_a_slash_pattern_without_a_marker_as_any_other) {
  EXPECT_EQ(find("a/b/c ", 0, "/c"), 5u);
  EXPECT_EQ(find("a/b/c", 0, "/c"), kNone) << "at the very end";
  // Where a marker matches, it wins over an earlier match without one.
  EXPECT_EQ(find("/ab />ab", 0, "/"), 5u);
}

TEST(PassString, refuses_patterns_of_512_characters) {
  const std::string text(600, 'a');
  EXPECT_EQ(find(text, 0, std::string(511, 'a')), 511u);
  EXPECT_EQ(find(text, 0, std::string(512, 'a')), kNone);
  const std::string tag = "<" + text;
  EXPECT_EQ(find(tag, 0, tag.substr(0, 511)), 511u);
  EXPECT_EQ(find(tag, 0, tag.substr(0, 512)), kNone);
}

TEST(PassString, compares_whole_characters) {
  RuleText text;
  text.chars = {0x161, 0x10061, 'a', ' '};
  EXPECT_EQ(find(text, 0, "a"), 3u);
  text.chars = {0xE9, ' '};
  EXPECT_EQ(find(text, 0, "\xE9"), 1u) << "bytes are unsigned";
}

// The content of the element, or "none".
std::string element(std::string_view text, const std::string& tag, size_t from = 0) {
  const RuleText rules = cleaned(text);
  const auto found = RuleReader(rules, from).findElement(tag);
  return found ? "[" + found->content() + "]" : "none";
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

TEST(ElementContent, keeps_low_bytes_up_to_one_that_is_zero) {
  RuleText text;
  text.chars = {0x3041, 0x10042, 'c', 0x3000, 'd'};
  EXPECT_EQ(RuleElement(text, 0, 3).content(), "ABc");
  EXPECT_EQ(RuleElement(text, 0, 5).content(), "ABc");
  EXPECT_EQ(RuleElement(text, 4, 99).content(), "d");
}

std::string quoted(std::string_view text, size_t from = 0) {
  return RuleReader(cleaned(text), from).findQuoted().value_or("none");
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

TEST(QuotedText, is_searched_anew_before_and_behind_what_was_found_last) {
  const RuleText text = cleaned("\"a\" \"b\" \"c\" \"d");
  const auto quotedAt = [&](size_t from) {
    return RuleReader(text, from).findQuoted().value_or("none");
  };
  EXPECT_EQ(quotedAt(3), "b");
  EXPECT_EQ(quotedAt(4), "b") << "the place found last itself";
  EXPECT_EQ(quotedAt(5), " ");
  EXPECT_EQ(quotedAt(0), "a");
  EXPECT_EQ(quotedAt(11), "none");
  EXPECT_EQ(quotedAt(12), "none");
  EXPECT_EQ(quotedAt(7), "c");
  EXPECT_EQ(quotedAt(1), " ");
}

// Where an element begins and ends.
struct Span {
  size_t start;
  size_t end;
};

std::string attribute(std::string_view text, Span span, const std::string& word) {
  return RuleElement(cleaned(text), span.start, span.end).attribute(word).value_or("none");
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

// The number that a reader at the start finds, and where it is then.
struct Passed {
  std::optional<uint32_t> number;
  size_t position;
  friend bool operator==(const Passed&, const Passed&) = default;
};
std::ostream& operator<<(std::ostream& out, const Passed& passed) {
  return passed.number ? out << *passed.number << " up to " << passed.position : out << "none";
}

Passed passedHex(const RuleText& text, Span span) {
  RuleReader reader(text, span.start);
  const auto number = reader.passHexNumber(span.end);
  return {number, reader.position()};
}

TEST(HexNumbers, are_the_runs_of_hexadecimal_digits_of_a_span) {
  const RuleText text = cleaned(" 8140-84be x FF");
  EXPECT_EQ(passedHex(text, {0, 15}), (Passed{0x8140, 5}));
  EXPECT_EQ(passedHex(text, {5, 15}), (Passed{0x84BE, 10}));
  EXPECT_EQ(passedHex(text, {10, 15}).number, 0xFFu);
  EXPECT_EQ(passedHex(text, {10, 14}).number, 0xFu) << "the span cuts it";
  EXPECT_EQ(passedHex(text, {10, 13}), (Passed{std::nullopt, 10}));
  EXPECT_EQ(passedHex(text, {15, 15}), (Passed{std::nullopt, 15}));
  EXPECT_EQ(passedHex(text, {99, 99}), (Passed{std::nullopt, 99}));
  EXPECT_EQ(passedHex(cleaned("123456789"), {0, 9}).number, 0x23456789u);
}

TEST(PassCharacter, goes_over_one_character_in_front_of_the_end) {
  const RuleText text = cleaned("a-b-");
  const auto passes = [&](size_t from, size_t end) {
    RuleReader reader(text, from);
    const bool passed = reader.passCharacter('-', end);
    EXPECT_EQ(reader.position(), passed ? from + 1 : from);
    return passed;
  };
  EXPECT_TRUE(passes(1, 4));
  EXPECT_TRUE(passes(1, 2));
  EXPECT_FALSE(passes(1, 1));
  EXPECT_FALSE(passes(0, 4));
  EXPECT_TRUE(passes(3, 99));
  EXPECT_FALSE(passes(4, 99)) << "behind the text";
}

TEST(Steps, lead_inside_an_element_or_behind_its_content) {
  const RuleText text = cleaned("<a>1<b>2</b></a><b>3</b> ");
  RuleReader reader(text);
  EXPECT_TRUE(reader.findElement("b"));
  EXPECT_EQ(reader.position(), 0u) << "finding is no step";
  EXPECT_EQ(reader.enterElement("a")->content(), "1<b>2</b>");
  EXPECT_EQ(reader.position(), 3u);
  EXPECT_EQ(reader.passElement("b")->content(), "2");
  EXPECT_EQ(reader.position(), 8u);
  EXPECT_EQ(reader.enterElement("b")->content(), "3");
  EXPECT_EQ(reader.position(), 19u);
  EXPECT_FALSE(reader.enterElement("b"));
  EXPECT_FALSE(reader.passElement("b"));
  EXPECT_EQ(reader.position(), 19u) << "what is not there is no step";
  EXPECT_EQ(RuleReader(*RuleReader(text).findElement("b")).position(), 7u);
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
  return RuleElement(cleaned(text), span.start, span.end).entityReference().value_or("none");
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

}  // namespace
}  // namespace ksv::test
