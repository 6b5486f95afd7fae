#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "ksv.hpp"

namespace {

ksv::Charset charset(const char* name) {
  const std::optional<ksv::Charset> found = ksv::Charset::find(name);
  EXPECT_TRUE(found) << name;
  return found.value();
}

TEST(Charsets, are_found_by_all_their_names) {
  for (const ksv::Charset& one : ksv::Charset::all()) {
    EXPECT_EQ(charset(one.name().c_str()).name(), one.name());
    for (const std::string& alias : one.aliases())
      EXPECT_EQ(charset(alias.c_str()).name(), one.name()) << alias;
  }
  EXPECT_FALSE(ksv::Charset::find("no such charset"));
  EXPECT_EQ(ksv_charset_find(nullptr), nullptr);
  EXPECT_EQ(ksv_charset_at(100000), nullptr);
}

TEST(Charsets, have_the_names_of_registries) {
  EXPECT_EQ(charset("SJIS").mime_name(), "Shift_JIS");
  EXPECT_EQ(charset("cp037").mime_name(), "IBM037");
  EXPECT_EQ(charset("cp850").code_page(), 850u);
  EXPECT_EQ(charset("ISO-2022-KR").mime_name(), "ISO-2022-KR");
  EXPECT_EQ(charset("johab").code_page(), 1361u);
  EXPECT_EQ(charset("cp932").web_name(), "Shift_JIS");
  EXPECT_EQ(charset("cp932").code_page(), 932u);
  EXPECT_EQ(charset("eucjp").mime_name(), "EUC-JP");
  EXPECT_EQ(charset("utf8").code_page(), 65001u);
  EXPECT_EQ(charset("windows-1252").web_name(), "windows-1252");
  EXPECT_EQ(charset("latin1").web_name(), std::nullopt);
  EXPECT_EQ(charset("EUC-JIS-2004").code_page(), 0u);
}

TEST(Charsets, know_how_long_a_character_gets) {
  EXPECT_EQ(charset("ISO-8859-1").longest_character(), 1u);
  EXPECT_EQ(charset("SJIS").longest_character(), 2u);
  EXPECT_EQ(charset("EUC-JP").longest_character(), 3u);
  EXPECT_EQ(charset("GB18030").longest_character(), 4u);
  EXPECT_EQ(charset("UTF-8").longest_character(), 4u);
  EXPECT_EQ(charset("UTF-16").longest_character(), 4u);
  EXPECT_EQ(charset("ISO-2022-JP").longest_character(), 2u);
  for (const char* name : {"IBM930", "IBM939", "ISO-2022-KR", "ISO-2022-CN"})
    EXPECT_EQ(charset(name).longest_character(), 2u) << name;
  EXPECT_TRUE(charset("ISO-2022-JP").is_stateful());
  EXPECT_FALSE(charset("SJIS").is_stateful());
  EXPECT_TRUE(charset("UTF-7").is_stateful());
  EXPECT_FALSE(charset("UTF-7").can_be_written());
}

// The ranges against a conversion of every character.
TEST(Charsets, hold_the_characters_that_can_be_converted) {
  for (const char* const name : {"SJIS", "KOI8-R", "ISO-2022-JP", "EUC-KR"}) {
    const uint32_t* ranges = nullptr;
    size_t count = 0;
    const ksv_charset* const found = ksv_charset_find(name);
    ASSERT_EQ(ksv_charset_repertoire(found, &ranges, &count, nullptr), KSV_OK);
    std::set<uint32_t> held;
    for (size_t i = 0; i < count; ++i) {
      EXPECT_LE(ranges[2 * i], ranges[2 * i + 1]);
      if (i > 0) {
        EXPECT_LT(ranges[2 * i - 1] + 1, ranges[2 * i]);
      }
      for (uint32_t c = ranges[2 * i]; c <= ranges[2 * i + 1]; ++c) held.insert(c);
    }
    const ksv::Plan plan("UCS-4BE", name);
    for (uint32_t c = 0; c < 0x20000; c += c < 0x400 ? 1 : 7) {
      if (c >= 0xD800 && c < 0xE000) continue;
      const char bytes[] = {0, static_cast<char>(c >> 16), static_cast<char>(c >> 8),
                            static_cast<char>(c)};
      char out[64];
      size_t length = 0;
      const ksv_result result = ksv_plan_convert_into(plan.handle(), bytes, sizeof bytes, out,
                                                      sizeof out, &length, nullptr);
      EXPECT_EQ(held.count(c) != 0, result == KSV_OK) << name << ' ' << std::hex << c;
      EXPECT_EQ(ksv_charset_has(found, c) != 0, result == KSV_OK) << name << ' ' << std::hex << c;
    }
  }
  EXPECT_FALSE(charset("UTF-8").has(0xD800));
  EXPECT_TRUE(charset("UTF-8").has(0x10FFFF));
  EXPECT_FALSE(charset("UTF-8").has(0x110000));
}

TEST(Charsets, tell_whether_a_text_fits_and_how_long_it_gets) {
  const ksv::Charset sjis = charset("SJIS");
  EXPECT_TRUE(sjis.can_hold("a\xE3\x81\x82"));
  EXPECT_FALSE(sjis.can_hold("a\xC3\xA9"));
  EXPECT_EQ(sjis.encoded_length("a\xE3\x81\x82"), 3u);
  EXPECT_EQ(sjis.encoded_length(""), 0u);
  EXPECT_EQ(charset("UTF-16").encoded_length("a\xF0\x9F\x98\x80"), 6u);
  EXPECT_EQ(charset("ISO-2022-JP").encoded_length("\xE3\x81\x82"), 8u);
  ksv_error error;
  EXPECT_EQ(ksv_charset_can_hold(ksv_charset_find("SJIS"), "ab\xC3\xA9", 4, &error),
            KSV_UNMAPPABLE);
  EXPECT_EQ(error.offset, 2u);
  EXPECT_EQ(error.code_point, 0xE9u);
  EXPECT_EQ(ksv_charset_can_hold(ksv_charset_find("UTF-7"), "a", 1, &error), KSV_UNKNOWN_CHARSET);
}

}  // namespace
