#include "kit/documents/properties/property_changes.h"

#include <gtest/gtest.h>

#include "kit/documents/properties/code_page_text.h"
#include "kit/documents/properties/property_set_writer.h"
#include "tests/kit/documents/properties/made_set.h"

namespace ksv_kit::properties {
namespace {

using ksv::test::codePage;
using ksv::test::dwords;
using ksv::test::text;
using std::string_literals::operator""s;

PropertySet again(const PropertySet& set) {
  PropertySet read = readPropertySet(bytesOf(written(set)));
  readTexts(read);
  EXPECT_EQ(read.damages, std::vector<DamageNote>());
  return read;
}

TEST(PropertyChanges, set_a_text_in_the_code_page_of_the_section) {
  PropertySet set = readSummary({codePage(932), text(2, "\x95\x5C"), text(4, "Author")});
  setProperty(set.sections[0], 2, textValue("漢字"));
  const PropertySet read = again(set);
  EXPECT_EQ(read.sections[0].codePage, 932);
  EXPECT_EQ(propertyOf(read, 2).value.bytes, "\x8A\xBF\x8E\x9A\0"s);
  EXPECT_EQ(textOf(read, 4), "Author");
}

TEST(PropertyChanges, move_all_texts_to_utf_8_where_the_code_page_lacks_a_character) {
  PropertySet set = readSummary(
      {dictionary({{9, "caf\xE9"}}), codePage(1252), text(2, "\xE9t\xE9"),
       typed(3, kVectorBit | kLpstr, dwords({2}) + counted("\xE9\0"s) + counted("b\0"s)),
       typed(9, kI4, dwords({5}))});
  setProperty(set.sections[0], 4, textValue("表"));
  const PropertySet read = again(set);
  EXPECT_EQ(read.sections[0].codePage, kUtf8Page);
  EXPECT_EQ(textOf(read, 4), "表");
  EXPECT_EQ(textOf(read, 2), "été");
  EXPECT_EQ(propertyOf(read, 3).value.elements[0].text, "é");
  EXPECT_EQ(propertyOf(read, 9).name, "café");
  EXPECT_EQ(propertyOf(read, 2).notes, std::vector<std::string>());
}

TEST(PropertyChanges, leave_utf_16_as_it_is) {
  PropertySet set = readSummary({codePage(1200), typed(2, kLpstr, counted("a\0\0\0"s))});
  setProperty(set.sections[0], 3, textValue("表"));
  const PropertySet read = again(set);
  EXPECT_EQ(read.sections[0].codePage, kUtf16Page);
  EXPECT_EQ(textOf(read, 3), "表");
  EXPECT_EQ(textOf(read, 2), "a");
}

TEST(PropertyChanges, stand_as_utf_16_beside_texts_that_nobody_can_read) {
  PropertySet set = readSummary({codePage(29001), text(2, "a\xE9")});
  setProperty(set.sections[0], 3, textValue("表"));
  const PropertySet read = again(set);
  EXPECT_EQ(propertyOf(read, 3).value.type, kLpwstr);
  EXPECT_EQ(textOf(read, 3), "表");
  EXPECT_EQ(propertyOf(read, 2).value.bytes, "a\xE9\0"s);
}

// Bytes of which both readings make sense are written so that there is one.
TEST(PropertyChanges, are_read_back_as_they_were_meant) {
  for (const std::string text : {"Ã©", "Ã¼ber", "“ú–{Œê‚Ì•¶‘", "†††", "†℡"}) {
    for (const uint16_t page : {uint16_t{1252}, uint16_t{1200}, uint16_t{932}}) {
      PropertySet set = readSummary({codePage(page)});
      setProperty(set.sections[0], 2, textValue(text));
      EXPECT_EQ(textOf(again(set), 2), text) << page;
    }
  }
}

TEST(PropertyChanges, cannot_name_a_property_beside_texts_that_nobody_can_read) {
  PropertySet set = newPropertySet(kDocumentSummaryFormat);
  Section& section = sectionOf(set, kUserDefinedFormat);
  section.codePage = 29001;
  section.dictionary.push_back({2, "a\xE9\0"s, "a\uFFFD"});
  EXPECT_THROW(setCustomProperty(set, "Name", textValue("x")), UnwritableName);
}

TEST(PropertyChanges, replace_and_remove) {
  PropertySet set = readSummary({codePage(1252), text(2, "old"), text(3, "subject")});
  setProperty(set.sections[0], 2, textValue("new"));
  setProperty(set.sections[0], 12, numberValue(kFileTime, 77));
  EXPECT_TRUE(removeProperty(set.sections[0], 3));
  EXPECT_FALSE(removeProperty(set.sections[0], 3));
  const PropertySet read = again(set);
  EXPECT_EQ(textOf(read, 2), "new");
  EXPECT_EQ(unsignedOf(propertyOf(read, 12).value), 77u);
  EXPECT_EQ(read.sections[0].find(3), nullptr);
  EXPECT_EQ(read.sections[0].properties.size(), 3u);
}

const Property* custom(const PropertySet& set, std::string_view name) {
  const Section* const section = set.find(kUserDefinedFormat);
  if (section == nullptr) return nullptr;
  for (const Property& property : section->properties)
    if (property.name == name) return &property;
  return nullptr;
}

TEST(PropertyChanges, set_and_remove_properties_with_names_of_users) {
  PropertySet set = newPropertySet(kDocumentSummaryFormat);
  setCustomProperty(set, "Project", textValue("Ω"));
  setCustomProperty(set, "Count", numberValue(kI4, 7));
  setCustomProperty(set, "Done", booleanValue(true));
  setCustomProperty(set, "件名", textValue("表"));
  setCustomProperty(set, "count", numberValue(kI4, 8));
  PropertySet read = again(set);
  ASSERT_EQ(read.sections.size(), 2u);
  EXPECT_EQ(read.sections[0].format, kDocumentSummaryFormat);
  ASSERT_NE(custom(read, "Project"), nullptr);
  EXPECT_EQ(custom(read, "Project")->value.text, "Ω");
  EXPECT_EQ(signedOf(custom(read, "Count")->value), 8);
  EXPECT_TRUE(truthOf(custom(read, "Done")->value));
  EXPECT_EQ(custom(read, "件名")->value.text, "表");
  EXPECT_TRUE(removeCustomProperty(read, "COUNT"));
  EXPECT_FALSE(removeCustomProperty(read, "COUNT"));
  read = again(read);
  EXPECT_EQ(custom(read, "Count"), nullptr);
  EXPECT_NE(custom(read, "Done"), nullptr);
  EXPECT_EQ(read.sections[1].dictionary.size(), 3u);
}

TEST(PropertyChanges, take_a_link_away_with_its_property) {
  PropertySet set = newPropertySet(kDocumentSummaryFormat);
  setCustomProperty(set, "Linked", textValue("x"));
  Section& section = sectionOf(set, kUserDefinedFormat);
  setProperty(section, 0x01000002, textValue("Bookmark"));
  EXPECT_TRUE(removeCustomProperty(set, "Linked"));
  EXPECT_EQ(section.find(0x01000002), nullptr);
}

}  // namespace
}  // namespace ksv_kit::properties
