#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "kit.h"

namespace ksv_kit_tests {
namespace {

using namespace std::string_literals;

TEST(OneCall, converts_by_the_names_that_people_use) {
  EXPECT_EQ(convert("SJIS", "utf8", "\x82\xA0"), text("\xE3\x81\x82"));
  EXPECT_EQ(convert("932", "UTF-8", "\x87\x40"), text("\xE2\x91\xA0"));
  EXPECT_EQ(convert("utf8", "euc-jp", "\xE3\x81\x82"), text("\xA4\xA2"));
  EXPECT_EQ(convert("x-sjis", "UTF-16BE", "A\x82\xA0"), text("\0A\x30\x42"s));
  EXPECT_EQ(convert("x-sjis", "UTF-16", "A"), text("A\0"s));
}

// The engine's own default would write the bytes of a pair the other way round.
TEST(OneCall, never_swaps_the_bytes_of_a_charset_made_of_bytes) {
  EXPECT_EQ(convert("UTF-8", "GBK", "\xE4\xB8\xAD"), text("\xD6\xD0"));
  EXPECT_EQ(convert("GBK", "UTF-8", "\xD6\xD0"), text("\xE4\xB8\xAD"));
  ksv_options options = KSV_OPTIONS_INIT;
  options.byte_order = KSV_LITTLE_ENDIAN;
  EXPECT_EQ(convert("UTF-8", "EUC-KR", "\xEA\xB0\x80", &options), text("\xB0\xA1"));
}

TEST(OneCall, takes_texts_of_nothing) {
  EXPECT_EQ(convert("SJIS", "UTF-8", ""), text(""));
  char* output = nullptr;
  size_t length = 1;
  EXPECT_EQ(ksv_convert("SJIS", "UTF-8", nullptr, nullptr, 0, &output, &length, nullptr), KSV_OK);
  EXPECT_EQ(length, 0u);
  ASSERT_NE(output, nullptr);
  EXPECT_STREQ(output, "");
  ksv_free(output);
  EXPECT_EQ(convert("UTF-8", "ISO-2022-JP", ""), text(""));
}

TEST(OneCall, tells_how_much_a_buffer_has_to_hold) {
  const std::string input = "\x82\xA0\x82\xA2\x82\xA4";
  const std::string wanted = "\xE3\x81\x82\xE3\x81\x84\xE3\x81\x86";
  for (size_t capacity = 0; capacity <= 12; ++capacity) {
    std::vector<char> buffer(capacity + 1, 'x');
    size_t length = 0;
    ksv_error error;
    const ksv_result result = ksv_convert_into("SJIS", "UTF-8", nullptr, input.data(), input.size(),
                                               buffer.data(), capacity, &length, &error);
    EXPECT_EQ(result, capacity < 9 ? KSV_NO_ROOM : KSV_OK) << capacity;
    EXPECT_EQ(length, 9u) << capacity;
    EXPECT_EQ(buffer[capacity], 'x') << capacity;
    if (result == KSV_OK) {
      EXPECT_EQ(std::string(buffer.data(), length), wanted);
    }
  }
  size_t length = 0;
  EXPECT_EQ(ksv_convert_into("SJIS", "UTF-8", nullptr, input.data(), input.size(), nullptr, 0,
                             &length, nullptr),
            KSV_NO_ROOM);
  EXPECT_EQ(length, 9u);
}

TEST(OneCall, tells_where_and_what_bytes_are_that_are_no_text) {
  ksv_error error;
  char* output;
  size_t length;
  const std::string input = "ab\r\n\x82\xA0\x82\xFF";
  EXPECT_EQ(
      ksv_convert("SJIS", "UTF-8", nullptr, input.data(), input.size(), &output, &length, &error),
      KSV_INVALID);
  EXPECT_EQ(error.offset, 6u);
  EXPECT_EQ(error.line, 2u);
  EXPECT_EQ(error.column, 2u);
  EXPECT_EQ(error.byte_count, 2u);
  EXPECT_EQ(error.bytes[0], 0x82);
  EXPECT_EQ(error.bytes[1], 0xFF);
  EXPECT_EQ(error.code_point, KSV_NO_CODE_POINT);
  EXPECT_STREQ(error.message, "invalid Shift_JIS (0x82) at byte offset 6 (line 2, column 2)");
}

TEST(OneCall, tells_the_character_that_the_target_lacks) {
  ksv_error error;
  char* output;
  size_t length;
  const std::string input = "\xE3\x81\x82\n\xF0\x9F\x98\x80";
  EXPECT_EQ(
      ksv_convert("UTF-8", "SJIS", nullptr, input.data(), input.size(), &output, &length, &error),
      KSV_UNMAPPABLE);
  EXPECT_EQ(error.code_point, 0x1F600u);
  EXPECT_EQ(error.offset, 4u);
  EXPECT_EQ(error.line, 2u);
  EXPECT_EQ(error.column, 1u);
  EXPECT_EQ(error.byte_count, 4u);
  EXPECT_STREQ(error.message, "U+1F600 is not in Shift_JIS at byte offset 4 (line 2, column 1)");
}

TEST(OneCall, tells_a_text_that_ends_inside_a_character) {
  const Converted cut = convert("UTF-8", "SJIS", "a\xE3\x81");
  EXPECT_EQ(cut.result, KSV_TRUNCATED);
  EXPECT_EQ(cut.offset, 1u);
  EXPECT_EQ(convert("SJIS", "UTF-8", "ab\x82").result, KSV_TRUNCATED);
  EXPECT_EQ(convert("UTF-16LE", "UTF-8", "a\0b"s).offset, 2u);
}

TEST(OneCall, refuses_what_it_cannot_follow) {
  const Converted unknown = convert("sjiz", "UTF-8", "a");
  EXPECT_EQ(unknown.result, KSV_UNKNOWN_CHARSET);
  EXPECT_NE(unknown.message.find("sjis"), std::string::npos) << unknown.message;
  EXPECT_EQ(convert("UTF-8", "UTF-7", "a").result, KSV_UNKNOWN_CHARSET);
  EXPECT_EQ(convert("UTF-7", "UTF-8", "+MEI-"), text("\xE3\x81\x82"));
  EXPECT_EQ(convert(nullptr, "UTF-8", "a").result, KSV_BAD_ARGUMENT);
  EXPECT_EQ(convert("UTF-8", nullptr, "a").result, KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_convert("UTF-8", "SJIS", nullptr, "a", 1, nullptr, nullptr, nullptr),
            KSV_BAD_ARGUMENT);
  ksv_options options = KSV_OPTIONS_INIT;
  options.invalid = 99;
  EXPECT_EQ(convert("UTF-8", "SJIS", "a", &options).result, KSV_BAD_ARGUMENT);
  options = KSV_OPTIONS_INIT;
  options.size = 0;
  EXPECT_EQ(convert("UTF-8", "SJIS", "a", &options).result, KSV_BAD_ARGUMENT);
  options = KSV_OPTIONS_INIT;
  options.invalid = KSV_ASK;
  EXPECT_EQ(convert("UTF-8", "SJIS", "a", &options).result, KSV_BAD_ARGUMENT);
}

// A caller that was built when the options ended earlier: what stands behind is not read.
TEST(OneCall, takes_options_of_a_caller_that_knows_fewer) {
  ksv_options options = KSV_OPTIONS_INIT;
  options.size = offsetof(ksv_options, invalid_text);
  options.invalid = KSV_SKIP;
  options.profile = reinterpret_cast<const char*>(1);
  EXPECT_EQ(convert("UTF-8", "SJIS",
                    "a\xFF"
                    "b",
                    &options),
            text("ab"));
}

TEST(OneCall, converts_line_ends_and_marks_as_asked) {
  ksv_options options = KSV_OPTIONS_INIT;
  options.newlines = KSV_NEWLINES_CRLF;
  EXPECT_EQ(convert("UTF-8", "SJIS", "a\nb\rc\r\nd", &options), text("a\r\nb\r\nc\r\nd"));
  options = KSV_OPTIONS_INIT;
  options.mark = KSV_ADD_MARK;
  EXPECT_EQ(convert("SJIS", "UTF-8", "a", &options), text("\xEF\xBB\xBF"
                                                          "a"));
  EXPECT_EQ(convert("UTF-8", "UTF-16BE",
                    "\xEF\xBB\xBF"
                    "a",
                    &options),
            text("\xFE\xFF\0a"s));
  options.mark = KSV_KEEP_MARK;
  EXPECT_EQ(convert("UTF-8", "UTF-16BE", "a", &options), text("\0a"s));
  EXPECT_EQ(convert("UTF-16", "UTF-8", "\xFE\xFF\0a"s, &options), text("\xEF\xBB\xBF"
                                                                       "a"));
  EXPECT_EQ(convert("UTF-8", "SJIS",
                    "\xEF\xBB\xBF"
                    "a",
                    &options),
            text("a"));
}

TEST(OneCall, works_in_many_threads_with_one_plan) {
  const Plan shared = plan("SJIS", "UTF-8");
  std::vector<std::thread> threads;
  std::vector<int> wrong(8);
  for (int& count : wrong)
    threads.emplace_back([&shared, &count] {
      for (int i = 0; i < 500; ++i) {
        char buffer[16];
        size_t length = 0;
        const ksv_result result = ksv_plan_convert_into(shared.get(), "\x82\xA0\x83\x41", 4, buffer,
                                                        sizeof buffer, &length, nullptr);
        if (result != KSV_OK || std::string(buffer, length) != "\xE3\x81\x82\xE3\x82\xA2") ++count;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(8));
}

TEST(Library, tells_its_version_and_the_names_of_results) {
  EXPECT_STREQ(ksv_version(), KSV_VERSION);
  EXPECT_EQ(ksv_version_number() / 10000, static_cast<uint32_t>(std::stoi(KSV_VERSION)));
  EXPECT_STREQ(ksv_result_name(KSV_OK), "KSV_OK");
  EXPECT_STREQ(ksv_result_name(KSV_SYSTEM), "KSV_SYSTEM");
  EXPECT_STREQ(ksv_result_name(-1), "unknown");
  EXPECT_STREQ(ksv_result_name(KSV_DAMAGED), "KSV_DAMAGED");
  EXPECT_STREQ(ksv_result_name(12), "unknown");
  ksv_free(nullptr);
  ksv_plan_free(nullptr);
  ksv_converter_free(nullptr);
}

}  // namespace
}  // namespace ksv_kit_tests
