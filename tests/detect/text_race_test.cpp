// What the race leaves out as it cannot matter: giving texts up, and scores that nobody
// asks for. The same texts are read with nothing given up, and by the slow detection.
#include "detect/text_race.h"

#include <gtest/gtest.h>

#include "tests/detect/slow_detection.h"
#include "tests/detect/support.h"

namespace ksv_detect_tests {
namespace {

using namespace std::string_literals;
using ksv::detect::Chunk;
using ksv::detect::Preference;
using ksv::detect::TextRace;

constexpr size_t kChunkSize = 2048;

uint32_t below(uint32_t bound, std::mt19937& random) {
  return static_cast<uint32_t>(random() % bound);
}

struct Language {
  Preference preference;
  const char* name;
};
constexpr Language kLanguages[] = {{Preference::kNone, "english"},
                                   {Preference::kJapanese, "japanese"},
                                   {Preference::kSimplifiedChinese, "simplified chinese"},
                                   {Preference::kTraditionalChinese, "traditional chinese"},
                                   {Preference::kKorean, "korean"}};

uint32_t resultOf(TextRace& race, const Bytes& text) {
  for (size_t begin = 0; begin < text.size(); begin += kChunkSize) {
    const size_t length = std::min(kChunkSize, text.size() - begin);
    const Chunk chunk = {text.data() + begin, length, begin + length < text.size()};
    if (begin == 0 && race.decideByMark(chunk)) break;
    if (race.decide(chunk)) break;
  }
  return race.result();
}

// How many of the texts compared so far were what.
struct Seen {
  int ties = 0;
  int utf16 = 0;
};

void compare(const std::string& text, const Language& language, Seen& seen) {
  const Bytes bytes = bytesOf(text);
  TextRace race(language.preference);
  TextRace whole(language.preference);
  whole.giveNothingUpForTests();
  const uint32_t result = resultOf(race, bytes);
  ASSERT_EQ(result, resultOf(whole, bytes)) << "with nothing given up";
  ASSERT_EQ(result, slowDetect(bytes, language.name)) << "by the slow detection";
  const uint32_t encodings = result & KSV_TEXT_ENCODINGS;
  seen.ties += (encodings & (encodings - 1)) != 0;
  seen.utf16 += (encodings & KSV_TEXT_UTF16) != 0;
}

// A range of leads and one of trails: pairs of bytes that are characters of UTF-16 in
// one order, in both or in none, and pairs of other encodings.
struct Pairs {
  uint8_t firstLead, lastLead, firstTrail, lastTrail;
};
constexpr Pairs kPairs[] = {
    {0xB0, 0xCE, 0xA1, 0xFE}, {0xA1, 0xCE, 0xB0, 0xCE}, {0xA1, 0xA1, 0x4F, 0x4F},
    {0x4F, 0x4F, 0xA1, 0xA1}, {0xA1, 0xA1, 0x80, 0x80}, {0x81, 0x9F, 0x4F, 0x7E},
    {0x4F, 0x7E, 0x81, 0x9F}, {0x30, 0x30, 0x41, 0x7E}, {0xE0, 0xEA, 0x50, 0x7E},
    {0x00, 0x00, 0x21, 0x7E}, {0x21, 0x7E, 0x00, 0x00}, {0xB0, 0xD7, 0xD8, 0xFE},
};
const std::string kBetween[] = {"\n",       "\r\n", "\0\n"s, "\n\0"s, "\0\r\0\n"s, "\x20\x28",
                                "\x29\x20", "\x80", "a",     "",      "",          ""};

std::string pairsText(std::mt19937& random, const Pairs& pairs, size_t count) {
  std::string text;
  for (; count > 0; --count) {
    text += static_cast<char>(pairs.firstLead + random() % (pairs.lastLead - pairs.firstLead + 1u));
    text +=
        static_cast<char>(pairs.firstTrail + random() % (pairs.lastTrail - pairs.firstTrail + 1u));
  }
  return text;
}

// Mostly of one kind, which is what makes a tie that lasts beyond a chunk.
std::string textOfPairs(std::mt19937& random) {
  const Pairs& most = kPairs[random() % std::size(kPairs)];
  std::string text;
  for (size_t piece = 1 + random() % 6; piece > 0; --piece) {
    const bool isRare = random() % 3 == 0;
    const Pairs& pairs = isRare ? kPairs[random() % std::size(kPairs)] : most;
    text += pairsText(random, pairs, isRare ? random() % 60 : random() % 1200);
    text += kBetween[random() % std::size(kBetween)];
  }
  return text;
}

TEST(TextRaces, of_pairs_that_are_utf16_in_one_order_end_alike_with_nothing_given_up) {
  std::mt19937 random(testSeed());
  Seen seen;
  for (int round = 0; round < 400; ++round) {
    const std::string text = textOfPairs(random) + "x";
    compare(text, kLanguages[random() % std::size(kLanguages)], seen);
    if (testing::Test::HasFatalFailure()) FAIL() << "KSV_TEST_SEED=" << testSeed();
  }
  EXPECT_GE(seen.ties, 40) << "the texts do not reach what they are made for";
  EXPECT_GE(seen.utf16, 40);
}

// One form of UCS-4, the other order of it, and what is bad in both.
TEST(TextRaces, of_ucs4_in_changing_orders_end_alike_with_nothing_given_up) {
  const std::string units[] = {"\0\x02\x80\x90"s, "\x80\x90\x02\0"s, "\x01\0\x80\x90"s,
                               "\0\x03\x03\0"s,   "\0\0\x4F\xA1"s,   "\xA1\x4F\0\0"s};
  std::mt19937 random(testSeed());
  Seen seen;
  for (int round = 0; round < 600; ++round) {
    std::string text;
    for (size_t piece = 1 + random() % 4; piece > 0; --piece) {
      const std::string& most = units[random() % std::size(units)];
      const uint32_t noise = below(3, random) * 10;
      for (size_t count = 100 + random() % 900; count > 0; --count)
        text += random() % 1000 < noise ? units[random() % std::size(units)] : most;
    }
    compare(text, kLanguages[0], seen);
    if (testing::Test::HasFatalFailure()) FAIL() << "KSV_TEST_SEED=" << testSeed();
  }
  EXPECT_GE(seen.ties, 3) << "the texts do not reach what they are made for";
}

TEST(TextRaces, of_texts_with_several_marks_end_alike_with_nothing_given_up) {
  const std::string marks[] = {"\xFF\xFE\0\0"s, "\0\0\xFE\xFF"s, "\xEF\xBB\xBF", "\xFF\xFE",
                               "\xFE\xFF"};
  const Alphabet units = {"\x03\0"s,  "\0\x03"s, "\0\x02\x02\0"s, "ab",
                          "\x4F\x50", "\n\0"s,   "\0\n"s};
  std::mt19937 random(testSeed());
  Seen seen;
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    for (size_t count = 1 + random() % 3; count > 0; --count)
      text += marks[random() % std::size(marks)];
    const std::string& most = units[random() % units.size()];
    for (size_t count = random() % 20; count > 0; --count)
      text += random() % 4 == 0 ? units[random() % units.size()] : most;
    if (random() % 4 == 0) text += "x";
    compare(text, kLanguages[0], seen);
    if (testing::Test::HasFatalFailure())
      FAIL() << testing::PrintToString(text) << ", KSV_TEST_SEED=" << testSeed();
  }
  EXPECT_GE(seen.utf16, 400) << "the texts do not reach what they are made for";
}

// What stands in memory behind a chunk is nothing to it.
TEST(TextRaces, take_a_mark_that_the_text_cuts_for_none) {
  for (const std::string& mark : {"\xFF\xFE\0\0"s, "\0\0\xFE\xFF"s, "\xEF\xBB\xBF"s, "\xFF\xFE"s}) {
    const Bytes bytes = bytesOf(mark + "abcdefgh");
    for (size_t length = 1; length < mark.size(); ++length) {
      TextRace race(Preference::kNone);
      const Chunk chunk = {bytes.data(), length, false};
      const bool isMarked = race.decideByMark(chunk);
      EXPECT_FALSE(isMarked) << testing::PrintToString(mark) << " " << length;
    }
  }
}

// About one bad character of ten, where giving up begins; the chunks that follow then
// decide.
TEST(TextRaces, of_texts_around_ninety_percent_end_alike_with_nothing_given_up) {
  std::mt19937 random(testSeed());
  Seen seen;
  for (const NamedAlphabet& named : alphabets()) {
    for (int round = 0; round < 40; ++round) {
      const std::string first =
          randomText(random, named.characters, kChunkSize, 60 + below(140, random));
      const std::string text = first + randomText(random, named.characters,
                                                  random() % (2 * kChunkSize), below(60, random));
      compare(text, kLanguages[random() % std::size(kLanguages)], seen);
      if (testing::Test::HasFatalFailure())
        FAIL() << named.name << ", KSV_TEST_SEED=" << testSeed();
    }
  }
}

}  // namespace
}  // namespace ksv_detect_tests
