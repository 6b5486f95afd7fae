// Long texts are converted first, and what nobody has looked at meanwhile is looked at afterwards:
// the answers have to be those of a stream, which looks at everything before.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit.h"

namespace ksv_kit_tests {
namespace {

constexpr size_t kRoom = 65536;

struct LongText {
  const char* source;
  std::string word;
  std::vector<std::string> strangers;
};

std::vector<LongText> longTexts() {
  using namespace std::string_literals;
  return {
      {"UTF-8",
       "\xE3\x81\x82\xE6\xBC\xA2",
       {"\xC0\xAF", "\xE0\x81\x82", "\xED\xA0\x80", "\x81", "\xE3\x81", "\xF0\x83\x81\x82",
        "\xED\xA0\xBD\xED\xB8\x80", "\xF0\x9F\x98\x80", "\xC3\xA9", "\xFE"}},
      {"UTF-8", "plain text, ", {"\xC0\xAF", "\x80", "\xE3", "\xC1\x81"}},
      {"UTF-8", "\xC3\xA9", {"\xC1\xBF", "\xC3", "\xA9"}},
      {"UTF-16LE", "\x42\x30\x22\x6F"s, {"\x3D\xD8"s, "\x00\xDE"s, "\x3D\xD8\x00\xDE"s}},
      {"UTF-16BE", "\x30\x42"s, {"\xD8\x3D"s, "\xDE\x00"s, "\xDE\x00\xD8\x3D"s}},
      {"ISO-2022-JP",
       "ab\x1B$B$\"4A\x1B(B",
       {"\x1B", "\x80", "\x1B$A", "\x1B$B$", "\x1B$B\x20\x41", "\x1B(I1\x1B(B", "\x1B$B"}},
  };
}

// The same of a stream, without what it wrote before it failed.
Converted byStream(const Plan& made, const std::string& input) {
  const Converter fed = converter(made);
  Converted answer = feed(fed.get(), input, input.size(), kRoom);
  return answer.result == KSV_OK ? answer : withoutText(answer);
}

Converted inOneCall(const Plan& made, const std::string& input) {
  std::string buffer(kRoom, '\0');
  Converted answer;
  size_t length = 0;
  ksv_error error{};
  answer.result = ksv_plan_convert_into(made.get(), input.data(), input.size(), buffer.data(),
                                        buffer.size(), &length, &error);
  if (answer.result == KSV_OK) {
    answer.text = buffer.substr(0, length);
  } else {
    answer.offset = error.offset;
    answer.line = error.line;
    answer.column = error.column;
    answer.message = error.message;
  }
  return answer;
}

TEST(SoundText, what_is_ill_formed_is_found_wherever_it_stands_in_a_long_text) {
  size_t failed = 0;
  for (const LongText& text : longTexts()) {
    for (const char* target : {"UTF-16LE", "UTF-8", "Shift_JIS", "ISO-2022-JP", "EUC-JP"}) {
      const Plan made = plan(text.source, target);
      for (const std::string& stranger : text.strangers) {
        for (size_t words = 0; words < 2000; words += 1 + words / 3) {
          std::string input;
          for (size_t i = 0; i < words; ++i) input += text.word;
          input += stranger;
          while (input.size() < 5000) input += text.word;
          const Converted wanted = byStream(made, input);
          failed += wanted.result != KSV_OK ? 1 : 0;
          EXPECT_EQ(inOneCall(made, input), wanted)
              << text.source << " to " << target << ", behind " << words << " words";
        }
      }
    }
  }
  EXPECT_GT(failed, 1000u);
}

TEST(SoundText, a_long_text_without_faults_is_converted_whatever_its_buffer) {
  for (const LongText& text : longTexts()) {
    const Plan made = plan(text.source, "UTF-16LE");
    std::string input;
    while (input.size() < 5000) input += text.word;
    const Converted wanted = byStream(made, input);
    ASSERT_EQ(wanted.result, KSV_OK);
    EXPECT_EQ(inOneCall(made, input), wanted);
    std::string buffer(wanted.text.size(), '\0');
    for (const size_t capacity : {size_t{0}, size_t{1}, size_t{2048}, buffer.size() - 1}) {
      size_t length = 0;
      EXPECT_EQ(ksv_plan_convert_into(made.get(), input.data(), input.size(), buffer.data(),
                                      capacity, &length, nullptr),
                KSV_NO_ROOM);
      EXPECT_EQ(length, wanted.text.size());
    }
  }
}

}  // namespace
}  // namespace ksv_kit_tests
