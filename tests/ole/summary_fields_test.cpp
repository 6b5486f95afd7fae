// Which properties are taken of which kind of document.
#include "ole/summary_fields.h"

#include <map>
#include <set>

#include "tests/ole/summary_reader.h"

namespace ksv::test {
namespace {

// Written out as they are told: every kind code with its identifiers.
std::map<uint16_t, std::set<uint32_t>> takenByKind() {
  const std::set<uint32_t> slides = {2,    3,    4,    5,    6,    8,    9,   4098,
                                     4099, 4100, 4102, 4103, 4104, 4110, 4111};
  std::set<uint32_t> slidesWithTime = slides;
  slidesWithTime.insert(12);
  std::map<uint16_t, std::set<uint32_t>> taken;
  for (const uint16_t kind : std::initializer_list<uint16_t>{9003, 9004})
    taken[kind] = slidesWithTime;
  for (const uint16_t kind : std::initializer_list<uint16_t>{7000, 7001, 7006, 7008, 21000, 21001,
                                                             21002, 21003, 21004, 21005, 21006}) {
    taken[kind] = slides;
  }
  for (const uint16_t kind : std::initializer_list<uint16_t>{6000, 6001, 6002, 6004, 6008}) {
    taken[kind] = {2, 3, 4, 5, 6, 12, 4098, 4110, 4111};
  }
  for (const uint16_t kind : std::initializer_list<uint16_t>{
           5000, 5001, 5002, 5003, 5004, 5005, 5006, 5007, 12000, 12001, 12002, 15000, 15001, 17000,
           17001, 21007, 21008, 21009, 21015}) {
    taken[kind] = {2, 3, 4, 5, 6, 4098, 4110, 4111};
  }
  taken[10002] = {2, 3, 4, 5, 6, 12, 13, 18};
  return taken;
}

const std::map<uint32_t, uint32_t> kOffsets = {
    {2, 0},        {4, 1028},     {5, 2056},     {3, 3084},     {6, 4112},   {4110, 5140},
    {4111, 6168},  {4098, 7196},  {12, 8224},    {8, 9508},     {9, 10536},  {4103, 13392},
    {4102, 13648}, {4100, 13904}, {4104, 14160}, {4099, 14416}, {13, 15700}, {18, 15956}};

TEST(SummaryFields, are_those_of_the_kind_for_every_kind_code) {
  const auto taken = takenByKind();
  for (uint32_t code = 0; code <= 0xFFFF; ++code) {
    const uint16_t kind = static_cast<uint16_t>(code);
    const auto expected = taken.find(kind);
    for (uint32_t id = 0; id < 30; ++id) {
      for (const PropertySet set : {PropertySet::kSummary, PropertySet::kDocumentSummary}) {
        const uint32_t number = set == PropertySet::kSummary ? id : id + 4096;
        const bool isTaken = expected != taken.end() && expected->second.contains(number);
        const auto field = SummaryKind(kind).field(set, id);
        ASSERT_EQ(field.has_value(), isTaken) << kind << " " << number;
        if (field) {
          ASSERT_EQ(field->offset, kOffsets.at(number)) << number;
        }
      }
    }
  }
}

TEST(SummaryFields, do_not_wrap_and_do_not_mix_the_sets) {
  const SummaryKind kind(9003);
  for (const uint32_t id : {4098u, 4110u, 0xFFFFF002u, 0xFFFFFFFFu, 65538u}) {
    EXPECT_FALSE(kind.field(PropertySet::kSummary, id)) << id;
    EXPECT_FALSE(kind.field(PropertySet::kDocumentSummary, id)) << id;
  }
}

class SummaryFieldsInDocuments : public SummaryTest {};

TEST_F(SummaryFieldsInDocuments, stand_where_the_record_has_them) {
  std::vector<Property> summaryProperties;
  std::vector<Property> documentProperties;
  for (uint32_t id = 2; id < 20; ++id) {
    summaryProperties.push_back(text(id, "summary " + std::to_string(id)));
    documentProperties.push_back(text(id, "document " + std::to_string(4096 + id)));
  }
  const std::string bytes =
      document(summary(summaryProperties), documentSummary(documentProperties));
  for (const auto& [kind, ids] : takenByKind()) {
    const Reading reading = readDocument(bytes, kind);
    EXPECT_EQ(reading.result, 0u);
    std::string expected(KSV_SUMMARY_RECORD_SIZE, '\0');
    for (const uint32_t id : ids) {
      std::string value = (id < 4096 ? "summary " : "document ") + std::to_string(id);
      if (kind == 10002 && id == 3) value.resize(std::min<size_t>(value.size(), 16));
      expected.replace(kOffsets.at(id), value.size(), value);
    }
    EXPECT_TRUE(reading.record == expected) << kind;
  }
  EXPECT_TRUE(readDocument(bytes, 0).isEmpty());
  EXPECT_TRUE(readDocument(bytes, 9005).isEmpty());
}

TEST_F(SummaryFieldsInDocuments, of_kind_10002_are_cut_to_their_own_lengths) {
  const std::string longText(255, 'a');
  std::vector<Property> properties;
  for (const uint32_t id : {2, 3, 4, 5, 6, 18}) properties.push_back(text(id, longText));
  const Reading reading = readSummary(properties, kShort);
  EXPECT_EQ(reading[KSV_SUMMARY_TITLE].size(), 255u);
  EXPECT_EQ(reading[KSV_SUMMARY_SUBJECT].size(), 16u);
  EXPECT_EQ(reading[KSV_SUMMARY_AUTHOR].size(), 30u);
  EXPECT_EQ(reading[KSV_SUMMARY_KEYWORDS].size(), 210u);
  EXPECT_EQ(reading[KSV_SUMMARY_COMMENTS].size(), 80u);
  EXPECT_EQ(reading[KSV_SUMMARY_APPLICATION].size(), 30u);
  // The cut may go through a character: its lead byte is skipped as invalid.
  EXPECT_EQ(readSummary({text(3, "123456789012345\x82\xA0")}, kShort)[KSV_SUMMARY_SUBJECT],
            "123456789012345");
}

}  // namespace
}  // namespace ksv::test
