// Formats that may hold anything, against fprintf's own family where that is defined.
#include "common/log_format.h"

#include <climits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/common/slow_log_format.h"
#include "tests/common/support.h"

using ksv::test::TempDirectory;

namespace {

const std::vector<int32_t> kArguments = {0, 1, -1, 42, -70000, 'A', INT32_MAX, INT32_MIN};

class LogFormat : public testing::Test {
 protected:
  LogFormat() : stream_(std::fopen("out", "w+b")) {}
  ~LogFormat() override { std::fclose(stream_); }

  // What a format writes.
  std::string printed(const std::string& format, int32_t argument) {
    std::rewind(stream_);
    ksv::printFormat(stream_, format.c_str(), argument);
    std::string text(static_cast<size_t>(std::ftell(stream_)), '\0');
    std::rewind(stream_);
    EXPECT_EQ(std::fread(text.data(), 1, text.size(), stream_), text.size());
    return text;
  }

 private:
  TempDirectory directory_;
  std::FILE* const stream_;
};

}  // namespace

TEST_F(LogFormat, writes_text_without_a_per_cent_sign_as_it_is) {
  for (const char* text : {"", "plain", "日本語\n", "a\\nb"}) EXPECT_EQ(printed(text, 5), text);
}

TEST_F(LogFormat, prints_the_argument_once) {
  EXPECT_EQ(printed("status %d\n", 12), "status 12\n");
  EXPECT_EQ(printed("%08X", -2), "FFFFFFFE");
  EXPECT_EQ(printed("<%-5d>", 7), "<7    >");
  EXPECT_EQ(printed("%c", 0), std::string(1, '\0'));
  EXPECT_EQ(printed("%.3i|%lu", 7), "007|%lu");
  EXPECT_EQ(printed("%d %d", 3), "3 %d");
}

TEST_F(LogFormat, takes_two_per_cent_signs_for_one) {
  EXPECT_EQ(printed("100%%", 1), "100%");
  EXPECT_EQ(printed("%%d", 1), "%d");
  EXPECT_EQ(printed("%%%d%%%%", 1), "%1%%");
}

TEST_F(LogFormat, writes_conversions_that_an_integer_cannot_serve_as_they_stand) {
  for (const char* format :
       {"%s",  "%n",   "%hhn",  "%ls", "%S",    "%lc",  "%C",   "%f",  "%e",
        "%G",  "%La",  "%m",    "%*d", "%.*d",  "%1$d", "%1$n", "%Ld", "%hc",
        "%p",  "%lp",  "%q",    "%w",  "%I64d", "%'d",  "%",    "%-",  "%5",
        "%5.", "%5.3", "%5.3l", "%h",  "100%",  "% ",   "%\n",  "%あ", "%\xFF"}) {
    EXPECT_EQ(printed(format, 77), format);
  }
}

TEST_F(LogFormat, goes_on_behind_what_it_did_not_carry_out) {
  EXPECT_EQ(printed("%s %d", 77), "%s 77");
  EXPECT_EQ(printed("%-%d", 77), "%-77");
  EXPECT_EQ(printed("%5%%d", 77), "%5%d");
  EXPECT_EQ(printed("%n%s%x", 255), "%n%sff");
}

TEST_F(LogFormat, carries_out_no_more_than_4095_characters) {
  EXPECT_EQ(printed("%4095d", 7), std::string(4094, ' ') + "7");
  EXPECT_EQ(printed("%.4095d", 7), std::string(4094, '0') + "7");
  for (const char* format : {"%4096d", "%.4096d", "%999999999d", "%.2147483648d",
                             "%99999999999999999999999999d", "%1.99999999999999999999x"}) {
    EXPECT_EQ(printed(format, 7), format);
  }
  EXPECT_EQ(printed("%" + std::string(5000, '0') + "d", 7), "7");
  EXPECT_EQ(printed("%" + std::string(5000, '-') + "3d|", 7), "7  |");
}

TEST_F(LogFormat, prints_every_conversion_as_the_c_library_does) {
  for (const char* flags : {"", "-", "+", " ", "#", "0", "-+", "+0", "#0", "- #"}) {
    for (const char* width : {"", "1", "9"}) {
      for (const char* precision : {"", ".", ".0", ".4"}) {
        for (const char* conversion : {"d", "i", "o", "u", "x", "X", "c", "hd", "hhx", "hu", "hhi",
                                       "ld", "lu", "lld", "llX", "jd", "jo", "zu", "td"}) {
          const std::string format =
              std::string("%").append(flags).append(width).append(precision).append(conversion);
          for (const int32_t argument : kArguments) {
            ASSERT_EQ(printed(format, argument), ksv::test::printedByLibrary(format, argument))
                << format << " of " << argument;
          }
        }
      }
    }
  }
}

TEST_F(LogFormat, agrees_with_the_reference_for_random_formats) {
  SCOPED_TRACE("KSV_TEST_SEED=" + std::to_string(ksv::test::testSeed()));
  std::mt19937 random(ksv::test::testSeed());
  const std::string pieces = "%%%%%%%%ddxucpsnhlljztL*$.-+ #00123459 \xE3\x81\x82'qI";
  for (int i = 0; i < 4000; ++i) {
    std::string format(random() % 24, ' ');
    for (char& c : format) c = pieces[random() % pieces.size()];
    const int32_t argument = kArguments[random() % kArguments.size()];
    ASSERT_EQ(printed(format, argument), ksv::test::slowFormat(format, argument)) << format;
  }
}

TEST_F(LogFormat, takes_time_in_proportion_to_the_format) {
  std::string signs;
  for (int i = 0; i < 200000; ++i) signs += "%-5.";
  EXPECT_EQ(printed(signs, 1), signs);
}
