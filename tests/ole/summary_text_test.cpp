// How texts are cut, and which charsets they come from and go to.
#include "ole/summary_text.h"

#include "tests/ole/summary_reader.h"

namespace ksv::test {
namespace {

TEST(TrimmedLength, of_up_to_256_bytes_is_all_of_them) {
  EXPECT_EQ(trimmedLength("", 932), 0u);
  EXPECT_EQ(trimmedLength(std::string(256, '\x82'), 932), 256u);
  EXPECT_EQ(trimmedLength(std::string(256, '\xFF'), 65001), 256u);
  EXPECT_EQ(trimmedLength(std::string(257, 'a'), 932), 256u);
  EXPECT_EQ(trimmedLength(std::string(1026, 'a'), 65001), 256u);
}

TEST(TrimmedLength, parts_no_two_byte_character) {
  for (const uint16_t page : std::initializer_list<uint16_t>{932, 936, 949, 950, 1252, 1200, 0}) {
    EXPECT_EQ(trimmedLength(std::string(255, 'a') + "\x82\xA0" + "bcd", page), 255u) << page;
    EXPECT_EQ(trimmedLength(std::string(254, 'a') + "\x82\xA0" + "bcd", page), 256u) << page;
  }
}

TEST(TrimmedLength, walks_from_the_first_byte) {
  EXPECT_EQ(trimmedLength(std::string(300, '\x82'), 932), 256u);
  EXPECT_EQ(trimmedLength("a" + std::string(300, '\x82'), 932), 255u);
  EXPECT_EQ(trimmedLength(std::string(300, '\xC3'), 65001), 256u);
  EXPECT_EQ(trimmedLength("a" + std::string(300, '\xC3'), 65001), 255u);
}

TEST(TrimmedLength, knows_the_leads_of_shift_jis_in_every_other_code_page) {
  for (int lead = 0; lead < 256; ++lead) {
    const bool isLead = (lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xFC);
    const std::string text = std::string(255, 'a') + static_cast<char>(lead) + "bcd";
    for (const uint16_t page : std::initializer_list<uint16_t>{932, 949, 1252}) {
      EXPECT_EQ(trimmedLength(text, page), isLead ? 255u : 256u) << lead;
    }
  }
}

TEST(TrimmedLength, knows_the_leads_of_utf_8_and_ends_at_what_is_none) {
  for (int lead = 0; lead < 256; ++lead) {
    const size_t size = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 0;
    for (size_t at = 250; at < 256; ++at) {
      // Behind the lead, characters of one byte fill what is left.
      const std::string text =
          std::string(at, 'a') + static_cast<char>(lead) + std::string(20, '\x80');
      const size_t expected = size == 0 || at + size > 256 ? at : 256;
      EXPECT_EQ(trimmedLength(text, 65001), expected) << lead << " at " << at;
    }
  }
}

class SummaryTexts : public SummaryTest {
 protected:
  std::string title(const std::string& bytes, uint16_t page) {
    return readSummary({codePage(page), text(2, bytes)})[KSV_SUMMARY_TITLE];
  }
};

TEST_F(SummaryTexts, come_from_the_charset_of_the_code_page) {
  EXPECT_EQ(title("\x95\x5C\x8E\xA6", 932), "表示");
  EXPECT_EQ(title("\x95\x5C\x8E\xA6", 2000), "表示");
  EXPECT_EQ(title("\xD6\xD0\xCE\xC4", 936), "中文");
  EXPECT_EQ(title("\xD6\xD0\xCE\xC4", 3000), "中文");
  EXPECT_EQ(title("\xC7\xD1\xB1\xDB", 949), "한글");
  EXPECT_EQ(title("\xC7\xD1\xB1\xDB", 5000), "한글");
  EXPECT_EQ(title("\xA4\xA4\xA4\xE5", 950), "中文");
  EXPECT_EQ(title("\xA4\xA4\xA4\xE5", 4000), "中文");
  EXPECT_EQ(title(std::string("\x42\x30\x41\0", 4), 1200), "あA");
  EXPECT_EQ(title("表示", 65001), "表示");
}

TEST_F(SummaryTexts, of_other_code_pages_come_from_the_charset_of_the_language) {
  const struct {
    const char* language;
    const char* bytes;
    const char* expected;
  } cases[] = {{"Japanese", "\x95\x5C", "表"},
               {"Simplified Chinese", "\xD6\xD0", "中"},
               {"Traditional Chinese", "\xA4\xA4", "中"},
               {"Korean", "\xC7\xD1", "한"},
               {"English", "\xE9", "é"},
               {"", "\xE9", "é"},
               {"japanese", "\xE9", "é"},
               {"Klingon", "\xE9", "é"}};
  for (const auto& [language, bytes, expected] : cases) {
    setLanguage(language);
    for (const uint16_t page :
         std::initializer_list<uint16_t>{0, 1, 1252, 931, 933, 1201, 65000, 65535}) {
      EXPECT_EQ(title(bytes, page), expected) << language << " " << page;
    }
  }
}

TEST_F(SummaryTexts, come_from_the_initial_code_page_until_the_document_tells_its_own) {
  const std::vector<Property> properties = {text(2, "\xC7\xD1"), codePage(932),
                                            text(3, "\x95\x5C")};
  const Reading reading = readSummary(properties, kTexts, 949);
  EXPECT_EQ(reading[KSV_SUMMARY_TITLE], "한");
  EXPECT_EQ(reading[KSV_SUMMARY_SUBJECT], "表");
}

TEST_F(SummaryTexts, of_the_second_set_come_from_the_code_page_that_the_first_ended_with) {
  const std::string bytes =
      document(summary({codePage(949)}), documentSummary({text(2, "\xC7\xD1")}));
  EXPECT_EQ(readDocument(bytes, kTexts)[KSV_SUMMARY_CATEGORY], "한");
}

TEST_F(SummaryTexts, go_to_the_target_charset_in_the_byte_order_of_the_settings) {
  setTarget("ISO-10646-UCS-2");
  const std::vector<Property> properties = {codePage(932), text(2, "A\x82\xA0")};
  EXPECT_EQ(readSummary(properties).bytes(0, 6), std::string("A\0\x42\x30\0\0", 6));
  settings_.outputBigEndian = 1;
  EXPECT_EQ(readSummary(properties).bytes(0, 6), std::string("\0A\x30\x42\0\0", 6));
  setTarget("EUC-JP");
  EXPECT_EQ(readSummary(properties)[0], "A\xA4\xA2");
  // Nobody closes a text of a stateful charset.
  setTarget("ISO-2022-JP");
  EXPECT_EQ(title("\x82\xA0", 932), "\x1B$B$\"");
}

TEST_F(SummaryTexts, are_replaced_where_the_target_lacks_a_character) {
  const std::vector<Property> properties = {codePage(65001), text(2, "한é")};
  setTarget("ISO-8859-1");
  EXPECT_EQ(readSummary(properties)[0], "?\xE9");
  setTarget("WINDOWS31J");
  EXPECT_EQ(readSummary(properties)[0].substr(0, 2), "\xAC\x81");
  settings_.outputBigEndian = 1;
  EXPECT_EQ(readSummary(properties)[0].substr(0, 2), "\x81\xAC");
  // Another spelling of the name has other replacements.
  setTarget("iso-8859-1");
  EXPECT_EQ(readSummary(properties)[0].back(), '\xE9');
}

TEST_F(SummaryTexts, have_their_line_ends_rewritten) {
  const struct {
    uint32_t flags;
    const char* expected;
  } cases[] = {{0, "a\r\nb\r\nc"}, {0x08, "a\r\nb\r\nc"}, {0x10, "a\rb\rc"},
               {0x20, "a\nb\nc"},  {0x18, "a\r\nb\r\nc"}, {0x30, "a\rb\rc"},
               {0x60, "a\nb\nc"},  {0x80, "a\r\nb\r\nc"}, {0xFFFFFFFF, "a\r\nb\r\nc"}};
  for (const auto& [flags, expected] : cases) {
    settings_.lineEndFlags = flags;
    EXPECT_EQ(title("a\nb\r\nc", 932), expected) << flags;
  }
  settings_.lineEndFlags = 0x40;
  setTarget("ISO-10646-UCS-2");
  EXPECT_EQ(readSummary({codePage(932), text(2, "a\nb")}).bytes(0, 6), std::string("a\0\x28\x20"
                                                                                   "b\0",
                                                                                   6));
}

TEST_F(SummaryTexts, that_are_long_are_cut_before_they_are_converted) {
  EXPECT_EQ(title(std::string(255, 'a') + "\x82\xA0" + std::string(43, 'b'), 932),
            std::string(255, 'a'));
  EXPECT_EQ(title(std::string(300, 'a'), 932), std::string(256, 'a'));
  EXPECT_EQ(title(std::string(2000, 'a'), 932), std::string(256, 'a'));
  EXPECT_EQ(title(std::string(254, 'a') + "表示", 65001), std::string(254, 'a'));
  EXPECT_EQ(title(std::string(253, 'a') + "表示", 65001), std::string(253, 'a') + "表");
}

TEST_F(SummaryTexts, that_outgrow_their_place_are_cut_at_1028_bytes) {
  setTarget("ISO-10646-UCS-4");
  const Reading reading = readSummary({codePage(932), text(2, std::string(256, '\n'))});
  std::string lineEnds;
  for (int i = 0; i < 257; ++i) lineEnds += std::string(i % 2 == 0 ? "\r\0\0\0" : "\n\0\0\0", 4);
  // 128 line ends and no half of one.
  EXPECT_EQ(reading.bytes(0, 1024), lineEnds.substr(0, 1024));
  EXPECT_EQ(reading.bytes(1024, 20), std::string(20, '\0'));
}

TEST_F(SummaryTexts, of_nothing_or_one_zero_byte_are_empty) {
  EXPECT_TRUE(readSummary({text(2, "")}).isEmpty());
  EXPECT_TRUE(readSummary({text(2, std::string(1, '\0'))}).isEmpty());
  EXPECT_EQ(readSummary({text(2, std::string("\0a", 2))}).bytes(0, 3), std::string("\0a\0", 3));
}

TEST_F(SummaryTexts, stay_empty_while_nothing_is_loaded_or_the_target_is_unknown) {
  setTarget("no such charset");
  EXPECT_TRUE(readSummary({text(2, "abc"), integer(9, 5)}).isEmpty());
  EXPECT_EQ(readSummary({text(2, "abc")}).result, 0u);
  setTarget("UTF-8");
  std::memset(settings_.targetCharset, 'x', sizeof settings_.targetCharset);
  EXPECT_TRUE(readSummary({text(2, "abc")}).isEmpty());
}

TEST(SummaryTextsWithoutCharsets, repeat_the_text_before_them_where_a_source_is_unknown) {
  const TempDirectory directory;
  const ScopedVariable setting("Charsetpath", directory.path() + "/");
  // What is shipped, but for one charset; no table is needed.
  for (const auto& entry : std::filesystem::directory_iterator(kCharsetDirectory)) {
    const std::string name = entry.path().filename().string();
    if (!name.starts_with("koreanksc") && !name.ends_with(".txt") && !name.ends_with(".cmp")) {
      std::filesystem::copy(entry.path(), std::filesystem::current_path() / name);
    }
  }
  ASSERT_EQ(startProcess(), 1);
  ASSERT_EQ(cconvLoadRule(), 1);
  writeFile("document", document(summary({codePage(65001), text(2, "abc"), codePage(949),
                                          text(3, "def"), text(4, ""), text(5, "ghi")})));
  KsvSummarySettings settings = {"UTF-8", "", 0, 0};
  std::string record(KSV_SUMMARY_RECORD_SIZE, 'x');
  const uint16_t parameters[3] = {kTexts, 0, 0};
  EXPECT_EQ(SummaryInfo("document", &settings, record.data(), parameters), 0u);
  EXPECT_STREQ(record.data() + KSV_SUMMARY_TITLE, "abc");
  EXPECT_STREQ(record.data() + KSV_SUMMARY_SUBJECT, "abc");
  EXPECT_STREQ(record.data() + KSV_SUMMARY_AUTHOR, "");
  EXPECT_STREQ(record.data() + KSV_SUMMARY_KEYWORDS, "");
  endProcess();
}

}  // namespace
}  // namespace ksv::test
