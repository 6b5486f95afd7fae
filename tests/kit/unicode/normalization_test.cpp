#include "kit/unicode/normalization.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "kit/unicode/normalization_system.h"
#include "kit/unicode/utf8_text.h"
#include "tests/kit/unicode/pieces.h"
#include "tests/system/system.h"

namespace ksv_kit {
namespace {

using Form = NormalizationForm;

constexpr Form kForms[] = {Form::kNfc, Form::kNfd, Form::kNfkc, Form::kNfkd, Form::kComposed};

struct Sample {
  std::u32string_view text;
  std::u32string_view nfc;
  std::u32string_view nfd;
  std::u32string_view nfkc;
  std::u32string_view nfkd;
  std::u32string_view composed;
};

constexpr Sample kSamples[] = {
    // U+304B U+3099, and the same as one character.
    {U"\x304B\x3099", U"\x304C", U"\x304B\x3099", U"\x304C", U"\x304B\x3099", U"\x304C"},
    {U"\x304C", U"\x304C", U"\x304B\x3099", U"\x304C", U"\x304B\x3099", U"\x304C"},
    // Half-width katakana are another form, but no other spelling.
    {U"\xFF76\xFF9E", U"\xFF76\xFF9E", U"\xFF76\xFF9E", U"\x30AC", U"\x30AB\x3099",
     U"\xFF76\xFF9E"},
    // The angstrom sign of JIS X 0208, and a compatibility ideograph of the IBM extensions.
    {U"\x212B", U"\xC5", U"A\x30A", U"\xC5", U"A\x30A", U"\x212B"},
    {U"\xFA19", U"\x795E", U"\x795E", U"\x795E", U"\x795E", U"\xFA19"},
    {U"e\x301", U"\xE9", U"e\x301", U"\xE9", U"e\x301", U"\xE9"},
    // Marks in the wrong order: dot below (220) goes before dot above (230).
    {U"s\x307\x323", U"\x1E69", U"s\x323\x307", U"\x1E69", U"s\x323\x307", U"\x1E69"},
    // A vowel of Hangul and a final consonant; a syllable with a final one behind it.
    {U"\x1112\x1161\x11AB", U"\xD55C", U"\x1112\x1161\x11AB", U"\xD55C", U"\x1112\x1161\x11AB",
     U"\xD55C"},
    {U"\xD558\x11AB", U"\xD55C", U"\x1112\x1161\x11AB", U"\xD55C", U"\x1112\x1161\x11AB",
     U"\xD55C"},
    {U"\xFB01\x2460", U"\xFB01\x2460", U"\xFB01\x2460", U"fi1", U"fi1", U"\xFB01\x2460"},
    // Excluded from composition.
    {U"\x0958", U"\x0915\x093C", U"\x0915\x093C", U"\x0915\x093C", U"\x0915\x093C", U"\x0958"},
    // A mark at the beginning has nothing to be joined with.
    {U"\x3099\x304B", U"\x3099\x304B", U"\x3099\x304B", U"\x3099\x304B", U"\x3099\x304B",
     U"\x3099\x304B"},
    {U"plain ASCII text", U"plain ASCII text", U"plain ASCII text", U"plain ASCII text",
     U"plain ASCII text", U"plain ASCII text"},
    {U"", U"", U"", U"", U"", U""},
};

std::u32string_view expected(const Sample& sample, Form form) {
  switch (form) {
    case Form::kNfc:
      return sample.nfc;
    case Form::kNfd:
      return sample.nfd;
    case Form::kNfkc:
      return sample.nfkc;
    case Form::kNfkd:
      return sample.nfkd;
    case Form::kComposed:
      return sample.composed;
  }
  return {};
}

TEST(Normalization, of_samples_is_that_of_each_form_at_every_cut) {
  for (const Form form : kForms) {
    const auto change = normalization(form);
    for (const Sample& sample : kSamples) {
      const std::string text = utf8Of(sample.text);
      EXPECT_EQ(changedAtEveryCut(*change, text).text, utf8Of(expected(sample, form)))
          << text << " in form " << static_cast<int>(form);
      EXPECT_EQ(normalized(form, text), utf8Of(expected(sample, form)));
    }
  }
}

TEST(Normalization, leaves_katakana_in_half_width_and_kanji_of_ibm_when_it_only_composes) {
  EXPECT_EQ(normalized(Form::kComposed, "\u304B\u3099\uFF76\uFF9E\u212B\uFA19"),
            "\u304C\uFF76\uFF9E\u212B\uFA19");
}

TEST(Normalization, tells_where_each_byte_stems_from) {
  const auto change = normalization(Form::kNfc);
  const std::string text = "ab\u304B\u3099cd";  // 2 bytes, 6, 2
  const Changed changed = changedAtEveryCut(*change, text);
  EXPECT_EQ(changed.text, "ab\u304Ccd");
  EXPECT_EQ(changed.origins, (std::vector<uint64_t>{0, 1, 2, 2, 2, 8, 9}));
}

TEST(Normalization, of_what_grows_stays_at_the_character_it_stems_from) {
  const auto change = normalization(Form::kNfkd);
  const Changed changed = changedAtEveryCut(*change, "a\u2460b\u2075");
  EXPECT_EQ(changed.text, "a1b5");
  EXPECT_EQ(changed.origins, (std::vector<uint64_t>{0, 1, 4, 5}));
}

TEST(Normalization, begins_a_new_text_when_told) {
  const auto change = normalization(Form::kNfc);
  std::string out;
  change->change("e", false, out);
  EXPECT_EQ(out, "");
  change->restart();
  change->change("\u0301", true, out);
  EXPECT_EQ(out, "\u0301");
  EXPECT_EQ(change->originOf(1), 1U);
}

// Characters that act on each other, among some that do not.
constexpr std::u32string_view kLively =
    U"aAeosz\xE5\xE9\xF1\x300\x301\x307\x30A\x323\x327\x345\x212B\x3042\x304B\x304C\x306F\x3099"
    U"\x309A"
    U"\xFF76\xFF9E\xFF9F\x1100\x1112\x1161\x1175\x11A8\x11AB\xAC00\xD55C\xFA19\xFB01\x2460\xFDFA"
    U"\x9C7\x9BE\x9D7\xB47\xB56\xB57\xDD9\xDCF\xDCA\x344\xF73\xF71\xF72\x11131\x11127\x1D160\x4E9C";

std::string randomText(std::mt19937& random, size_t length) {
  std::u32string text;
  for (size_t at = 0; at < length; ++at) text += kLively[random() % kLively.size()];
  return utf8Of(text);
}

TEST(Normalization, of_random_text_does_not_depend_on_cuts_and_is_the_same_once_more) {
  std::mt19937 random(ksv::test::testSeed());
  SCOPED_TRACE("KSV_TEST_SEED=" + std::to_string(ksv::test::testSeed()));
  for (const Form form : kForms) {
    const auto change = normalization(form);
    for (int round = 0; round < 300; ++round) {
      const std::string text = randomText(random, 1 + random() % 24);
      const std::string once = changedAtEveryCut(*change, text).text;
      EXPECT_EQ(normalized(form, once), once) << text << " in form " << static_cast<int>(form);
    }
  }
}

TEST(Normalization, of_a_million_marks_takes_little_time_and_holds_few) {
  std::u32string marks = U"a";
  for (int at = 0; at < 1'000'000; ++at) marks += at % 2 == 0 ? U'\x301' : U'\x323';
  const std::string text = utf8Of(marks);
  for (const Form form : kForms) {
    const auto change = normalization(form);
    std::string out;
    const auto begin = std::chrono::steady_clock::now();
    change->change(text, false, out);
    const auto taken = std::chrono::steady_clock::now() - begin;
    EXPECT_LT(text.size() - out.size(), 3 * kMostCharactersPutInOrder);
    change->change("", true, out);
    EXPECT_LT(taken, std::chrono::seconds(20));
    EXPECT_EQ(changedWhole(*change, text).text, out);
  }
}

TEST(Normalization, puts_a_run_of_marks_in_order_up_to_its_bound) {
  // One character of class 220 behind many of class 230 goes in front of them, if it is in reach.
  const auto run = [](size_t above) { return U"q" + std::u32string(above, U'\x301') + U"\x323"; };
  const std::u32string inReach = run(kMostCharactersPutInOrder - 2);
  EXPECT_EQ(normalized(Form::kNfd, utf8Of(inReach)),
            utf8Of(U"q\x323" + inReach.substr(1, inReach.size() - 2)));
  const std::string beyond = utf8Of(run(kMostCharactersPutInOrder - 1));
  EXPECT_EQ(normalized(Form::kNfd, beyond), beyond);
  const auto change = normalization(Form::kNfd);
  EXPECT_EQ(changedByCharacters(*change, beyond).text, beyond);
}

TEST(Normalization, of_a_million_vowels_of_hangul_holds_few) {
  const std::string text = utf8Of(std::u32string(100'000, U'\x1161'));
  const auto change = normalization(Form::kNfc);
  std::string out;
  change->change(text, false, out);
  EXPECT_LT(text.size() - out.size(), 3 * kMostCharactersPutInOrder);
}

}  // namespace
}  // namespace ksv_kit
