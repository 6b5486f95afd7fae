#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit.h"

namespace ksv_kit_tests {
namespace {

ksv_options unmappable(ksv_policy policy, const char* text = nullptr) {
  ksv_options options = KSV_OPTIONS_INIT;
  options.unmappable = policy;
  options.unmappable_text = text;
  return options;
}

ksv_options invalid(ksv_policy policy, const char* text = nullptr) {
  ksv_options options = KSV_OPTIONS_INIT;
  options.invalid = policy;
  options.invalid_text = text;
  return options;
}

std::string written(const char* from, const char* to, std::string_view input,
                    const ksv_options& options) {
  const Converted converted = convert(from, to, input, &options);
  EXPECT_EQ(converted.result, KSV_OK) << converted.message;
  return converted.text;
}

// U+00E9 and U+1F600 are not in Shift_JIS.
TEST(Unmappable, is_written_as_its_policy_says) {
  const std::string input = "a\xC3\xA9\xF0\x9F\x98\x80z";
  const auto by = [&](ksv_policy policy, const char* text = nullptr) {
    return written("UTF-8", "SJIS", input, unmappable(policy, text));
  };
  EXPECT_EQ(by(KSV_SKIP), "az");
  EXPECT_EQ(by(KSV_REPLACE), "a??z");
  EXPECT_EQ(by(KSV_REPLACE, "\xE3\x80\x93"), "a\x81\xAC\x81\xACz");
  EXPECT_EQ(by(KSV_REPLACE, ""), "az");
  EXPECT_EQ(by(KSV_HEX_REFERENCE), "a&#xE9;&#x1F600;z");
  EXPECT_EQ(by(KSV_DECIMAL_REFERENCE), "a&#233;&#128512;z");
  EXPECT_EQ(by(KSV_ESCAPE), "a\\u{E9}\\u{1F600}z");
  EXPECT_EQ(by(KSV_PERCENT), "a%C3%A9%F0%9F%98%80z");
}

TEST(Unmappable, has_a_replacement_that_suits_the_target) {
  // The geta mark for what is wide, a question mark where there is none.
  EXPECT_EQ(written("UTF-8", "SJIS", "\xF0\x9F\x98\x80", unmappable(KSV_BUILT_IN)), "\x81\xAC");
  EXPECT_EQ(written("UTF-8", "ISO-8859-1", "\xE3\x81\x82", unmappable(KSV_BUILT_IN)), "?");
}

// What stands in the place of a character has the target's own designations around it.
TEST(Unmappable, leaves_a_stateful_target_in_the_right_set) {
  EXPECT_EQ(written("UTF-8", "ISO-2022-JP", "\xE3\x81\x82\xC3\xA9\xE3\x81\x84",
                    unmappable(KSV_HEX_REFERENCE)),
            "\x1B$B$\"\x1B(B&#xE9;\x1B$B$$\x1B(B");
}

TEST(Unmappable, is_written_in_the_units_of_the_target) {
  EXPECT_EQ(written("UTF-8", "UCS-2BE", "\xF0\x9F\x98\x80", unmappable(KSV_REPLACE, "x")),
            std::string("\0x", 2));
}

TEST(Invalid, is_written_as_its_policy_says) {
  const std::string input = "a\xE3\x81z\xFF";
  const auto by = [&](ksv_policy policy, const char* text = nullptr) {
    return written("UTF-8", "UTF-8", input, invalid(policy, text));
  };
  EXPECT_EQ(by(KSV_SKIP), "az");
  EXPECT_EQ(by(KSV_REPLACE), "a\xEF\xBF\xBDz\xEF\xBF\xBD");
  EXPECT_EQ(by(KSV_REPLACE, "!"), "a!z!");
  EXPECT_EQ(by(KSV_HEX_REFERENCE), "a&#xE3;&#x81;z&#xFF;");
  EXPECT_EQ(by(KSV_DECIMAL_REFERENCE), "a&#227;&#129;z&#255;");
  EXPECT_EQ(by(KSV_ESCAPE), "a\\xE3\\x81z\\xFF");
  EXPECT_EQ(by(KSV_PERCENT), "a%E3%81z%FF");
}

// A lead byte with an ASCII character behind it that is no trail: the character stays.
TEST(Invalid, takes_no_sound_character_with_it) {
  EXPECT_EQ(written("SJIS", "UTF-8", "\x82 a", invalid(KSV_ESCAPE)), "\\x82 a");
  EXPECT_EQ(written("EUC-JP", "UTF-8", "\xA4z\xA4\xA2", invalid(KSV_ESCAPE)), "\\xA4z\xE3\x81\x82");
  EXPECT_EQ(written("UTF-16BE", "UTF-8", std::string("\xD8\x00\0a", 4), invalid(KSV_ESCAPE)),
            "\\xD8\\x00"
            "a");
  EXPECT_EQ(written("ISO-2022-JP", "UTF-8", "\x1B$B$\"\xFF$$\x1B(Bz", invalid(KSV_ESCAPE)),
            "\xE3\x81\x82\\xFF\xE3\x81\x84z");
}

TEST(Invalid, cannot_be_replaced_by_what_the_target_lacks) {
  const ksv_options options = invalid(KSV_REPLACE, "\xE3\x81\x82");
  EXPECT_EQ(convert("UTF-8", "ISO-8859-1", "a", &options).result, KSV_BAD_ARGUMENT);
  const ksv_options bytes = invalid(KSV_LOOK_ALIKE);
  EXPECT_EQ(convert("UTF-8", "ISO-8859-1", "a", &bytes).result, KSV_BAD_ARGUMENT);
}

struct Asked {
  std::vector<std::string> problems;
  std::string answer;
};

int32_t answer(void* context, const ksv_problem* problem, const char** text, size_t* length) {
  Asked& asked = *static_cast<Asked*>(context);
  asked.problems.push_back(std::string(ksv_result_name(problem->result)) + " at " +
                           std::to_string(problem->offset) + ", " +
                           std::to_string(problem->byte_count) + " bytes");
  if (problem->code_point == 0xE9) return KSV_SKIP;
  if (problem->code_point == 0xEA) return KSV_FAIL;
  *text = asked.answer.data();
  *length = asked.answer.size();
  return KSV_REPLACE;
}

TEST(Asking, gives_the_function_each_problem_and_does_as_it_says) {
  Asked asked = {{}, "<?>"};
  ksv_options options = KSV_OPTIONS_INIT;
  options.invalid = options.unmappable = KSV_ASK;
  options.ask = answer;
  options.ask_context = &asked;
  EXPECT_EQ(written("UTF-8", "SJIS", "a\xFF\xC3\xA9\xF0\x9F\x98\x80z", options), "a<?><?>z");
  EXPECT_EQ(asked.problems,
            (std::vector<std::string>{"KSV_INVALID at 1, 1 bytes", "KSV_UNMAPPABLE at 2, 2 bytes",
                                      "KSV_UNMAPPABLE at 4, 4 bytes"}));
  const Converted failed = convert("UTF-8", "SJIS", "ab\xC3\xAA", &options);
  EXPECT_EQ(failed.result, KSV_UNMAPPABLE);
  EXPECT_EQ(failed.offset, 2u);
}

TEST(Counts, tell_what_was_left_out_and_replaced) {
  ksv_options options = KSV_OPTIONS_INIT;
  options.invalid = KSV_SKIP;
  options.unmappable = KSV_REPLACE;
  const Plan made = plan("UTF-8", "SJIS", &options);
  const Converter stream = converter(made);
  EXPECT_EQ(feed(stream.get(), "a\xFF\xFE\xC3\xA9z", 3, 100), text("a?z"));
  ksv_counts counts;
  ksv_converter_counts(stream.get(), &counts);
  EXPECT_EQ(counts.invalid_bytes, 2u);
  EXPECT_EQ(counts.unmappable, 1u);
  ksv_converter_reset(stream.get());
  ksv_converter_counts(stream.get(), &counts);
  EXPECT_EQ(counts.invalid_bytes, 0u);
}

}  // namespace
}  // namespace ksv_kit_tests
