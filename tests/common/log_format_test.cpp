// Formats that may hold anything, against fprintf's own family where that is defined.
#include "common/log_format.h"

#include <algorithm>
#include <array>
#include <climits>
#include <memory>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "tests/common/support.h"

using ksv::test::TempDirectory;

namespace {

template <class Value>
std::string formatted(const std::string& format, Value value) {
  std::array<char, 9000> text;
  const int length = std::snprintf(text.data(), text.size(), format.c_str(), value);
  return {text.data(), static_cast<size_t>(length)};
}

// One conversion by the C library, its argument as wide as the format has it.
std::string byLibrary(const std::string& conversion, int32_t argument) {
  const char letter = conversion.back();
  const auto bits = static_cast<uint32_t>(argument);
  if (letter == 'c') return formatted(conversion, argument);
  if (letter == 'p') return formatted(conversion, reinterpret_cast<void*>(uintptr_t{bits}));
  const bool isSigned = letter == 'd' || letter == 'i';
  const size_t length = conversion.find_first_of("hljzt");
  const char kind = length == conversion.npos ? 'h' : conversion[length];
  if (kind == 'h') return isSigned ? formatted(conversion, argument) : formatted(conversion, bits);
  if (kind == 'j') {
    return isSigned ? formatted(conversion, intmax_t{argument})
                    : formatted(conversion, uintmax_t{bits});
  }
  if (kind == 'l' && conversion[length + 1] != 'l') {
    return isSigned ? formatted(conversion, static_cast<long>(argument))
                    : formatted(conversion, static_cast<unsigned long>(bits));
  }
  return isSigned ? formatted(conversion, static_cast<long long>(argument))
                  : formatted(conversion, static_cast<unsigned long long>(bits));
}

bool areSmall(const std::string& conversion) {
  static const std::regex number("[1-9][0-9]*");
  for (std::sregex_iterator at(conversion.begin(), conversion.end(), number), end; at != end;
       ++at) {
    if (at->length() > 4 || std::stoi(at->str()) > 4095) return false;
  }
  return true;
}

// Slow: what is to be carried out, as a regular expression.
std::string reference(const std::string& format, int32_t argument) {
  static const std::regex conversion(
      "^%[-+ #0]*[0-9]*(\\.[0-9]*)?((hh|h|ll|l|j|z|t)?[diouxX]|[cp])");
  std::string result;
  bool used = false;
  for (size_t at = 0; at < format.size();) {
    std::smatch match;
    const std::string rest = format.substr(at);
    if (rest.starts_with("%%")) {
      result += '%';
      at += 2;
    } else if (!used && std::regex_search(rest, match, conversion) && areSmall(match.str())) {
      result += byLibrary(match.str(), argument);
      used = true;
      at += match.str().size();
    } else {
      result += format[at++];
    }
  }
  return result;
}

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
       {"%s", "%n", "%hhn", "%ls", "%S", "%lc", "%C", "%f", "%e", "%G", "%La", "%m", "%*d", "%.*d",
        "%1$d", "%1$n", "%Ld", "%hc", "%lp", "%q", "%w", "%I64d", "%'d", "%", "%-", "%5", "%5.",
        "%5.3", "%5.3l", "%h", "100%", "% ", "%\n", "%あ", "%\xFF"}) {
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
        for (const char* conversion : {"d", "i", "o", "u", "x", "X", "hd", "hhx", "hu", "hhi", "ld",
                                       "lu", "lld", "llX", "jd", "jo", "zu", "td"}) {
          const std::string format =
              std::string("%").append(flags).append(width).append(precision).append(conversion);
          for (const int32_t argument : kArguments) {
            ASSERT_EQ(printed(format, argument), byLibrary(format, argument))
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
    ASSERT_EQ(printed(format, argument), reference(format, argument)) << format;
  }
}

TEST_F(LogFormat, takes_time_in_proportion_to_the_format) {
  std::string signs;
  for (int i = 0; i < 200000; ++i) signs += "%-5.";
  EXPECT_EQ(printed(signs, 1), signs);
}
