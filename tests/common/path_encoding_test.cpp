#include "common/path_encoding.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "ksv_file.h"
#include "tests/common/support.h"

namespace {

constexpr int kRefused = 3000;

int toUtf16(const std::string& source, std::u16string& dest, int32_t capacity = 2000) {
  std::vector<uint16_t> units(2000, 0xEEEE);
  const int result = KSV_FilePathTransUTF8ToUTF16(units.data(), source.c_str(), capacity);
  dest.assign(units.begin(), std::find(units.begin(), units.end(), 0));
  return result;
}

int toUtf8(const std::u16string& source, std::string& dest, int32_t capacity = 4000) {
  std::vector<char> bytes(4000, 'x');
  const int result = KSV_FilePathTransUTF16ToUTF8(
      bytes.data(), reinterpret_cast<const uint16_t*>(source.c_str()), capacity);
  dest = bytes.data();
  return result;
}

std::string repeated(const char* text, int count) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

}  // namespace

TEST(PathEncoding, converts_every_scalar_value_both_ways) {
  for (char32_t c = 1; c < 0x110000; c = c == 0xD7FF ? 0xE000 : c + 1) {
    uint16_t units[3] = {static_cast<uint16_t>(c), 0, 0};
    if (c >= 0x10000) {
      units[0] = static_cast<uint16_t>(0xD7C0 + (c >> 10));
      units[1] = static_cast<uint16_t>(0xDC00 + (c & 0x3FF));
    }
    char bytes[8];
    ASSERT_EQ(KSV_FilePathTransUTF16ToUTF8(bytes, units, sizeof bytes), 0);
    ASSERT_EQ(std::strlen(bytes), c < 0x80 ? 1u : c < 0x800 ? 2u : c < 0x10000 ? 3u : 4u);
    uint16_t back[3] = {};
    ASSERT_EQ(KSV_FilePathTransUTF8ToUTF16(back, bytes, 3), 0);
    ASSERT_EQ(std::memcmp(back, units, sizeof units), 0) << std::hex << static_cast<uint32_t>(c);
  }
}

TEST(PathEncoding, gives_the_bytes_of_japanese_names) {
  std::string bytes;
  EXPECT_EQ(toUtf8(u"日本語\U00020BB7", bytes), 0);
  EXPECT_EQ(bytes, "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xF0\xA0\xAE\xB7");
  std::u16string units;
  EXPECT_EQ(toUtf16(bytes, units), 0);
  EXPECT_EQ(units, u"日本語\U00020BB7");
}

TEST(PathEncoding, refuses_ill_formed_utf8_and_leaves_the_empty_string) {
  for (const char* bytes : {"\x80",
                            "\xBF",
                            "a\xC3",
                            "\xC0\x80",
                            "\xC1\xBF",
                            "\xE0\x80\x80",
                            "\xE0\x9F\xBF",
                            "\xE3\x81",
                            "\xE3\x81"
                            "A",
                            "\xED\xA0\x80",
                            "\xED\xBF\xBF",
                            "\xF0\x80\x80\x80",
                            "\xF0\x8F\xBF\xBF",
                            "\xF4\x90\x80\x80",
                            "\xF5\x80\x80\x80",
                            "\xF8\x88\x80\x80\x80",
                            "\xFE",
                            "\xFF",
                            "\x82\xA0",
                            "ok\xF0\x9F\x98"}) {
    std::u16string units;
    EXPECT_EQ(toUtf16(bytes, units), kRefused) << testing::PrintToString(bytes);
    EXPECT_EQ(units, u"");
    char dest[8] = "before";
    EXPECT_EQ(KSV_FilePathTransUTF8ToAnsi(dest, bytes, sizeof dest), kRefused);
    EXPECT_STREQ(dest, "");
  }
}

TEST(PathEncoding, refuses_lone_surrogates) {
  for (const std::u16string& units :
       {std::u16string{0xD800}, std::u16string{0xDC00}, std::u16string{'a', 0xDBFF, 'b'},
        std::u16string{0xD800, 0xD800, 0xDC00}, std::u16string{0xDFFF, 0xDBFF}}) {
    std::string bytes;
    EXPECT_EQ(toUtf8(units, bytes), kRefused);
    EXPECT_EQ(bytes, "");
  }
}

TEST(PathEncoding, counts_the_terminator_in_the_capacity) {
  std::u16string units;
  EXPECT_EQ(toUtf16("ab", units, 3), 0);
  EXPECT_EQ(units, u"ab");
  EXPECT_EQ(toUtf16("ab", units, 2), kRefused);
  EXPECT_EQ(units, u"");
  EXPECT_EQ(toUtf16("\xF0\xA0\xAE\xB7", units, 3), 0);
  EXPECT_EQ(toUtf16("\xF0\xA0\xAE\xB7", units, 2), kRefused);
  std::string bytes;
  EXPECT_EQ(toUtf8(u"あ", bytes, 4), 0);
  EXPECT_EQ(toUtf8(u"あ", bytes, 3), kRefused);
  EXPECT_EQ(bytes, "");
}

TEST(PathEncoding, writes_nothing_behind_the_capacity) {
  constexpr size_t kRoom = 32;
  for (int32_t capacity = 1; capacity <= 12; ++capacity) {
    for (const char* source : {"abcdefghijkl", "あいう", "\xF0\xA0\xAE\xB7\xF0\xA0\xAE\xB7"}) {
      uint16_t sourceUnits[kRoom];
      ASSERT_EQ(KSV_FilePathTransUTF8ToUTF16(sourceUnits, source, kRoom), 0);
      const size_t behind = static_cast<size_t>(capacity);
      std::vector<uint16_t> units(kRoom, 0xEEEE);
      KSV_FilePathTransUTF8ToUTF16(units.data(), source, capacity);
      EXPECT_EQ(std::count(units.begin() + capacity, units.end(), 0xEEEE),
                static_cast<ptrdiff_t>(kRoom - behind));
      std::string bytes(kRoom, 'x');
      KSV_FilePathTransUTF16ToUTF8(bytes.data(), sourceUnits, capacity);
      EXPECT_EQ(bytes.substr(behind), std::string(kRoom - behind, 'x'));
      bytes.assign(kRoom, 'x');
      KSV_FilePathTransUTF8ToAnsi(bytes.data(), "abcdefghijkl", capacity);
      EXPECT_EQ(bytes.substr(behind), std::string(kRoom - behind, 'x'));
      bytes.assign(kRoom, 'x');
      KSV_FilePathTransAnsiToUTF8(bytes.data(), "abcdefghijkl", capacity);
      EXPECT_EQ(bytes.substr(behind), std::string(kRoom - behind, 'x'));
    }
  }
}

TEST(PathEncoding, has_room_for_the_empty_string_in_one_unit) {
  char byte = 'x';
  uint16_t unit = 'x';
  const uint16_t none[1] = {0};
  EXPECT_EQ(KSV_FilePathTransAnsiToUTF8(&byte, "", 1), 0);
  EXPECT_EQ(byte, '\0');
  byte = 'x';
  EXPECT_EQ(KSV_FilePathTransUTF16ToUTF8(&byte, none, 1), 0);
  EXPECT_EQ(byte, '\0');
  EXPECT_EQ(KSV_FilePathTransUTF8ToUTF16(&unit, "", 1), 0);
  EXPECT_EQ(unit, 0);
  byte = 'x';
  EXPECT_TRUE(ksv::copyText("", &byte, 1));
  EXPECT_EQ(byte, '\0');
  byte = 'x';
  EXPECT_FALSE(ksv::copyText("a", &byte, 1));
  EXPECT_EQ(byte, '\0');
  byte = 'x';
  EXPECT_FALSE(ksv::copyText("", &byte, 0));
  EXPECT_EQ(byte, 'x');
}

TEST(PathEncoding, gives_an_empty_string_for_null_and_for_empty) {
  char bytes[4] = "abc";
  uint16_t units[2] = {'a', 0};
  const uint16_t none[1] = {0};
  EXPECT_EQ(KSV_FilePathTransAnsiToUTF8(bytes, nullptr, 4), 0);
  EXPECT_STREQ(bytes, "");
  std::strcpy(bytes, "abc");
  EXPECT_EQ(KSV_FilePathTransUTF8ToAnsi(bytes, "", 4), 0);
  EXPECT_STREQ(bytes, "");
  std::strcpy(bytes, "abc");
  EXPECT_EQ(KSV_FilePathTransUTF16ToUTF8(bytes, none, 4), 0);
  EXPECT_STREQ(bytes, "");
  EXPECT_EQ(KSV_FilePathTransUTF8ToUTF16(units, nullptr, 2), 0);
  EXPECT_EQ(units[0], 0);
}

TEST(PathEncoding, does_nothing_without_a_destination) {
  EXPECT_EQ(KSV_FilePathTransAnsiToUTF8(nullptr, "\xFF", 0), 0);
  EXPECT_EQ(KSV_FilePathTransUTF8ToAnsi(nullptr, "\xFF", 0), 0);
  EXPECT_EQ(KSV_FilePathTransUTF16ToUTF8(nullptr, nullptr, 0), 0);
  EXPECT_EQ(KSV_FilePathTransUTF8ToUTF16(nullptr, "\xFF", 0), 0);
}

TEST(PathEncoding, writes_nothing_when_the_capacity_is_below_one) {
  for (const int32_t capacity : {0, -1, INT32_MIN}) {
    char bytes[2] = "b";
    uint16_t units[2] = {'b', 0};
    EXPECT_EQ(KSV_FilePathTransAnsiToUTF8(bytes, "a", capacity), kRefused);
    EXPECT_EQ(KSV_FilePathTransUTF8ToAnsi(bytes, "a", capacity), kRefused);
    EXPECT_EQ(KSV_FilePathTransUTF8ToUTF16(units, "a", capacity), kRefused);
    EXPECT_EQ(KSV_FilePathTransUTF16ToUTF8(bytes, units, capacity), kRefused);
    EXPECT_EQ(KSV_FilePathTransUTF8ToAnsi(bytes, "", capacity), 0);
    EXPECT_STREQ(bytes, "b");
    EXPECT_EQ(units[0], 'b');
  }
}

TEST(PathEncoding, limits_the_ansi_forms_to_779_units_and_no_other) {
  std::vector<char> bytes(4000);
  std::u16string units;
  const std::string letter = ksv::test::ansiLetter();
  const std::string fits = repeated(letter.c_str(), 779);
  const std::string tooLong = repeated(letter.c_str(), 780);
  const std::string fitsA = *ksv::test::toAnsi(fits);
  const std::string tooLongA = *ksv::test::toAnsi(tooLong);
  EXPECT_EQ(KSV_FilePathTransAnsiToUTF8(bytes.data(), fitsA.c_str(), 4000), 0);
  EXPECT_EQ(bytes.data(), fits);
  EXPECT_EQ(KSV_FilePathTransUTF8ToAnsi(bytes.data(), fits.c_str(), 4000), 0);
  EXPECT_EQ(bytes.data(), fitsA);
  EXPECT_EQ(KSV_FilePathTransAnsiToUTF8(bytes.data(), tooLongA.c_str(), 4000), kRefused);
  EXPECT_EQ(KSV_FilePathTransUTF8ToAnsi(bytes.data(), tooLong.c_str(), 4000), kRefused);
  EXPECT_STREQ(bytes.data(), "");
  EXPECT_EQ(toUtf16(tooLong, units), 0);
  EXPECT_EQ(units.size(), 780u);
}

TEST(PathEncoding, counts_a_surrogate_pair_as_two_units) {
  EXPECT_TRUE(ksv::isUsablePath(repeated("\xF0\xA0\xAE\xB7", 389).c_str()));
  EXPECT_FALSE(ksv::isUsablePath(repeated("\xF0\xA0\xAE\xB7", 390).c_str()));
}
