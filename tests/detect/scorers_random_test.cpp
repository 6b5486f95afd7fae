// The scorers against slow ones, on texts of every encoding with more or less noise,
// cut into chunks of every size.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "detect/scorers.h"
#include "tests/detect/ranges.h"
#include "tests/detect/support.h"

namespace ksv_detect_tests {
namespace {

using ksv::detect::Candidate;
using ksv::detect::Chunk;
using ksv::detect::Scorer;

const std::map<std::string, Scorer> kScorers = {
    {"ASCII", ksv::detect::scoreAscii},
    {"Shift_JIS", ksv::detect::scoreShiftJis},
    {"Shift_JIS by code", ksv::detect::scoreShiftJisCodes},
    {"EUC-JP", ksv::detect::scoreEucJp},
    {"EUC-JP-FIX", ksv::detect::scoreEucJpFix},
    {"GBK", ksv::detect::scoreSimplifiedChinese},
    {"Big5", ksv::detect::scoreTraditionalChinese},
    {"Korean", ksv::detect::scoreKorean},
    {"ISO-2022-JP", ksv::detect::scoreIso2022Jp},
    {"UTF-8", ksv::detect::scoreUtf8},
    {"UTF-16BE", ksv::detect::scoreUtf16BigEndian},
    {"UTF-16LE", ksv::detect::scoreUtf16LittleEndian},
    {"UCS-4BE", ksv::detect::scoreUcs4BigEndian},
    {"UCS-4LE", ksv::detect::scoreUcs4LittleEndian},
};

// A chunk that is not the last has at least so many bytes: one holds all that a
// carried escape sequence lacks.
constexpr size_t kLeastChunk = 4;

// The ends of the chunks.
std::vector<size_t> cuts(std::mt19937& random, size_t length) {
  std::vector<size_t> ends;
  const size_t most = kLeastChunk + random() % 60;
  for (size_t end = 0; length - end > most;) {
    end += kLeastChunk + random() % (most - kLeastChunk + 1);
    ends.push_back(end);
  }
  ends.push_back(length);
  return ends;
}

std::string shown(const std::string& text) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string hex;
  for (const char c : text) {
    hex += kDigits[static_cast<uint8_t>(c) / 16];
    hex += kDigits[static_cast<uint8_t>(c) % 16];
    hex += ' ';
  }
  return hex;
}

// Every chunk, exactly as large as it is, so that a read behind it is noticed.
void compare(const std::string& name, const std::string& text, const std::vector<size_t>& ends,
             size_t start) {
  Candidate fast;
  SlowRecord slow;
  size_t begin = 0;
  for (const size_t end : ends) {
    const Bytes bytes(text.begin() + static_cast<std::ptrdiff_t>(begin),
                      text.begin() + static_cast<std::ptrdiff_t>(end));
    slow.data = bytes;
    slow.position = begin == 0 ? std::min(start, bytes.size()) : 0;
    slow.more = end != text.size();
    const Chunk chunk = {bytes.data(), bytes.size(), slow.more};
    const int32_t score = kScorers.at(name)(fast, chunk, slow.position);
    ASSERT_EQ(score, slowScore(name, slow)) << name << " to " << end << ": " << shown(text);
    ASSERT_EQ(fast.good, slow.goodTotal) << name << " to " << end << ": " << shown(text);
    ASSERT_EQ(fast.bad, slow.badTotal) << name << " to " << end << ": " << shown(text);
    ASSERT_EQ(fast.lineEnd, slow.lineFlags()) << name << " to " << end << ": " << shown(text);
    ASSERT_EQ(fast.separators, slow.separatorFlags()) << name << ": " << shown(text);
    begin = end;
  }
}

class Scorers : public testing::TestWithParam<std::string> {};

TEST_P(Scorers, count_what_slow_ones_count) {
  std::mt19937 random(testSeed());
  for (const NamedAlphabet& named : alphabets()) {
    const int rounds = named.name == GetParam() ? 4000 : 500;
    for (int round = 0; round < rounds; ++round) {
      const uint32_t noises[] = {0, 5, 50, 400};
      const std::string text =
          randomText(random, named.characters, random() % 150, noises[random() % 4]);
      const size_t start = random() % 8 == 0 ? 2 + random() % 3 : 0;
      compare(GetParam(), text, cuts(random, text.size()), start);
      if (HasFatalFailure()) FAIL() << "KSV_TEST_SEED=" << testSeed();
    }
  }
}

// Every text of up to three bytes from those that scorers tell apart, as a whole file
// and as the end of a chunk.
TEST_P(Scorers, agree_on_all_short_texts) {
  std::string bytes;
  for (const uint32_t code : codesOf("00-01 09-0A 0D 1B 20 24 28 30 40-42 44 49-4A 7E-81 87 8E-8F "
                                     "A0-A2 A4 BF-C1 C8 DF-E0 ED F0 F4 F9-FA FC FE-FF"))
    bytes += static_cast<char>(code);
  std::string text;
  for (const char a : bytes) {
    for (const char b : bytes) {
      for (const char c : bytes) {
        text = {a, b, c};
        compare(GetParam(), text, {3}, 0);
        if (c == '\n' || c == '\x81') compare(GetParam(), "xy" + text + "A\nzz", {5, 9}, 0);
        ASSERT_FALSE(HasFatalFailure());
      }
      text = {a, b};
      compare(GetParam(), text, {2}, 0);
      compare(GetParam(), "xyz" + text + "\n1234", {5, 10}, 0);
    }
    compare(GetParam(), std::string(1, a), {1}, 0);
    compare(GetParam(), "wxyz" + std::string(1, a) + "\n", {5, 6}, 0);
    ASSERT_FALSE(HasFatalFailure());
  }
}

// The modes of ISO-2022-JP, which no short text reaches.
TEST_P(Scorers, agree_on_every_byte_and_pair_behind_an_escape_sequence) {
  const std::string telling = "\x0A\x0D\x1B\x20\x21\x7E\x7F\xA0\xA1\xDF\xE0\xFF";
  for (const char* escape :
       {"\x1B$B", "\x1B$@", "\x1B$(D", "\x1B(J", "\x1B(B", "\x1B(I", "\x1Bxy"}) {
    for (int first = 0; first < 256; ++first) {
      const std::string text = escape + std::string(1, static_cast<char>(first));
      compare(GetParam(), text, {text.size()}, 0);
      for (const char second : telling) {
        compare(GetParam(), text + second + "!!", {text.size() + 3}, 0);
        compare(GetParam(), second + text + second, {text.size() + 2}, 0);
      }
      ASSERT_FALSE(HasFatalFailure());
    }
  }
}

// ---- What scorers of pairs share

struct PairScorer {
  uint32_t encoding;
  const char* name;
};
constexpr PairScorer kPairScorers[] = {{KSV_TEXT_SHIFT_JIS, "Shift_JIS"},
                                       {KSV_TEXT_EUC_JP, "EUC-JP"},
                                       {KSV_TEXT_SIMPLIFIED_CHINESE, "GBK"},
                                       {KSV_TEXT_TRADITIONAL_CHINESE, "Big5"},
                                       {KSV_TEXT_KOREAN, "Korean"}};

// Those of the encodings side by side, chunk by chunk, each with a run in common with
// the others and without.
void compareShared(const std::string& text, size_t chunkSize, uint32_t encodings) {
  const Bytes bytes = bytesOf(text);
  Candidate alone[std::size(kPairScorers)];
  Candidate together[std::size(kPairScorers)];
  for (size_t begin = 0; begin < bytes.size(); begin += chunkSize) {
    const size_t length = std::min(chunkSize, bytes.size() - begin);
    const Bytes part(bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                     bytes.begin() + static_cast<std::ptrdiff_t>(begin + length));
    ksv::detect::SharedRun run;
    run.encodings = encodings;
    Chunk chunk = {part.data(), length, begin + length < bytes.size()};
    Chunk sharing = chunk;
    sharing.shared = &run;
    for (size_t i = 0; i < std::size(kPairScorers); ++i) {
      if ((encodings & kPairScorers[i].encoding) == 0) continue;
      const Scorer scorer = kScorers.at(kPairScorers[i].name);
      ASSERT_EQ(scorer(together[i], sharing, 0), scorer(alone[i], chunk, 0));
      ASSERT_EQ(together[i].good, alone[i].good);
      ASSERT_EQ(together[i].bad, alone[i].bad);
      ASSERT_EQ(together[i].lineEnd, alone[i].lineEnd);
      ASSERT_EQ(together[i].carry.count, alone[i].carry.count);
    }
  }
}

TEST(SharedRuns, leave_every_count_as_it_is) {
  constexpr uint32_t kOthers = KSV_TEXT_UTF8 | KSV_TEXT_EUC_JP_FIX | KSV_TEXT_ASCII;
  std::mt19937 random(testSeed());
  for (const NamedAlphabet& named : alphabets()) {
    for (int round = 0; round < 300; ++round) {
      const uint32_t noises[] = {0, 0, 2, 20};
      const std::string text =
          randomText(random, named.characters, random() % 400, noises[random() % 4]);
      uint32_t encodings = random() % 2 == 0 ? kOthers : 0;
      for (const PairScorer& scorer : kPairScorers)
        if (random() % 2 == 0) encodings |= scorer.encoding;
      compareShared(text, kLeastChunk + random() % 100, encodings);
      if (testing::Test::HasFatalFailure())
        FAIL() << named.name << ": " << shown(text) << "KSV_TEST_SEED=" << testSeed();
    }
  }
}

TEST(SharedRuns, hold_what_all_read_alike) {
  const std::string text =
      "abc\t\xA4\xCF\r\n0123456789\xB0\xA1\xB0\xA2\xB0\xA3\xB0\xA4\n\x8F and what stands behind it";
  const Bytes bytes = bytesOf(text);
  ksv::detect::SharedRun run;
  run.encodings = KSV_TEXT_EUC_JP | KSV_TEXT_SIMPLIFIED_CHINESE | KSV_TEXT_UTF8;
  const Chunk chunk = {bytes.data(), bytes.size(), false, &run};
  Candidate candidate;
  ksv::detect::scoreEucJp(candidate, chunk, 0);
  EXPECT_EQ(run.from, bytes.data());
  EXPECT_EQ(run.to - run.from, 27) << "up to what is no pair of EUC-JP";
  EXPECT_EQ(run.good, 22u);
  EXPECT_EQ(run.lineEnd, KSV_TEXT_CRLF);
}

std::vector<std::string> names() {
  std::vector<std::string> result;
  for (const auto& [name, scorer] : kScorers) result.push_back(name);
  return result;
}

INSTANTIATE_TEST_SUITE_P(All, Scorers, testing::ValuesIn(names()), [](const auto& info) {
  std::string name = info.param;
  std::erase_if(name, [](char c) { return c == '-' || c == ' '; });
  return name;
});

}  // namespace
}  // namespace ksv_detect_tests
