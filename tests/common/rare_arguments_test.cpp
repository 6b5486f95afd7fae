// Arguments that hardly anybody gives: what they get has to be as definite.
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "ksv_file.h"
#include "ksv_memory.h"
#include "tests/common/settings_fixture.h"
#include "tests/common/support.h"

using ksv::test::Settings;
using ksv::test::TempDirectory;
using ksv::test::writeFile;
using namespace std::string_literals;

TEST(RareArguments, of_a_line_without_a_place_read_nothing) {
  const TempDirectory directory;
  writeFile("file", "line\n");
  std::FILE* stream = KSV_FileOpen("file", "rb");
  ASSERT_NE(stream, nullptr);
  char line[8] = "before";
  EXPECT_EQ(KSV_FileReadLine(nullptr, 8, stream), nullptr);
  EXPECT_EQ(KSV_FileReadLine(line, 0, stream), nullptr);
  EXPECT_EQ(KSV_FileReadLine(line, -1, stream), nullptr);
  EXPECT_EQ(KSV_FileReadLine(line, 8, nullptr), nullptr);
  EXPECT_STREQ(line, "before");
  EXPECT_EQ(KSV_FileTell(stream), 0);
  KSV_FileClose(stream);
}

TEST(RareArguments, of_calloc_that_ask_for_nothing_get_a_block_to_free) {
  void* block = KSV_calloc(-1, 0);
  EXPECT_NE(block, nullptr);
  KSV_free(block);
  EXPECT_EQ(KSV_calloc(-1, 1), nullptr);
  EXPECT_EQ(KSV_calloc(1, -1), nullptr);
}

TEST(RareArguments, that_are_halves_of_surrogate_pairs_are_refused) {
  char text[8] = "before";
  for (const std::vector<uint16_t>& units : {std::vector<uint16_t>{0xDC00, 0},
                                             {0xDFFF, 'a', 0},
                                             {0xD800, 0},
                                             {0xD800, 0xE000, 0},
                                             {0xD800, 0xD800, 0},
                                             {0xDBFF, 'a', 0}}) {
    text[0] = 'b';
    EXPECT_EQ(KSV_FilePathTransUTF16ToUTF8(text, units.data(), sizeof text),
              KSV_PATH_NOT_CONVERTED);
    EXPECT_STREQ(text, "");
  }
  const uint16_t pair[] = {0xDBFF, 0xDFFF, 0};
  EXPECT_EQ(KSV_FilePathTransUTF16ToUTF8(text, pair, sizeof text), 0);
  EXPECT_STREQ(text, "\xF4\x8F\xBF\xBF");
}

TEST_F(Settings, begin_in_the_line_behind_one_that_begins_with_a_zero) {
  configure("\0Charsetpath=lost\nCharsetpath=found\n"s);
  EXPECT_EQ(read().substr(0, 5), "found");
}

TEST_F(Settings, keep_the_separator_that_a_directory_ends_in) {
  configure("Charsetpath=somewhere/\n");
  EXPECT_EQ(read(), "somewhere/");
  configure("Charsetpath=somewhere\\\n");
  EXPECT_EQ(read(), "somewhere\\");
}
