// Properties of documents, by what libksv exports.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "ksv.h"
#include "ksv.hpp"
#include "tests/ole/compound_writer.h"
#include "tests/ole/property_set_writer.h"

namespace ksv_kit_tests {
namespace {

using namespace ksv::test;  // what makes the documents
using std::string_literals::operator""s;

Property typed(uint32_t id, uint32_t type, std::string_view bytes) {
  return {id, dwords({type}) + std::string(bytes)};
}

std::string counted(std::string_view bytes) {
  return dwords({static_cast<uint32_t>(bytes.size())}) + std::string(bytes);
}

TEST(Properties, are_those_of_the_document_by_their_keys) {
  const std::string bytes =
      document(summary({codePage(1252), text(2, "\xE9t\xE9"), time(10, 600'000'000),
                        time(12, fileTime(2024, 2, 29)), typed(14, 3, dwords({7}))}),
               documentSummary({codePage(932), text(15, "\x89\xEF\x8E\xD0")}));
  ksv::Document opened = ksv::Document::open_memory(bytes);
  const ksv::Properties properties = ksv::Properties::of(opened);
  EXPECT_EQ(properties.text("title"), "été");
  EXPECT_EQ(properties.text("company"), "会社");
  EXPECT_EQ(properties.text("subject"), std::nullopt);
  EXPECT_EQ(properties.text("pages"), std::nullopt);
  const ksv_property* pages = properties.find("pages");
  ASSERT_NE(pages, nullptr);
  EXPECT_EQ(pages->id, 14u);
  EXPECT_EQ(pages->value.type, 3u);
  EXPECT_EQ(pages->value.form, KSV_VALUE_INTEGER);
  EXPECT_EQ(pages->value.integer, 7);
  EXPECT_EQ(properties.find("created")->value.form, KSV_VALUE_TIME);
  EXPECT_EQ(properties.find("created")->value.natural, fileTime(2024, 2, 29));
  EXPECT_EQ(properties.find("editingTime")->value.form, KSV_VALUE_DURATION);
  const auto sections = properties.sections();
  ASSERT_EQ(sections.size(), 2u);
  EXPECT_STREQ(sections[0].path, "\\x05SummaryInformation");
  EXPECT_STREQ(sections[0].format, "{F29F85E0-4FF9-1068-AB91-08002B27B3D9}");
  EXPECT_STREQ(sections[0].format_name, "summary");
  EXPECT_EQ(sections[0].offset, 48u);
  EXPECT_EQ(sections[0].code_page, 1252u);
  EXPECT_EQ(sections[0].property_count, 5u);
  EXPECT_EQ(sections[1].code_page, 932u);
  EXPECT_EQ(properties.properties(0).size(), 5u);
  EXPECT_STREQ(properties.properties(0)[1].key, "title");
  EXPECT_EQ(ksv_properties_at(properties.handle(), 0, 5), nullptr);
  EXPECT_EQ(ksv_properties_at(properties.handle(), 2, 0), nullptr);
  EXPECT_EQ(ksv_properties_section(properties.handle(), 2), nullptr);
}

TEST(Properties, of_bytes_have_values_of_every_form) {
  const std::string guid(16, '\x11');
  const std::string bytes = summary(
      {codePage(1252), typed(2, 0, ""), typed(3, 19, dwords({0xFFFFFFFF})),
       typed(4, 5, dwords({0, 0x40040000})), typed(5, 11, "\xFF\xFF"), typed(6, 7, dwords({0, 0})),
       typed(7, 6, dwords({12345, 0})), typed(8, 72, guid),
       typed(9, 71, counted(dwords({0xFFFFFFFF, 3}) + "META")), typed(10, 65, counted("\1\2"))});
  const ksv::Properties properties = ksv::Properties::read(bytes);
  const auto listed = properties.properties(0);
  ASSERT_EQ(listed.size(), 10u);
  const auto value = [&](uint32_t id) { return listed[id - 1].value; };
  EXPECT_EQ(value(2).form, KSV_VALUE_NOTHING);
  EXPECT_EQ(value(3).form, KSV_VALUE_NATURAL);
  EXPECT_EQ(value(3).natural, 0xFFFFFFFFu);
  EXPECT_EQ(value(4).form, KSV_VALUE_REAL);
  EXPECT_EQ(value(4).real, 2.5);
  EXPECT_EQ(value(5).form, KSV_VALUE_BOOLEAN);
  EXPECT_EQ(value(5).integer, 1);
  EXPECT_EQ(value(6).form, KSV_VALUE_DATE);
  EXPECT_EQ(value(7).form, KSV_VALUE_DECIMAL);
  EXPECT_STREQ(value(7).text, "1.2345");
  EXPECT_EQ(value(8).form, KSV_VALUE_CLASS_ID);
  EXPECT_STREQ(value(8).text, "{11111111-1111-1111-1111-111111111111}");
  EXPECT_EQ(value(9).form, KSV_VALUE_CLIPBOARD);
  EXPECT_STREQ(value(9).text, "Windows metafile");
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(value(9).bytes), value(9).byte_count),
            "META");
  EXPECT_EQ(value(10).form, KSV_VALUE_BYTES);
  EXPECT_EQ(value(10).byte_count, 2u);
  EXPECT_STREQ(properties.sections()[0].path, "");
}

TEST(Properties, have_elements_names_and_notes) {
  const std::string names = dwords({1, 9, 6}) + "Parts\0"s;
  const std::string bytes =
      summary({{0, names},
               codePage(1200),
               typed(2, 0x1003, dwords({2, 5, 0xFFFFFFFF})),
               typed(9, 0x100C, dwords({2, 31, 2}) + words(u"\u8868\0"s) + dwords({3, 8})),
               text(4, "bytes, not units")});
  const ksv::Properties properties = ksv::Properties::read(bytes);
  const auto numbers = properties.elements(ksv_properties_at(properties.handle(), 0, 1));
  ASSERT_EQ(numbers.size(), 2u);
  EXPECT_EQ(numbers[1].integer, -1);
  const auto parts = properties.elements(ksv_properties_at(properties.handle(), 0, 2));
  ASSERT_EQ(parts.size(), 2u);
  EXPECT_STREQ(parts[0].text, "表");
  EXPECT_EQ(parts[1].integer, 8);
  EXPECT_STREQ(properties.find("author")->note,
               "code page 1200 is declared, and the text is read as windows-1252");
  EXPECT_EQ(properties.find("title")->note, nullptr);
}

TEST(Properties, with_names_of_users_are_found_by_them) {
  const std::string names = dwords({1, 2, 8}) + "Project\0"s;
  const ksv::Properties properties = ksv::Properties::read(
      propertySet({{std::string(16, 'f'), section({{0, names}, codePage(1252), text(2, "x")})}}));
  EXPECT_EQ(properties.text("Project"), "x");
  EXPECT_EQ(properties.find("Project")->key, nullptr);
  EXPECT_EQ(properties.sections()[0].format_name, nullptr);
}

TEST(Properties, that_are_damaged_are_told_with_their_places) {
  std::string bytes = summary({codePage(1252), text(2, "Title")});
  putDword(bytes, 84, 0x7FFFFFFF);
  const ksv::Properties properties = ksv::Properties::read(bytes);
  const auto damages = properties.damages();
  ASSERT_EQ(damages.size(), 1u);
  EXPECT_EQ(damages[0].kind, KSV_PROPERTY_VALUE_CUT);
  EXPECT_EQ(damages[0].has_id, 1u);
  EXPECT_EQ(damages[0].id, 2u);
  EXPECT_EQ(damages[0].offset, 80u);
  EXPECT_STREQ(damages[0].message, "a value is cut");
  EXPECT_EQ(ksv::Properties::read("no set").damages()[0].kind, KSV_PROPERTY_NO_HEADER);
}

TEST(Properties, of_all_streams_are_those_that_begin_as_sets) {
  CompoundWriter writer;
  writer.addStream(0, u"other", summary({text(2, "inner")}));
  writer.addStream(0, u"none", "a stream of something else than a set");
  const std::string bytes = writer.write();
  ksv::Document opened = ksv::Document::open_memory(bytes);
  EXPECT_TRUE(ksv::Properties::of(opened).sections().empty());
  const ksv::Properties all = ksv::Properties::of(opened, KSV_PROPERTIES_ALL);
  ASSERT_EQ(all.sections().size(), 1u);
  EXPECT_STREQ(all.sections()[0].path, "other");
}

TEST(Properties, come_with_the_kind_of_the_document) {
  CompoundWriter writer;
  writer.addStream(0, u"WordDocument", "\xEC\xA5"s + std::string(8, '\0') + "\1\0"s);
  const std::string bytes = writer.write();
  ksv::Document opened = ksv::Document::open_memory(bytes);
  const ksv::DocumentKind kind = ksv::kind_of(opened);
  EXPECT_EQ(kind.name, "word");
  EXPECT_EQ(kind.description, "Word document");
  EXPECT_EQ(kind.confidence, 0.95);
  EXPECT_EQ(kind.is_template, true);
  EXPECT_FALSE(kind.is_encrypted);
  const std::string nothing = CompoundWriter().write();
  ksv::Document other = ksv::Document::open_memory(nothing);
  EXPECT_EQ(ksv::kind_of(other).name, "");
  EXPECT_EQ(ksv::kind_of(other).is_template, std::nullopt);
}

TEST(Properties, refuse_what_is_not_there) {
  ksv_error error;
  ksv_properties* properties = nullptr;
  EXPECT_EQ(ksv_properties_read(nullptr, 1, &properties, &error), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_properties_read("x", 1, nullptr, &error), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_document_properties(nullptr, 0, &properties, nullptr), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_document_get_kind(nullptr, nullptr, nullptr), KSV_BAD_ARGUMENT);
  const std::string bytes = CompoundWriter().write();
  ksv::Document opened = ksv::Document::open_memory(bytes);
  EXPECT_EQ(ksv_document_properties(opened.handle(), 2, &properties, &error), KSV_BAD_ARGUMENT);
  EXPECT_EQ(properties, nullptr);
  ksv_properties_free(nullptr);
  EXPECT_EQ(ksv_properties_section_count(nullptr), 0u);
  EXPECT_EQ(ksv_properties_find(nullptr, "title"), nullptr);
  EXPECT_EQ(ksv_properties_damage_count(nullptr), 0u);
  EXPECT_EQ(ksv_properties_damage(nullptr, 0), nullptr);
  ksv_property_value value;
  EXPECT_EQ(ksv_properties_element(nullptr, nullptr, 0, &value), 0);
}

}  // namespace
}  // namespace ksv_kit_tests
