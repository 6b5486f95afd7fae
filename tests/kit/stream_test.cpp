#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "kit.h"

namespace ksv_kit_tests {
namespace {

using namespace std::string_literals;

struct StreamedText {
  const char* from;
  const char* to;
  std::string input;
};

void PrintTo(const StreamedText& text, std::ostream* out) {
  *out << text.from << " to " << text.to << ' ' << testing::PrintToString(text.input);
}

// Texts where a cut could matter: lead bytes and trails, bases and marks, escapes, shifts, runs of
// base64, line ends, marks, and what is bad or lacking among them.
std::vector<StreamedText> textsToCut() {
  return {
      {"SJIS", "UTF-8", "a\x82\xA0\x83\x5C\x82\xFFz\x82"},
      {"SJIS", "UTF-16LE", "a\x82\xA0\r\n\x83\x5C"},
      {"EUC-JP", "UTF-8", "\xA4\xA2\x8F\xB0\xA1\x8E\xB1z\xA4"},
      {"UTF-8", "SJIS",
       "\xEF\xBB\xBF"
       "a\xE3\x81\x82\xC3\xA9\xF0\x9F\x98\x80\xE3\x81z\xED\xA0\x80"},
      {"UTF-8", "EUC-JIS-2004", "\xE3\x81\x8B\xE3\x82\x9A\xE3\x81\x8B\xCB\xA9\xCB\xA5\xCB\xA5"},
      {"UTF-8", "ISO-2022-JP", "a\xE3\x81\x82\x1B(B\xC3\xA9\xE3\x81\x84"},
      {"UTF-8", "ISO-2022-JP-2004", "a\xE3\x81\x82\xF0\xA0\x80\x8B\xE3\x81\x84z"},
      {"ISO-2022-JP", "UTF-8", "a\x1B$B$\"$\xFF$$\x1B(B\x1B$B\x1B(Bz\x1B$B$"},
      {"ISO-2022-JP-2004", "UTF-8", "a\x1B$(Q$\"\x1B$(P!\"\x1B(Bz"},
      {"CP50220", "SJIS", "a\x1B$B$\"\x0E\x31\x32\x0F\x1B(Bz"},
      {"UTF-7", "SJIS", "a+MEIwRA-b+-c+2D3eAA-d+AGEA"},
      {"HZ", "UTF-8", "a~{VPND~}b~~c~\nd~{VP"},
      {"GB18030", "UTF-8", "\xD6\xD0\x81\x30\x81\x30\x90\x30\x81\x30\xFFz\x81\x30"},
      {"UTF-16", "UTF-8",
       "\xFF\xFE"
       "a\0\x42\x30\x3D\xD8\x00\xDE\x00\xDCz"s},
      {"UTF-16BE", "SJIS", "\x30\x42\0\r\0\n\x30\x44\xD8\x3D"s},
      {"UCS-4BE", "UTF-8", "\0\0\x30\x42\0\x11\0\0\0\0\0z\0"s},
      {"windows-1252", "SJIS", "na\xEFve \x80"},
  };
}

std::vector<ksv_options> optionsToCut() {
  std::vector<ksv_options> all(4, ksv_options KSV_OPTIONS_INIT);
  all[1].invalid = all[1].unmappable = KSV_SKIP;
  all[2].invalid = KSV_ESCAPE;
  all[2].unmappable = KSV_HEX_REFERENCE;
  all[2].newlines = KSV_NEWLINES_CRLF;
  all[3].invalid = KSV_REPLACE;
  all[3].unmappable = KSV_BUILT_IN;
  all[3].mark = KSV_KEEP_MARK;
  return all;
}

// Output, error, place and message are those of a single call, wherever input and output are cut.
TEST(Stream, gives_what_one_call_gives_at_every_cut) {
  for (const StreamedText& row : textsToCut()) {
    for (const ksv_options& options : optionsToCut()) {
      const Converted whole = convert(row.from, row.to, row.input, &options);
      const Plan made = plan(row.from, row.to, &options);
      const Converter stream = converter(made);
      for (const size_t piece : {1, 2, 3, 4, 5, 7, 100}) {
        for (const size_t room : {1, 2, 3, 64}) {
          ksv_converter_reset(stream.get());
          EXPECT_EQ(withoutText(feed(stream.get(), row.input, piece, room)), whole)
              << testing::PrintToString(row) << ", pieces of " << piece << ", room for " << room;
        }
      }
      for (size_t cut = 0; cut <= row.input.size(); ++cut) {
        const Converter two = converter(made);
        size_t used = 0;
        size_t written = 0;
        std::string buffer(4096, '\0');
        const ksv_result first =
            ksv_converter_feed(two.get(), row.input.data(), cut, &used, buffer.data(),
                               buffer.size(), &written, nullptr);
        if (first != KSV_OK) {
          EXPECT_EQ(first, whole.result);
          continue;
        }
        const Converted rest = feed(two.get(), std::string_view(row.input).substr(cut), 4096, 4096);
        EXPECT_EQ(rest.result, whole.result) << testing::PrintToString(row) << " cut at " << cut;
        if (rest.result == KSV_OK) {
          EXPECT_EQ(buffer.substr(0, written) + rest.text, whole.text);
        }
      }
    }
  }
}

TEST(Stream, writes_what_stands_in_front_of_a_problem) {
  const Plan made = plan("UTF-8", "SJIS");
  for (const size_t piece : {1, 2, 100}) {
    const Converter stream = converter(made);
    const Converted converted = feed(stream.get(), "ab\xE3\x81\x82\xC3\xA9zz", piece, 3);
    EXPECT_EQ(converted.result, KSV_UNMAPPABLE);
    EXPECT_EQ(converted.text, "ab\x82\xA0");
    EXPECT_EQ(converted.offset, 5u);
    // It says so again, and goes no further.
    size_t used = 1;
    size_t written = 1;
    char buffer[8];
    EXPECT_EQ(ksv_converter_feed(stream.get(), "q", 1, &used, buffer, 8, &written, nullptr),
              KSV_UNMAPPABLE);
    EXPECT_EQ(used + written, 0u);
    EXPECT_EQ(ksv_converter_finish(stream.get(), buffer, 8, &written, nullptr), KSV_UNMAPPABLE);
    ksv_converter_reset(stream.get());
    EXPECT_EQ(feed(stream.get(), "\xE3\x81\x82", 2, 1), text("\x82\xA0"));
  }
}

TEST(Stream, outlives_its_plan) {
  Plan made = plan("SJIS", "UTF-8");
  const Converter stream = converter(made);
  made.reset();
  EXPECT_EQ(feed(stream.get(), "\x82\xA0", 1, 1), text("\xE3\x81\x82"));
}

TEST(Stream, is_over_when_it_is_finished) {
  const Converter stream = converter(plan("SJIS", "UTF-8"));
  EXPECT_EQ(feed(stream.get(), "a", 1, 1), text("a"));
  size_t used = 0;
  size_t written = 0;
  char buffer[8];
  EXPECT_EQ(ksv_converter_feed(stream.get(), "b", 1, &used, buffer, 8, &written, nullptr),
            KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_converter_finish(stream.get(), buffer, 8, &written, nullptr), KSV_OK);
  EXPECT_EQ(written, 0u);
}

// Lines of any length, and CR LF that comes in two pieces.
TEST(Stream, counts_lines_and_columns_of_long_texts) {
  const Plan made = plan("EUC-JP", "UTF-8");
  std::string sound;
  for (int i = 0; i < 30000; ++i) sound += "\xA4\xA2\xA4\xA4\r\n";
  sound += std::string(200001, 'x') + "\xA4\xA2\xFF";
  const Converter stream = converter(made);
  for (const size_t piece : {size_t{997}, size_t{65536}, sound.size()}) {
    ksv_converter_reset(stream.get());
    const Converted converted = feed(stream.get(), sound, piece, 4096);
    EXPECT_EQ(converted.result, KSV_TRUNCATED) << converted.message;
    EXPECT_EQ(converted.line, 30001u);
    EXPECT_EQ(converted.column, 200003u);
  }
}

// Random bytes in random pieces.
TEST(Stream, gives_what_one_call_gives_for_random_bytes) {
  std::mt19937 random(20261122);
  const char* const charsets[] = {"SJIS",  "EUC-JP", "ISO-2022-JP",     "GB18030",
                                  "UTF-8", "UTF-16", "CP50221",         "UTF-7",
                                  "HZ",    "Big5",   "ISO-2022-JP-2004"};
  for (const char* const from : charsets) {
    for (const ksv_options& options : optionsToCut()) {
      const Plan made = plan(from, random() % 2 == 0 ? "UTF-8" : "SJIS", &options);
      const Converter stream = converter(made);
      for (int round = 0; round < 40; ++round) {
        std::string input;
        for (size_t length = random() % 60; length != 0; --length)
          input += static_cast<char>(random() % 3 == 0 ? "\x1B$B(~{}+-\r\n"[random() % 11]
                                                       : static_cast<char>(random()));
        char* output = nullptr;
        size_t length = 0;
        ksv_error error;
        ksv_plan_convert(made.get(), input.data(), input.size(), &output, &length, &error);
        const Converted whole = {static_cast<ksv_result>(error.result),
                                 output == nullptr ? "" : std::string(output, length),
                                 error.offset,
                                 error.line,
                                 error.column,
                                 error.message};
        ksv_free(output);
        ksv_converter_reset(stream.get());
        const size_t piece = 1 + random() % 9;
        EXPECT_EQ(withoutText(feed(stream.get(), input, piece, 1 + random() % 5)), whole)
            << from << ' ' << testing::PrintToString(input) << " in pieces of " << piece;
      }
    }
  }
}

}  // namespace
}  // namespace ksv_kit_tests
