#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ksv_ucs2.h"

namespace {

int signOf(int number) { return (number > 0) - (number < 0); }

int compare(const std::string& a, const std::string& b) {
  return signOf(KSV_stricmp(a.c_str(), b.c_str()));
}

}  // namespace

TEST(Stricmp, disregards_the_case_of_ascii_letters) {
  EXPECT_EQ(compare("Shift_JIS", "sHIFT_jis"), 0);
  EXPECT_EQ(compare("", ""), 0);
  EXPECT_EQ(compare("abc", "abd"), -1);
  EXPECT_EQ(compare("ABD", "abc"), 1);
  EXPECT_EQ(compare("ab", "ABC"), -1);
  EXPECT_EQ(compare("abc", "AB"), 1);
}

// Between capitals and small letters: small ones stand behind them.
TEST(Stricmp, compares_letters_as_small_ones) {
  EXPECT_EQ(compare("A", "_"), 1);
  EXPECT_EQ(compare("a", "_"), 1);
  EXPECT_EQ(compare("[", "a"), -1);
}

TEST(Stricmp, compares_bytes_as_unsigned_numbers) {
  EXPECT_EQ(compare("\x80", "z"), 1);
  EXPECT_EQ(compare("\xC0", "\xE0"), -1) << "no letters, whatever the locale";
}

TEST(Stricmp, agrees_with_numbers_of_bytes_for_every_pair) {
  std::vector<int> order(256);
  for (int byte = 0; byte < 256; ++byte) order[static_cast<size_t>(byte)] = byte;
  for (const char letter : std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZ")) {
    order[static_cast<size_t>(letter)] = letter + 32;
  }
  for (int a = 0; a < 256; ++a) {
    for (int b = 0; b < 256; ++b) {
      const char textA[] = {static_cast<char>(a), '\0'};
      const char textB[] = {static_cast<char>(b), '\0'};
      ASSERT_EQ(signOf(KSV_stricmp(textA, textB)),
                signOf(order[static_cast<size_t>(a)] - order[static_cast<size_t>(b)]))
          << a << " " << b;
    }
  }
}

TEST(Stricmp, takes_null_for_empty) {
  EXPECT_EQ(KSV_stricmp(nullptr, nullptr), 0);
  EXPECT_EQ(KSV_stricmp(nullptr, ""), 0);
  EXPECT_LT(KSV_stricmp(nullptr, "a"), 0);
  EXPECT_GT(KSV_stricmp("a", nullptr), 0);
}

TEST(GroupCharWidth, is_4_2_or_1) {
  EXPECT_EQ(KSV_GetGroupCharWidth("ISO-10646-UCS-4"), 4);
  EXPECT_EQ(KSV_GetGroupCharWidth("ISO-10646-UCS-2"), 2);
  EXPECT_EQ(KSV_GetGroupCharWidth("UTF-16"), 2);
  EXPECT_EQ(KSV_GetGroupCharWidth("UTF-8"), 1);
  EXPECT_EQ(KSV_GetGroupCharWidth("Shift_JIS"), 1);
}

TEST(GroupCharWidth, disregards_case) {
  EXPECT_EQ(KSV_GetGroupCharWidth("utf-16"), 2);
  EXPECT_EQ(KSV_GetGroupCharWidth("iso-10646-ucs-4"), 4);
}

TEST(GroupCharWidth, wants_the_whole_name) {
  for (const char* name : {"", "UTF-1", "UTF-16LE", "UTF16", " UTF-16", "ISO-10646-UCS"}) {
    EXPECT_EQ(KSV_GetGroupCharWidth(name), 1) << name;
  }
  EXPECT_EQ(KSV_GetGroupCharWidth(nullptr), 1);
}
