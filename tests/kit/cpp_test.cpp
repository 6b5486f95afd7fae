// The face for C++.
#include <gtest/gtest.h>

#include <string>

#include "ksv.hpp"

namespace {

TEST(Cpp, converts_and_throws_what_went_wrong) {
  EXPECT_EQ(ksv::convert("SJIS", "UTF-8", "\x82\xA0"), "\xE3\x81\x82");
  EXPECT_EQ(ksv::convert("UTF-8", "SJIS", "\xC3\xA9", ksv::Options().unmappable("-")), "-");
  try {
    ksv::convert("UTF-8", "SJIS", "ab\n\xC3\xA9");
    ADD_FAILURE() << "it was converted";
  } catch (const ksv::Error& error) {
    EXPECT_EQ(error.result(), KSV_UNMAPPABLE);
    EXPECT_EQ(error.offset(), 3u);
    EXPECT_EQ(error.line(), 2u);
    EXPECT_EQ(error.code_point(), 0xE9u);
  }
  EXPECT_THROW(ksv::Plan("no such", "UTF-8"), ksv::Error);
}

TEST(Cpp, asks_a_function_about_problems) {
  int asked = 0;
  ksv::Options options;
  options.ask([&asked](const ksv_problem& problem) -> std::optional<std::string> {
    ++asked;
    if (problem.code_point == 0xEA) return std::nullopt;
    return "[" + std::to_string(problem.offset) + "]";
  });
  EXPECT_EQ(ksv::convert("UTF-8", "SJIS", "a\xC3\xA9\xFF", options), "a[1][3]");
  EXPECT_EQ(asked, 2);
  EXPECT_FALSE(ksv::try_convert("UTF-8", "SJIS", "\xC3\xAA", options));
  options.ask([](const ksv_problem&) -> std::optional<std::string> { throw 1; });
  EXPECT_FALSE(ksv::try_convert("UTF-8", "SJIS", "\xC3\xAA", options));
}

TEST(Cpp, streams_texts_one_behind_the_other) {
  ksv::Converter converter(ksv::Plan("SJIS", "UTF-8"));
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(converter.feed("a\x82"), "a");
    EXPECT_EQ(converter.feed("\xA0"), "\xE3\x81\x82");
    EXPECT_EQ(converter.finish(), "");
  }
  EXPECT_THROW(converter.feed("\xFF\xFF"), ksv::Error);
  converter.reset();
  std::string kanji;
  for (int i = 0; i < 50000; ++i) kanji += "\x88\x9F";
  std::string made = converter.feed(kanji);
  made += converter.finish();
  EXPECT_EQ(made.size(), 150000u);
}

TEST(Cpp, keeps_zero_bytes) {
  const std::string text("a\0b", 3);
  EXPECT_EQ(ksv::convert("SJIS", "UTF-8", text), text);
}

}  // namespace
