// Damage is told once with its place, costs nothing, and leaves what is sound.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "kit/documents/properties/code_page_text.h"
#include "kit/documents/properties/known_properties.h"
#include "kit/documents/properties/property_set.h"
#include "kit/documents/properties/property_set_writer.h"
#include "tests/kit/documents/properties/made_set.h"
#include "tests/system/system.h"

namespace ksv_kit::properties {
namespace {

using ksv::test::codePage;
using ksv::test::dwords;
using ksv::test::putDword;
using ksv::test::text;
using std::string_literals::operator""s;

// Of a stream with one section: it begins at 48, its list at 56.
constexpr size_t kSection = 48;
constexpr size_t kList = 56;

std::string sample() {
  return ksv::test::summary(
      {codePage(1252), text(2, "Title"), text(4, "Author"), typed(12, kFileTime, dwords({1, 2})),
       typed(13, kVectorBit | kLpstr, dwords({2}) + counted("one\0"s) + counted("two\0"s))});
}

std::vector<DamageNote> damagesOf(std::string_view bytes) {
  return readPropertySet(bytesOf(bytes)).damages;
}

TEST(DamagedSet, without_a_header_is_none) {
  for (const std::string& bytes : {""s, "text"s, "\xFF\xFE\0\0"s, sample().substr(0, 27)})
    EXPECT_EQ(damagesOf(bytes), (std::vector<DamageNote>{{Damage::kNoHeader, 0, 0, {}}}));
  std::string other = sample();
  other[0] = '\xFF';
  EXPECT_EQ(damagesOf(other), (std::vector<DamageNote>{{Damage::kNoHeader, 0, 0, {}}}));
}

TEST(DamagedSet, has_a_section_behind_its_end) {
  std::string bytes = sample();
  putDword(bytes, 44, 5000);
  EXPECT_EQ(damagesOf(bytes), (std::vector<DamageNote>{{Damage::kSectionOutside, 5000, 0, {}}}));
}

TEST(DamagedSet, claims_more_sections_than_there_are) {
  std::string bytes = sample();
  putDword(bytes, 24, 0xFFFFFFFF);
  const PropertySet set = readPropertySet(bytesOf(bytes));
  ASSERT_EQ(set.sections.size(), 1u);
  EXPECT_NE(set.sections[0].find(2), nullptr);
  EXPECT_EQ(set.damages, (std::vector<DamageNote>{{Damage::kListCut, kSection, 0, {}}}));
}

TEST(DamagedSet, claims_more_properties_than_there_are) {
  std::string bytes = ksv::test::summary({codePage(1252), text(2, "Title")});
  putDword(bytes, kSection + 4, 0xFFFFFFFF);
  PropertySet set = readPropertySet(bytesOf(bytes));
  readTexts(set);
  EXPECT_EQ(textOf(set, 2), "Title");
  EXPECT_TRUE(std::any_of(set.damages.begin(), set.damages.end(),
                          [](const DamageNote& note) { return note.kind == Damage::kListCut; }));
}

TEST(DamagedSet, keeps_the_sound_properties_beside_a_cut_one) {
  std::string bytes = sample();
  const size_t place = kSection + ksv::test::getDword(bytes, kList + 8 + 4);
  putDword(bytes, place + 4, 0x7FFFFFFF);
  PropertySet set = readPropertySet(bytesOf(bytes));
  readTexts(set);
  EXPECT_EQ(set.damages, (std::vector<DamageNote>{{Damage::kValueCut, place, 0, 2}}));
  EXPECT_EQ(textOf(set, 4), "Author");
  EXPECT_EQ(set.sections[0].find(2), nullptr);
}

TEST(DamagedSet, keeps_the_bytes_of_an_unknown_type) {
  const std::string bytes =
      ksv::test::summary({codePage(1252), typed(2, 0x4FF, "abcdefgh"), text(3, "x")});
  PropertySet set = readPropertySet(bytesOf(bytes));
  ASSERT_EQ(set.damages.size(), 1u);
  EXPECT_EQ(set.damages[0].kind, Damage::kUnknownType);
  EXPECT_EQ(set.damages[0].property, 2u);
  EXPECT_EQ(propertyOf(set, 2).value.bytes, "abcdefgh");
  EXPECT_EQ(propertyOf(set, 2).value.type, 0x4FF);
  EXPECT_EQ(written(set), bytes);
}

TEST(DamagedSet, has_a_property_outside_or_twice) {
  std::string bytes = sample();
  putDword(bytes, kList + 8 + 4, 0xFFFFFF00);
  EXPECT_EQ(damagesOf(bytes),
            (std::vector<DamageNote>{{Damage::kPropertyOutside, 0xFFFFFF00u + kSection, 0, 2}}));
  bytes = sample();
  putDword(bytes, kList + 16, 2);
  const PropertySet set = readPropertySet(bytesOf(bytes));
  ASSERT_EQ(set.damages.size(), 1u);
  EXPECT_EQ(set.damages[0].kind, Damage::kTwice);
}

TEST(DamagedSet, whose_section_says_another_size_is_read_all_the_same) {
  std::string bytes = sample();
  putDword(bytes, kSection, 0x7FFFFFFF);
  EXPECT_EQ(damagesOf(bytes), (std::vector<DamageNote>{{Damage::kSectionCut, kSection, 0, {}}}));
  putDword(bytes, kSection, 8);
  PropertySet set = readPropertySet(bytesOf(bytes));
  readTexts(set);
  EXPECT_EQ(textOf(set, 2), "Title");
  for (const DamageNote& note : set.damages) EXPECT_EQ(note.kind, Damage::kBeyondSection);
}

TEST(DamagedSet, with_a_cut_dictionary_has_the_names_in_front) {
  std::string names = dictionary({{2, "ab"}, {3, "cd"}}).value;
  putDword(names, 4 + 8 + 3 + 4, 0x70000000);
  PropertySet set =
      readPropertySet(bytesOf(ksv::test::summary({{0, names}, codePage(1252), text(2, "x")})));
  readTexts(set);
  EXPECT_EQ(propertyOf(set, 2).name, "ab");
  ASSERT_EQ(set.damages.size(), 1u);
  EXPECT_EQ(set.damages[0].kind, Damage::kDictionaryCut);
}

TEST(DamagedSet, with_values_within_values_ends) {
  std::string nested;
  for (int i = 0; i < 1000; ++i) nested += dwords({kVectorBit | kVariant, 1});
  const PropertySet set = readPropertySet(bytesOf(ksv::test::summary({{2, nested}})));
  ASSERT_EQ(set.damages.size(), 1u);
  EXPECT_EQ(set.damages[0].kind, Damage::kTooDeep);
}

// 60,000 properties at one place, a text as long as the set: 15 GB if each were read.
TEST(DamagedSet, whose_properties_lie_upon_each_other_costs_no_more_than_its_bytes) {
  constexpr uint32_t kCount = 60000;
  std::string bytes = ksv::test::summary({}).substr(0, kSection);
  const uint32_t place = 8 + 8 * kCount;
  constexpr uint32_t kLength = 250000;
  bytes += dwords({place + 8 + kLength, kCount});
  for (uint32_t id = 2; id < kCount + 2; ++id) bytes += dwords({id, place});
  bytes += dwords({kLpstr, kLength}) + std::string(kLength, 'a');
  const PropertySet set = readPropertySet(bytesOf(bytes));
  EXPECT_LE(set.sections[0].properties.size(), 4 * bytes.size() / kLength + 1);
  ASSERT_FALSE(set.damages.empty());
  EXPECT_EQ(set.damages.back().kind, Damage::kOverlapping);
}

TEST(DamagedSet, claims_of_vectors_and_arrays_cost_nothing) {
  const std::string bytes =
      ksv::test::summary({typed(2, kVectorBit | kI8, dwords({0xFFFFFFFF})),
                          typed(3, kVectorBit | kVariant, dwords({0xFFFFFFFF})),
                          typed(4, kArrayBit | kI4, dwords({kI4, 0xFFFFFFFF})),
                          typed(5, kArrayBit | kI4, dwords({kI4, 2, 0xFFFFFFFF, 0, 0xFFFFFFFF, 0})),
                          typed(6, kVectorBit | kEmpty, dwords({0xFFFFFFFF})),
                          typed(7, kVectorBit | kArrayBit | kI4, dwords({1, 1}))});
  const std::vector<DamageNote> damages = damagesOf(bytes);
  ASSERT_EQ(damages.size(), 6u);
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(damages[i].kind, Damage::kValueCut) << i;
  EXPECT_EQ(damages[4].kind, Damage::kUnknownType);
  EXPECT_EQ(damages[5].kind, Damage::kUnknownType);
}

// Nothing is read beyond a block of exactly that size, as sanitizers see.
void readExactly(std::string_view bytes) {
  const std::vector<char> block(bytes.begin(), bytes.end());
  PropertySet set = readPropertySet(bytesOf({block.data(), block.size()}));
  readTexts(set);
  std::set<std::tuple<Damage, uint64_t, std::optional<uint32_t>>> told;
  for (const DamageNote& note : set.damages)
    EXPECT_TRUE(told.emplace(note.kind, note.offset, note.property).second)
        << wordsOf(note.kind) << " at " << note.offset;
}

TEST(DamagedSet, is_read_at_every_length) {
  const std::string bytes = sample();
  for (size_t length = 0; length <= bytes.size(); ++length) readExactly(bytes.substr(0, length));
}

TEST(DamagedSet, is_read_with_every_byte_another_one) {
  const std::string bytes = sample();
  std::mt19937 random(ksv::test::testSeed());
  for (size_t i = 0; i < bytes.size(); ++i) {
    for (const int change : {1, 0x80, 0xFF, static_cast<int>(random() % 255 + 1)}) {
      std::string damaged = bytes;
      damaged[i] = static_cast<char>(damaged[i] ^ change);
      readExactly(damaged);
    }
  }
}

}  // namespace
}  // namespace ksv_kit::properties
