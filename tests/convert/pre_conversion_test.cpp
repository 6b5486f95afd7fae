#include "cconv/convert/pre_conversion.h"

#include <cstdio>
#include <limits>
#include <vector>

#include "common/byte_order.h"
#include "tests/convert/converter.h"

namespace ksv_test {
namespace {

struct PreConversionResult {
  Bytes text;
  bool truncated;

  bool operator==(const PreConversionResult&) const = default;
};

// UTF-7 as the characters' values, each in one byte or as '?'.
PreConversionResult utf7(const Bytes& input, int32_t capacity = 400) {
  std::vector<uint8_t> output(static_cast<size_t>(capacity));
  const auto converted =
      ksv::preConvertUtf7(reinterpret_cast<const uint8_t*>(input.data()),
                          static_cast<int32_t>(input.size()), output.data(), capacity);
  Bytes text;
  for (int32_t i = 0; i < converted.length; i += 4) {
    const uint32_t value = ksv::readUnit(&output[static_cast<size_t>(i)], 4, false);
    char shown[12];
    if (value >= 0x20 && value < 0x7F) {
      text += static_cast<char>(value);
    } else {
      std::snprintf(shown, sizeof shown, "<%X>", value);
      text += shown;
    }
  }
  return {text, converted.truncated};
}

// HZ as the bytes of the counted length.
PreConversionResult hz(const Bytes& input, int32_t capacity = 100) {
  std::vector<uint8_t> output(static_cast<size_t>(capacity));
  const auto converted =
      ksv::preConvertHz(reinterpret_cast<const uint8_t*>(input.data()),
                        static_cast<int32_t>(input.size()), output.data(), capacity);
  return {Bytes(output.begin(), output.begin() + converted.length), converted.truncated};
}

TEST(Utf7, direct_characters_stand_for_themselves) {
  EXPECT_EQ(utf7("Hi, {Mom}!").text, "Hi, {Mom}!");
  EXPECT_EQ(utf7("\t\n\r ").text, "<9><A><D> ");
}

TEST(Utf7, what_is_not_direct_ends_the_pass) {
  EXPECT_EQ(utf7("ab\\cd").text, "ab");
  EXPECT_EQ(utf7("ab~cd").text, "ab");
  EXPECT_EQ(utf7("ab\x80"
                 "cd")
                .text,
            "ab");
  EXPECT_EQ(utf7(Bytes("ab\0cd", 5)).text, "ab");
  EXPECT_EQ(utf7("ab\x01"
                 "cd")
                .text,
            "ab");
}

TEST(Utf7, a_plus_is_written_with_a_hyphen) { EXPECT_EQ(utf7("1 +- 2").text, "1 + 2"); }

TEST(Utf7, runs_give_utf16_units) {
  EXPECT_EQ(utf7("A+ImIDkQ.").text, "A<2262><391>.");
  EXPECT_EQ(utf7("+ZeVnLIqe-").text, "<65E5><672C><8A9E>");
  EXPECT_EQ(utf7("+ZeU-a").text, "<65E5>a");
  EXPECT_EQ(utf7("+ZeU").text, "<65E5>");
}

TEST(Utf7, a_pair_gives_one_value_and_a_lone_high_surrogate_none) {
  EXPECT_EQ(utf7("+2D3eAA-x").text, "<1F600>x");
  EXPECT_EQ(utf7("a+2D0-x").text, "a");         // D83D, then the end of the run
  EXPECT_EQ(utf7("a+2D0AQQ-x").text, "a");      // D83D 0041
  EXPECT_EQ(utf7("a+3gA-x").text, "a<DE00>x");  // a lone low one passes
}

TEST(Utf7, left_over_bits_must_be_few_and_zero) {
  EXPECT_EQ(utf7("+AEE-x").text, "Ax");      // two zero bits
  EXPECT_EQ(utf7("+AEF-x").text, "A");       // two bits, one of them set
  EXPECT_EQ(utf7("+AEEA-x").text, "A");      // eight zero bits
  EXPECT_EQ(utf7("+AEEAQg-x").text, "ABx");  // four zero bits
  EXPECT_EQ(utf7("+A-x").text, "");          // six zero bits
}

TEST(Utf7, an_empty_run_stands_for_nothing) { EXPECT_EQ(utf7("a+ b").text, "a b"); }

TEST(Utf7, what_does_not_fit_is_cut_at_a_character) {
  EXPECT_EQ(utf7("abc", 12), (PreConversionResult{"abc", false}));
  EXPECT_EQ(utf7("abc", 11), (PreConversionResult{"ab", true}));
  EXPECT_EQ(utf7("abc", 3), (PreConversionResult{"", true}));
}

TEST(Hz, bytes_outside_gb_mode_are_copied) { EXPECT_EQ(hz("abc").text, "abc"); }

TEST(Hz, gb_mode_sets_the_high_bit) { EXPECT_EQ(hex(hz("~{VPND~}x").text), "D6 D0 CE C4 78"); }

TEST(Hz, the_second_of_two_tildes_is_read_again) {
  EXPECT_EQ(hex(hz("~~{VP~}").text), "7E D6 D0");
  EXPECT_EQ(hz("a~~").text, "a~");
}

TEST(Hz, a_continued_line_leaves_a_byte_behind_and_counts_it_off) {
  // a, a zero byte that is not counted, b, c: the last byte falls off.
  EXPECT_EQ(hz("a~\nbc").text, Bytes("a\0b", 3));
}

TEST(Hz, an_unknown_escape_moves_the_cursor_and_keeps_the_byte) {
  EXPECT_EQ(hz("a~xb").text, Bytes("a\0x", 3));
}

TEST(Hz, a_tilde_in_gb_mode_is_written_with_the_high_bit) {
  EXPECT_EQ(hex(hz("~{~A~}").text), "FE C1");
}

TEST(Hz, a_zero_byte_ends_the_pass) { EXPECT_EQ(hz(Bytes("ab\0cd", 5)).text, "ab"); }

TEST(Hz, a_tilde_at_the_end_is_an_escape_of_nothing) {
  EXPECT_EQ(hz("ab~").text, "ab");
  EXPECT_EQ(hex(hz("~{VP~").text), "D6 D0 FE");
}

TEST(Hz, the_cursor_judges_what_fits) {
  EXPECT_EQ(hz("abc", 3), (PreConversionResult{"abc", false}));
  EXPECT_EQ(hz("abc", 2), (PreConversionResult{"ab", true}));
  EXPECT_EQ(hz("a~\nb", 2), (PreConversionResult{"a", true}));
}

using PreConversion = ConversionTest;

TEST_F(PreConversion, utf7_converts_through_ucs4) {
  EXPECT_EQ(convertWhole({"UTF-7", "Shift_JIS"}, "A+ZeVnLIqe-+AFw-"),
            (Result{0, 20, bytes("41 93 FA 96 7B 8C EA 5C")}));
}

TEST_F(PreConversion, the_callers_input_comes_back) {
  Converter converter({"UTF-7", "UTF-8"});
  converter.give("abc", 100);
  const uint8_t* input = converter.record.input;
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.input, input);
  EXPECT_EQ(converter.record.inputLength, 3);
  EXPECT_EQ(converter.record.inputPosition, 12);
}

TEST_F(PreConversion, text_that_the_buffer_cuts_ends_with_full) {
  Converter converter({"UTF-7", "UTF-8"});
  converter.give("abcdef", 12);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.written(), "abc");
  EXPECT_EQ(converter.record.status, 22u);
  converter.drain(100);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.written(), "abcdef");
}

TEST_F(PreConversion, without_room_for_one_character_the_call_ends_with_full) {
  for (const char* target : {"UTF-8", "UTF-16", "Shift_JIS"}) {
    for (int32_t capacity = 0; capacity < 4; ++capacity) {
      Converter converter({"UTF-7", target});
      converter.give("abcdefgh", capacity);
      EXPECT_EQ(converter.convert(), 22u) << target << ", " << capacity;
      EXPECT_EQ(converter.record.inputPosition, 0);
      EXPECT_EQ(converter.record.outputPosition, 0);
    }
  }
}

TEST_F(PreConversion, a_negative_length_is_no_input) {
  for (const char* source : {"UTF-7", "UTF-8", "Shift_JIS"}) {
    Converter converter({source, "UTF-8"});
    converter.give("abc", 100);
    for (const int32_t length : {-1, -1000, std::numeric_limits<int32_t>::min()}) {
      converter.record.inputPosition = 2;
      converter.showInput(length);
      EXPECT_EQ(converter.convert(), 0u);
      EXPECT_EQ(converter.record.outputPosition, 0);
    }
  }
}

TEST_F(PreConversion, a_pass_that_decodes_nothing_leaves_the_bytes) {
  Converter converter({"UTF-7", "UTF-8"});
  converter.give("~~~", 100);
  EXPECT_EQ(converter.convert(), 12u);
  EXPECT_EQ(converter.record.inputPosition, 0);
}

}  // namespace
}  // namespace ksv_test
