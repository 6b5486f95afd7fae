#include <gtest/gtest.h>

#include <string>

#include "kit.h"

namespace ksv_kit_tests {
namespace {

ksv_options profile(const char* name) {
  ksv_options options = KSV_OPTIONS_INIT;
  options.profile = name;
  return options;
}

// The wave dash of JIS: U+301C in one convention, U+FF5E in the other.
TEST(Profiles, read_and_write_a_code_by_their_convention) {
  const ksv_options jis = profile("jis");
  const ksv_options windows = profile("windows");
  EXPECT_EQ(convert("SJIS", "UTF-8", "\x81\x60", &jis), text("\xE3\x80\x9C"));
  EXPECT_EQ(convert("SJIS", "UTF-8", "\x81\x60", &windows), text("\xEF\xBD\x9E"));
  EXPECT_EQ(convert("UTF-8", "SJIS", "\xE3\x80\x9C", &jis), text("\x81\x60"));
  EXPECT_EQ(convert("UTF-8", "SJIS", "\xEF\xBD\x9E", &windows), text("\x81\x60"));
}

TEST(Profiles, refuse_the_characters_that_their_convention_lacks) {
  const ksv_options jis = profile("jis");
  const Converted refused = convert("UTF-8", "SJIS", "ab\n\xEF\xBD\x9E", &jis);
  EXPECT_EQ(refused.result, KSV_UNMAPPABLE);
  EXPECT_EQ(refused.offset, 3u);
  EXPECT_EQ(refused.line, 2u);
  ksv_options replacing = profile("jis");
  replacing.unmappable = KSV_HEX_REFERENCE;
  EXPECT_EQ(convert("UTF-8", "SJIS", "a\xEF\xBD\x9Ez", &replacing), text("a&#xFF5E;z"));
}

TEST(Profiles, have_refused_characters_replaced_by_texts_of_any_length) {
  ksv_options options = profile("jis");
  options.unmappable = KSV_REPLACE;
  for (const char* replacement : {"", "-", "a text that needs memory of its own"}) {
    options.unmappable_text = replacement;
    EXPECT_EQ(convert("UTF-8", "SJIS", "a\xEF\xBD\x9Ez", &options),
              text("a" + std::string(replacement) + "z"));
  }
}

TEST(Profiles, have_refused_characters_written_by_what_looks_like_them) {
  ksv_options windows = profile("windows");
  windows.unmappable = KSV_LOOK_ALIKE;
  EXPECT_EQ(convert("UTF-8", "SJIS", "a\xE3\x80\x9Cz", &windows), text("a\x81\x60z"));
}

TEST(Profiles, are_read_from_a_text_of_the_callers) {
  ksv_options options = KSV_OPTIONS_INIT;
  options.profile_text = "what is this\n";
  const Converted refused = convert("UTF-8", "SJIS", "a", &options);
  EXPECT_EQ(refused.result, KSV_BAD_ARGUMENT);
  EXPECT_NE(refused.message.find("line 1"), std::string::npos) << refused.message;
  options = profile("nobodys");
  const Converted unknown = convert("UTF-8", "SJIS", "a", &options);
  EXPECT_EQ(unknown.result, KSV_BAD_ARGUMENT);
  EXPECT_NE(unknown.message.find("iconv-glibc"), std::string::npos) << unknown.message;
}

// か with its voice mark apart, as one system stores names of files: が.
TEST(Normalization, joins_the_marks_that_a_legacy_charset_has_no_place_for) {
  ksv_options options = KSV_OPTIONS_INIT;
  EXPECT_EQ(convert("UTF-8", "SJIS", "\xE3\x81\x8B\xE3\x82\x99", &options).result, KSV_UNMAPPABLE);
  for (const ksv_normalization form : {KSV_NFC, KSV_NFKC, KSV_COMPOSED}) {
    options.normalization = form;
    EXPECT_EQ(convert("UTF-8", "SJIS", "\xE3\x81\x8B\xE3\x82\x99z", &options), text("\x82\xAAz"));
  }
  options.normalization = KSV_NFD;
  EXPECT_EQ(convert("SJIS", "UTF-8", "\x82\xAA", &options), text("\xE3\x81\x8B\xE3\x82\x99"));
}

TEST(Widths, change_katakana_and_ascii_each_for_itself) {
  ksv_options options = KSV_OPTIONS_INIT;
  options.widths = KSV_WIDEN_KATAKANA;
  EXPECT_EQ(convert("SJIS", "SJIS", "\xB6\xDE\x41", &options), text("\x83\x4B\x41"));
  options.widths = KSV_NARROW_KATAKANA | KSV_WIDEN_ASCII;
  EXPECT_EQ(convert("SJIS", "SJIS", "\x83\x4B\x41", &options), text("\xB6\xDE\x82\x60"));
  options.widths = KSV_NARROW_ASCII;
  EXPECT_EQ(convert("SJIS", "UTF-8", "\x82\x60\x81\x40", &options), text("A "));
  options.widths = KSV_NARROW_ASCII | KSV_WIDEN_ASCII;
  EXPECT_EQ(convert("SJIS", "UTF-8", "A", &options).result, KSV_BAD_ARGUMENT);
  options.widths = 64;
  EXPECT_EQ(convert("SJIS", "UTF-8", "A", &options).result, KSV_BAD_ARGUMENT);
}

// What a later stage finds is told by its place in the text as it came, whatever was changed on
// the way, and wherever the text is cut.
TEST(Changes, leave_places_what_they_are) {
  ksv_options options = KSV_OPTIONS_INIT;
  options.normalization = KSV_NFC;
  options.widths = KSV_WIDEN_KATAKANA;
  const std::string input = "\xB6\xDE\xB7\xDE\r\n\xB6\xDE\x87\x40!";
  const Converted whole = convert("CP932", "ISO-2022-JP", input, &options);
  EXPECT_EQ(whole.result, KSV_UNMAPPABLE);
  EXPECT_EQ(whole.offset, 8u);
  EXPECT_EQ(whole.line, 2u);
  EXPECT_EQ(whole.column, 3u);
  const Plan made = plan("CP932", "ISO-2022-JP", &options);
  const Converter stream = converter(made);
  for (const size_t piece : {1U, 2U, 3U, 5U}) {
    ksv_converter_reset(stream.get());
    EXPECT_EQ(withoutText(feed(stream.get(), input, piece, 3)), whole) << piece;
  }
}

}  // namespace
}  // namespace ksv_kit_tests
