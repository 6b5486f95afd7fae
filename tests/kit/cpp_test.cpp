// The face for C++.
#include <gtest/gtest.h>

#include <string>

#include "ksv.hpp"
#include "tests/ole/compound_writer.h"

namespace {

// "I climbed the mountain path and thought: who goes by his head alone gets into trouble."
constexpr char kJapanese[] =
    "山路を登りながら、こう考えた。智に働けば角が立つ。情に棹させば流される。意地を通せば窮屈だ。";

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

TEST(Cpp, finds_out_the_charset_of_a_text) {
  const std::string text = ksv::convert("UTF-8", "Shift_JIS", kJapanese) + "\r\n";
  const ksv::Detection found = ksv::detect(text);
  EXPECT_EQ(found.content, KSV_CONTENT_TEXT);
  EXPECT_EQ(found.bytes, text.size());
  EXPECT_EQ(found.misread_as, std::nullopt);
  ASSERT_FALSE(found.guesses.empty());
  const ksv::Guess& best = found.guesses.front();
  EXPECT_EQ(best.charset, "Shift_JIS");
  EXPECT_EQ(best.language, "ja");
  EXPECT_GT(best.confidence, 0.9);
  EXPECT_EQ(best.invalid_offset, std::nullopt);
  EXPECT_EQ(best.line_end, KSV_LINE_ENDS_CRLF);
  EXPECT_EQ(best.mark_length, 0u);
  EXPECT_EQ(ksv::convert(best.decode_as.value(), "UTF-8", text), std::string(kJapanese) + "\r\n");
  EXPECT_EQ(ksv::detect("").content, KSV_CONTENT_EMPTY);
  EXPECT_THROW(ksv::detect_file("no such file"), ksv::Error);
}

TEST(Cpp, finds_out_charsets_by_hints_alone) {
  const ksv::Hints hints = ksv::Hints().charsets("EUC-JP").languages("ja");
  for (const ksv::Guess& guess :
       ksv::detect(ksv::convert("UTF-8", "EUC-JP", kJapanese), hints).guesses)
    EXPECT_EQ(guess.charset, "EUC-JP");
}

TEST(Cpp, finds_out_the_charset_of_pieces) {
  const std::string text = ksv::convert("UTF-8", "EUC-JP", kJapanese);
  ksv::Detector detector;
  EXPECT_EQ(detector.verdict().content, KSV_CONTENT_EMPTY);
  for (const char byte : text) detector.feed({&byte, 1});
  EXPECT_EQ(detector.verdict().guesses.at(0).charset, "EUC-JP");
  EXPECT_EQ(detector.verdict().bytes, text.size());
}

TEST(Cpp, finds_the_parts_of_a_mixed_text) {
  const std::string first = std::string(kJapanese) + "\n";
  const std::string second = ksv::convert("UTF-8", "Shift_JIS", kJapanese) + "\n";
  const std::vector<ksv::Segment> parts = ksv::segments(first + second);
  ASSERT_EQ(parts.size(), 2u);
  EXPECT_EQ(parts[0].offset, 0u);
  EXPECT_EQ(parts[0].length, first.size());
  EXPECT_EQ(parts[0].charset, "UTF-8");
  EXPECT_EQ(parts[1].offset, first.size());
  EXPECT_EQ(parts[1].length, second.size());
  EXPECT_EQ(parts[1].charset, "Shift_JIS");
  EXPECT_TRUE(ksv::segments("").empty());
}

TEST(Cpp, repairs_what_was_written_twice) {
  const std::string once = "caf\xC3\xA9 au lait, d\xC3\xA9j\xC3\xA0 vu\n";
  const std::string twice = ksv::convert("windows-1252", "UTF-8", once);
  const ksv::Repair repaired = ksv::repair(twice, "windows-1252");
  EXPECT_EQ(repaired.text, once);
  EXPECT_EQ(repaired.counts.repaired, 1u);
  EXPECT_EQ(repaired.counts.lost, 0u);
  EXPECT_EQ(ksv::repair("plain\n").text, "plain\n");
  EXPECT_THROW(ksv::repair("\xFF"), ksv::Error);
}

TEST(Cpp, opens_documents) {
  ksv::test::CompoundWriter writer;
  const std::uint32_t storage = writer.addStorage(0, u"Store");
  writer.addStream(storage, u"\u0005Sum", "properties");
  std::string bytes = writer.write();
  ksv::Document document = ksv::Document::open_memory(bytes);
  EXPECT_EQ(document.entry_count(), 3u);
  const std::uint32_t index = document.find("Store/\\x05Sum").value();
  EXPECT_EQ(document.path(index), "Store/\\x05Sum");
  EXPECT_EQ(document.entry(index).name_units, u"\u0005Sum");
  EXPECT_EQ(document.entry(index).parent, 1u);
  EXPECT_EQ(document.entry(0).parent, std::nullopt);
  EXPECT_EQ(document.read(index, 4, 100), "erties");
  EXPECT_EQ(document.find("none"), std::nullopt);
  EXPECT_THROW(document.entry(3), std::out_of_range);
  document.check();
  EXPECT_TRUE(document.damages().empty());
  EXPECT_EQ(document.facts().is_checked, 1u);
  EXPECT_THROW(ksv::Document::open("no such file"), ksv::Error);
  EXPECT_THROW(ksv::Document::open_memory("text"), ksv::Error);
}

}  // namespace
