// Every code of every table against the ranges as people write them.
#include <gtest/gtest.h>

#include <algorithm>

#include "detect/character_sets.h"
#include "detect/scorers.h"
#include "tests/detect/ranges.h"
#include "tests/detect/slow_scorers.h"

namespace ksv_detect_tests {
namespace {

using ksv::detect::Candidate;
using ksv::detect::CodeSet;
using ksv::detect::Scorer;

void expectExactly(const CodeSet& set, const std::string& ranges) {
  const std::set<uint32_t> codes = codesOf(ranges);
  EXPECT_FALSE(codes.empty());
  for (uint32_t code = 0; code <= 0xFFFF; ++code)
    ASSERT_EQ(set.contains(code), codes.count(code) != 0) << std::hex << code;
}

TEST(CharacterSets, hold_the_assigned_characters) {
  expectExactly(ksv::detect::kAssignedCharacters, kAssignedText);
}

TEST(CharacterSets, hold_the_codes_of_ShiftJis) {
  expectExactly(ksv::detect::kShiftJisCodes, kShiftJisCodeText);
}

TEST(CharacterSets, hold_what_the_encoding_check_accepts) {
  expectExactly(ksv::detect::kCheckedCharacters, kCheckedText);
}

TEST(CharacterSets, keep_their_intended_gaps) {
  for (const uint32_t code : {0x4EA6, 0x4EFF, 0xFB3E}) {
    EXPECT_FALSE(ksv::detect::kAssignedCharacters.contains(code)) << std::hex << code;
  }
  for (const uint32_t code : {0x4EA5, 0x4F00, 0xFB3C, 0xFB40}) {
    EXPECT_TRUE(ksv::detect::kAssignedCharacters.contains(code)) << std::hex << code;
  }
  for (const uint32_t code : {0x3400, 0x4DFF, 0x4EA6, 0x4EFF, 0xFF01, 0xFF66, 0xFFC9}) {
    EXPECT_FALSE(ksv::detect::kCheckedCharacters.contains(code)) << std::hex << code;
  }
  for (const uint32_t code : {0xFFCA, 0xFFEE}) {
    EXPECT_TRUE(ksv::detect::kCheckedCharacters.contains(code)) << std::hex << code;
  }
  // Trail bytes that no character has lie inside the bounds.
  for (const uint32_t code : {0x827F, 0x8900, 0x89FF, 0x9000}) {
    EXPECT_EQ(ksv::detect::kShiftJisCodes.contains(code), code != 0x827F) << std::hex << code;
  }
}

// What a scorer makes of a file of these bytes: good and bad characters, or none of
// both where the file is dropped.
std::pair<uint32_t, uint32_t> countOf(Scorer score, const Bytes& bytes) {
  Candidate candidate;
  score(candidate, {bytes.data(), bytes.size(), false}, 0);
  return {candidate.good, candidate.bad};
}

struct PairScorer {
  const char* name;
  Scorer scorer;
};
const PairScorer kPairScorers[] = {{"Shift_JIS", ksv::detect::scoreShiftJis},
                                   {"EUC-JP", ksv::detect::scoreEucJp},
                                   {"GBK", ksv::detect::scoreSimplifiedChinese},
                                   {"Big5", ksv::detect::scoreTraditionalChinese},
                                   {"Korean", ksv::detect::scoreKorean}};

// Behind a good character, so that a bad pair is counted.
TEST(PairTables, hold_exactly_the_trails_of_each_lead) {
  for (const PairScorer& own : kPairScorers) {
    const auto& trails = trailsOf(own.name);
    ASSERT_GT(trails.size(), 40u);
    for (uint32_t lead = 0x80; lead <= 0xFF; ++lead) {
      const auto row = trails.find(lead);
      if (row == trails.end() || (lead == 0x8F && own.name == std::string("EUC-JP"))) continue;
      for (uint32_t trail = 0; trail <= 0xFF; ++trail) {
        const Bytes bytes = {'A', static_cast<uint8_t>(lead), static_cast<uint8_t>(trail), 'A',
                             'A'};
        const bool isGood = row->second.count(trail) != 0;
        const auto counted = countOf(own.scorer, bytes);
        // FA to FC give a wrong trail back, which is then read as it is.
        const bool givesBack = !isGood && own.name == std::string("Shift_JIS") && lead >= 0xFA;
        if (givesBack) {
          const auto alone = countOf(own.scorer, {'A', static_cast<uint8_t>(trail), 'A', 'A'});
          ASSERT_EQ(counted.first, alone.first) << own.name << std::hex << lead << trail;
          ASSERT_EQ(counted.second, alone.first == 0 ? 0 : alone.second + 1);
        } else {
          ASSERT_EQ(counted, (std::pair<uint32_t, uint32_t>{isGood ? 4 : 3, isGood ? 0 : 1}))
              << own.name << std::hex << lead << trail;
        }
      }
    }
  }
}

// One byte between good ones: what it is when it begins no pair.
TEST(PairTables, hold_exactly_what_single_bytes_are) {
  struct Row {
    PairScorer own;
    const char* stops;
    const char* kana;
  };
  const Row rows[] = {{kPairScorers[0], "00 1B 7F", "A1-DF"},
                      {kPairScorers[1], "00 1B", ""},
                      {kPairScorers[2], "00 1B", ""},
                      {kPairScorers[3], "00 1B", ""},
                      {kPairScorers[4], "00 1B", ""}};
  const std::set<uint32_t> plain = codesOf("09 0A 0D 20-7E");
  for (const Row& row : rows) {
    const std::set<uint32_t> stops = codesOf(row.stops);
    const std::set<uint32_t> kana = codesOf(row.kana);
    for (uint32_t byte = 0; byte <= 0xFF; ++byte) {
      if (trailsOf(row.own.name).count(byte) != 0) continue;
      std::pair<uint32_t, uint32_t> expected = {2, 1};
      if (plain.count(byte) != 0 || kana.count(byte) != 0) expected = {3, 0};
      if (stops.count(byte) != 0) expected = {0, 0};
      EXPECT_EQ(countOf(row.own.scorer, {'A', static_cast<uint8_t>(byte), 'A'}), expected)
          << row.own.name << " " << std::hex << byte;
    }
  }
}

TEST(PairTables, of_threes_of_EucJp_take_a_second_byte_of_A1_to_DF_and_a_third_from_A1) {
  for (uint32_t second = 0; second <= 0xFF; ++second) {
    for (uint32_t third = 0; third <= 0xFF; ++third) {
      const Bytes bytes = {'A',  0x8F, static_cast<uint8_t>(second), static_cast<uint8_t>(third),
                           0xA4, 0xA2};
      const auto counted = countOf(ksv::detect::scoreEucJp, bytes);
      if (second >= 0xA1 && second <= 0xDF) {
        const bool isGood = third >= 0xA1;
        ASSERT_EQ(counted, (std::pair<uint32_t, uint32_t>{isGood ? 3 : 2, isGood ? 0 : 1}))
            << std::hex << second << " " << third;
      } else {
        const auto alone =
            countOf(ksv::detect::scoreEucJp, {'A', static_cast<uint8_t>(third), 0xA4, 0xA2});
        ASSERT_EQ(counted.first, alone.first) << std::hex << second << " " << third;
        ASSERT_EQ(counted.second, alone.first == 0 ? 0 : alone.second + 1);
      }
    }
  }
}

TEST(CodeCheckedShiftJis, counts_every_code_by_the_set_of_codes) {
  const std::set<uint32_t> codes = codesOf(kShiftJisCodeText);
  for (uint32_t code = 0; code <= 0xFFFF; ++code) {
    const uint32_t lead = code >> 8;
    if (lead < 0x80 || (lead >= 0xA1 && lead <= 0xDF)) continue;
    const Bytes bytes = {'A', static_cast<uint8_t>(lead), static_cast<uint8_t>(code)};
    const bool isGood = codes.count(code) != 0;
    ASSERT_EQ(countOf(ksv::detect::scoreShiftJisCodes, bytes),
              (std::pair<uint32_t, uint32_t>{isGood ? 2 : 1, isGood ? 0 : 1}))
        << std::hex << code;
  }
}

TEST(UnitScorers, count_every_unit_by_the_set_of_assigned_characters) {
  const std::set<uint32_t> codes = codesOf(kAssignedText);
  for (uint32_t code = 0; code <= 0xFFFF; ++code) {
    if (code >= 0xD800 && code <= 0xDBFF) continue;  // takes the unit behind it
    const uint8_t high = static_cast<uint8_t>(code >> 8);
    const uint8_t low = static_cast<uint8_t>(code);
    const uint32_t good = codes.count(code) != 0 ? 2 : 1;
    const std::pair<uint32_t, uint32_t> expected = {good, 2 - good};
    ASSERT_EQ(countOf(ksv::detect::scoreUtf16BigEndian, {0, 'A', high, low}), expected);
    ASSERT_EQ(countOf(ksv::detect::scoreUtf16LittleEndian, {'A', 0, low, high}), expected);
    ASSERT_EQ(countOf(ksv::detect::scoreUcs4BigEndian, {0, 0, 0, 'A', 0, 0, high, low}), expected);
    ASSERT_EQ(countOf(ksv::detect::scoreUcs4LittleEndian, {'A', 0, 0, 0, low, high, 0, 0}),
              expected);
  }
}

TEST(UnitScorers, take_planes_of_UCS4_as_good_bad_or_no_text) {
  const std::set<uint32_t> good = codesOf("1-3 E-10");
  const std::set<uint32_t> stops = codesOf("11-7F");
  for (uint32_t plane = 1; plane <= 0xFFFF; ++plane) {
    const Bytes bytes = {
        0, 0, 0, 'A', static_cast<uint8_t>(plane >> 8), static_cast<uint8_t>(plane), 0xFF, 0xFF};
    std::pair<uint32_t, uint32_t> expected = {1, 1};
    if (good.count(plane) != 0) expected = {2, 0};
    if (stops.count(plane) != 0) expected = {0, 0};
    ASSERT_EQ(countOf(ksv::detect::scoreUcs4BigEndian, bytes), expected) << std::hex << plane;
  }
}

}  // namespace
}  // namespace ksv_detect_tests
