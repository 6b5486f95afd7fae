// Reading the text of a table: numbers, what separates them, and the ends of the
// buffer and of the file.
#include "cconv/rules/table_reader.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

using Numbers = std::vector<uint32_t>;

class TableText : public CharsetDirectoryTest {
 protected:
  Numbers readBytes(const std::string& bytes, TextEncodingKind kind, bool bigEndian) {
    directory_.write("t.txt", bytes);
    auto reader = TableReader::open(directory_.path("t.txt"), kind, bigEndian);
    Numbers numbers;
    if (reader == nullptr) {
      ADD_FAILURE() << "not opened";
      return numbers;
    }
    while (const auto number = reader->nextNumber()) numbers.push_back(*number);
    return numbers;
  }
  Numbers readBytes(const std::string& bytes, const TextForm& form) {
    return readBytes(bytes, form.kind, form.bigEndian);
  }
  // Two characters behind the text let its last number count.
  Numbers read(std::string_view text, const TextForm& form = kUcs2Little) {
    return readBytes(encode(form, std::string(text) + "\r\n"), form);
  }
};

TEST_F(TableText, holds_numbers_in_every_encoding_and_byte_order) {
  for (const TextForm& form : kAllForms) {
    EXPECT_EQ(read("8140 3000\r\nffFF aBc", form), (Numbers{0x8140, 0x3000, 0xFFFF, 0xABC}))
        << form.label;
  }
}

TEST_F(TableText, separates_numbers_by_any_other_character) {
  EXPECT_EQ(read("1 2\t3\r\n4,5;6g7-8.9x0"), (Numbers{1, 2, 3, 4, 5, 6, 7, 8, 9, 0}));
  EXPECT_EQ(read("0x10"), (Numbers{0, 0x10})) << "there is no prefix";
  EXPECT_EQ(read("U+3042"), Numbers{0x3042});
  EXPECT_EQ(readBytes(encode(kUcs2Little,
                             U"1\u3042"
                             U"2\uFF13"
                             U"4\r\n"),
                      kUcs2Little),
            (Numbers{1, 2, 4}))
      << "a full-width digit is none";
  EXPECT_EQ(read(""), Numbers{});
  EXPECT_EQ(read("xyz"), Numbers{});
}

TEST_F(TableText, skips_what_stands_between_angle_brackets) {
  EXPECT_EQ(read("<1 2>3<!-- 4 -->5<a<6>7>8"), (Numbers{3, 5, 7, 8}));
  EXPECT_EQ(read("1<2\r\n3>4"), (Numbers{1, 4})) << "over line ends";
  EXPECT_EQ(read("<>1"), Numbers{1});
  EXPECT_EQ(read("12<a>34"), (Numbers{0x12, 0x34})) << "it ends a number too";
  EXPECT_EQ(read("1>2"), (Numbers{1, 2}));
  EXPECT_EQ(read("<?xml 1?><1><2>3"), Numbers{3});
}

TEST_F(TableText, reads_nothing_behind_an_unclosed_bracket) {
  EXPECT_EQ(read("1 <2 3 4"), Numbers{1});
  EXPECT_EQ(read("<"), Numbers{});
}

TEST_F(TableText, keeps_the_last_eight_digits_of_a_number) {
  EXPECT_EQ(read("FFFFFFFF 1FFFFFFFF 123456789ABCDEF0"),
            (Numbers{0xFFFFFFFF, 0xFFFFFFFF, 0x9ABCDEF0}));
}

TEST_F(TableText, continues_a_run_of_more_than_64_digits_as_a_new_number) {
  const std::string run = std::string(56, '1') + "ABCDEF01";  // 64 digits
  EXPECT_EQ(read(run), Numbers{0xABCDEF01});
  EXPECT_EQ(read(run + "2"), (Numbers{0xABCDEF01, 2}));
  EXPECT_EQ(read(run + "23"), (Numbers{0xABCDEF01, 0x23}));
  EXPECT_EQ(read(run + run + "4"), (Numbers{0xABCDEF01, 0xABCDEF01, 4}));
  EXPECT_EQ(read(run.substr(1)), Numbers{0xABCDEF01});
}

TEST_F(TableText, needs_two_characters_behind_the_last_number) {
  for (const TextForm& form : kAllForms) {
    SCOPED_TRACE(form.label);
    EXPECT_EQ(readBytes(encode(form, "1 23"), form), Numbers{1});
    EXPECT_EQ(readBytes(encode(form, "1 23\n"), form), Numbers{1}) << "the LF is never delivered";
    EXPECT_EQ(readBytes(encode(form, "1 23\r\n"), form), (Numbers{1, 0x23}));
  }
}

TEST_F(TableText, delivers_the_last_whole_unit_before_bytes_that_make_none) {
  // The rule looks at bytes: with one more behind it the LF is not the last.
  EXPECT_EQ(readBytes(encode(kUcs2Little, "23\n") + "x", kUcs2Little), Numbers{0x23});
  EXPECT_EQ(readBytes(encode(kUcs4Big, "23\n") + "x", kUcs4Big), Numbers{0x23});
}

TEST_F(TableText, of_an_empty_file_has_no_numbers) {
  for (const TextForm& form : kAllForms) {
    for (const char* bytes : {"", "1", "12", "123"}) {
      EXPECT_EQ(readBytes(bytes, form), Numbers{}) << form.label;
    }
  }
}

TEST_F(TableText, takes_a_byte_order_mark_for_a_separator) {
  EXPECT_EQ(readBytes("\xFF\xFE" + encode(kUtf16Little, "1 2\r\n"), kUtf16Little), (Numbers{1, 2}));
}

TEST_F(TableText, of_another_kind_has_no_numbers) {
  for (const TextEncodingKind kind :
       {TextEncodingKind::kUnknown, TextEncodingKind::kUtf8, TextEncodingKind::kShiftJis}) {
    EXPECT_EQ(readBytes("1 2 3 4\r\n\r\n", kind, false), Numbers{});
    EXPECT_EQ(readBytes(encode(kUcs2Little, "1 2 3 4\r\n"), kind, false), Numbers{});
  }
}

TEST_F(TableText, in_the_wrong_byte_order_has_no_numbers) {
  EXPECT_EQ(readBytes(encode(kUcs2Big, "11 22\r\n"), kUcs2Little), Numbers{});
  EXPECT_EQ(readBytes(encode(kUcs4Big, "11 22\r\n"), kUcs4Little), Numbers{});
}

TEST_F(TableText, takes_surrogates_of_utf_16_with_the_unit_behind_them) {
  // D83D takes the 2 with it; what ends a number is read again from its last unit.
  EXPECT_EQ(readBytes(encode(kUtf16Big,
                             U"1 \xD83D"
                             U"2 3\r\n"),
                      kUtf16Big),
            (Numbers{1, 3}));
  EXPECT_EQ(readBytes(encode(kUtf16Big,
                             U"1\xD83D"
                             U"2 3\r\n"),
                      kUtf16Big),
            (Numbers{1, 2, 3}));
  EXPECT_EQ(readBytes(encode(kUtf16Little,
                             U"1\xD83D\xDE00"
                             U"2 3\r\n"),
                      kUtf16Little),
            (Numbers{1, 3}))
      << "DE00, read again, takes the 2 with it";
  EXPECT_EQ(readBytes(encode(kUtf16Little,
                             U"1 \xD83D\xDE00"
                             U"2 3\r\n"),
                      kUtf16Little),
            (Numbers{1, 2, 3}));
}

TEST_F(TableText, of_ucs_2_knows_no_surrogates) {
  EXPECT_EQ(readBytes(encode(kUcs2Big,
                             U"1 \xD83D"
                             U"2 3\r\n"),
                      kUcs2Big),
            (Numbers{1, 2, 3}));
}

TEST_F(TableText, takes_surrogates_in_roles_of_their_own) {
  // (D7C1 - D7F7) * 1024 + D831 is '1', with D83C it is '<'.
  EXPECT_EQ(readBytes(encode(kUtf16Big, U"\xD831\xD7C1 2\r\n"), kUtf16Big), (Numbers{1, 2}));
  EXPECT_EQ(readBytes(encode(kUtf16Big, U"\xD83C\xD7C1 2> 3\r\n"), kUtf16Big), Numbers{3});
  // With a high surrogate behind it the first unit is the one that is multiplied.
  EXPECT_EQ(readBytes(encode(kUtf16Big, U"\xD831\xD801 2\r\n"), kUtf16Big), Numbers{2});
}

TEST_F(TableText, ends_at_a_surrogate_without_a_second_unit) {
  EXPECT_EQ(readBytes(encode(kUtf16Big, U"1 2 \xD83D\n"), kUtf16Big), (Numbers{1, 2}));
  EXPECT_EQ(readBytes(encode(kUtf16Big, U"1 2\xD83D\n"), kUtf16Big), Numbers{1})
      << "the run is cut off by the end";
}

TEST_F(TableText, of_a_missing_file_cannot_be_opened) {
  EXPECT_EQ(TableReader::open(directory_.path("missing.txt"), TextEncodingKind::kUcs2, false),
            nullptr);
  EXPECT_EQ(TableReader::open(directory_.path(""), TextEncodingKind::kUcs2, false), nullptr);
}

// The numbers of a text, read from the whole of it at once.
class ReferenceReader {
 public:
  ReferenceReader(const std::string& bytes, const TextForm& form) : bytes_(bytes), form_(form) {}

  Numbers all() {
    Numbers numbers;
    while (const auto number = next()) numbers.push_back(*number);
    return numbers;
  }

 private:
  std::optional<uint32_t> unit() {
    if (position_ + form_.width() >= bytes_.size()) return std::nullopt;
    uint32_t value = 0;
    for (uint32_t i = 0; i < form_.width(); ++i) {
      const uint32_t byte = static_cast<uint8_t>(bytes_[position_ + i]);
      value |= byte << 8 * (form_.bigEndian ? form_.width() - 1 - i : i);
    }
    position_ += form_.width();
    return value;
  }

  std::optional<uint32_t> character() {
    const auto first = unit();
    if (!first || form_.kind != TextEncodingKind::kUtf16) return first;
    if (*first < 0xD800 || *first > 0xDFFF) return first;
    const auto second = unit();
    if (!second) return std::nullopt;
    if (*second >= 0xD800 && *second <= 0xDBFF) return (*first - 0xD7F7) * 1024 + *second;
    return (*second - 0xD7F7) * 1024 + *first;
  }

  static bool isDigit(uint32_t c) {
    return c < 0x80 &&
           std::string("0123456789ABCDEFabcdef").find(static_cast<char>(c)) != std::string::npos;
  }

  std::optional<uint32_t> next() {
    auto c = character();
    for (bool inside = false; c && (inside || !isDigit(*c)); c = character()) {
      if (*c == '<') inside = true;
      if (*c == '>') inside = false;
    }
    std::string digits;
    while (c && isDigit(*c) && digits.size() < 64) {
      digits.push_back(static_cast<char>(*c));
      c = character();
    }
    if (!c) return std::nullopt;
    position_ -= form_.width();
    return static_cast<uint32_t>(
        std::stoull(digits.substr(digits.size() > 8 ? digits.size() - 8 : 0), nullptr, 16));
  }

  const std::string& bytes_;
  const TextForm& form_;
  size_t position_ = 0;
};

std::u32string randomText(std::mt19937& random, size_t units, bool surrogates) {
  const std::u32string_view common = U"0123456789abcdefABCDEF0123456789 \r\n\t,g";
  const std::u32string_view rare =
      surrogates ? std::u32string_view(U"<>\xD831\xD7C1\xDE00\x3042") : U"<>\x3042\xFF10";
  std::u32string text;
  while (text.size() < units) {
    if (random() % 100 == 0) text.append(60 + random() % 80, U'7');
    const std::u32string_view from = random() % 40 == 0 ? rare : common;
    text.push_back(from[random() % from.size()]);
  }
  text.resize(units);
  return text;
}

TEST_F(TableText, of_any_length_is_read_as_if_it_were_in_memory_at_once) {
  std::mt19937 random(testSeed());
  for (const TextForm& form : kAllForms) {
    for (const size_t border : {8192u, 16384u, 24576u, 32768u, 40960u}) {
      for (int offset = -10; offset <= 10; ++offset) {
        const size_t size = border + static_cast<size_t>(offset);
        std::string bytes = encode(form, randomText(random, size / form.width() + 1,
                                                    form.kind == TextEncodingKind::kUtf16));
        bytes.resize(size);
        ASSERT_EQ(readBytes(bytes, form), ReferenceReader(bytes, form).all())
            << form.label << " of " << size << " bytes, KSV_TEST_SEED=" << testSeed();
      }
    }
  }
}

TEST_F(TableText, carries_a_number_over_the_border_of_the_buffer) {
  // The number lies at every place around the one where the buffer is refilled.
  for (const TextForm& form : kAllForms) {
    for (const size_t border : {8192u, 16384u, 24576u}) {
      for (size_t before = border / form.width() - 12; before < border / form.width() + 3;
           ++before) {
        const std::string text = std::string(before, ' ') + "12345678 9";
        ASSERT_EQ(read(text, form), (Numbers{0x12345678, 9})) << form.label << " at " << before;
      }
    }
  }
}

}  // namespace
}  // namespace ksv::test
