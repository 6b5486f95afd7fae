#include "kit/documents/properties/property_set.h"

#include <gtest/gtest.h>

#include "kit/documents/properties/known_properties.h"
#include "tests/kit/documents/properties/made_set.h"

namespace ksv_kit::properties {
namespace {

using ksv::test::codePage;
using ksv::test::dwords;
using ksv::test::text;
using ksv::test::words;
using std::string_literals::operator""s;

TEST(PropertySet, has_the_class_the_sections_and_their_formats) {
  const std::string bytes =
      ksv::test::propertySet({{std::string(kDocumentSummaryFormat), ksv::test::section({})},
                              {std::string(kUserDefinedFormat), ksv::test::section({})}});
  const PropertySet set = readPropertySet(bytesOf(bytes));
  ASSERT_EQ(set.sections.size(), 2u);
  EXPECT_EQ(set.sections[0].format, kDocumentSummaryFormat);
  EXPECT_EQ(set.sections[0].offset, 68u);
  EXPECT_EQ(set.sections[1].format, kUserDefinedFormat);
  EXPECT_EQ(set.classId.size(), 16u);
  EXPECT_TRUE(set.damages.empty());
}

TEST(PropertySet, has_numbers_of_every_type) {
  const PropertySet set = readSummary(
      {typed(2, kI1, "\xFE"), typed(3, kUi1, "\xFE"), typed(4, kI2, "\xFE\xFF"),
       typed(5, kUi2, "\xFE\xFF"), typed(6, kI4, dwords({0xFFFFFFFE})),
       typed(7, kUi4, dwords({0xFFFFFFFE})), typed(8, kInt, dwords({0x80000000})),
       typed(9, kUint, dwords({0x80000000})), typed(10, kI8, dwords({0xFFFFFFFE, 0xFFFFFFFF})),
       typed(11, kUi8, dwords({0xFFFFFFFE, 0xFFFFFFFF})), typed(12, kError, dwords({0x80004005})),
       typed(13, kR4, dwords({0x3FA00000})), typed(14, kR8, dwords({0, 0xC0040000}))});
  EXPECT_TRUE(set.damages.empty());
  const auto integer = [&](uint32_t id) { return signedOf(propertyOf(set, id).value); };
  const auto natural = [&](uint32_t id) { return unsignedOf(propertyOf(set, id).value); };
  EXPECT_EQ(integer(2), -2);
  EXPECT_EQ(natural(3), 0xFEu);
  EXPECT_EQ(integer(4), -2);
  EXPECT_EQ(natural(5), 0xFFFEu);
  EXPECT_EQ(integer(6), -2);
  EXPECT_EQ(natural(7), 0xFFFFFFFEu);
  EXPECT_EQ(integer(8), INT32_MIN);
  EXPECT_EQ(natural(9), 0x80000000u);
  EXPECT_EQ(integer(10), -2);
  EXPECT_EQ(natural(11), 0xFFFFFFFFFFFFFFFEu);
  EXPECT_EQ(integer(12), static_cast<int32_t>(0x80004005));
  EXPECT_EQ(realOf(propertyOf(set, 13).value), 1.25);
  EXPECT_EQ(realOf(propertyOf(set, 14).value), -2.5);
}

TEST(PropertySet, has_booleans_decimals_and_amounts) {
  const PropertySet set =
      readSummary({typed(2, kBool, "\xFF\xFF"), typed(3, kBool, "\0\0"s),
                   typed(4, kCurrency, dwords({0xFFFFCFC7, 0xFFFFFFFF})),  // -12345
                   typed(5, kDecimal, "\0\0\x03\x80"s + dwords({0, 12345, 0})),
                   typed(6, kDecimal, "\0\0\x1C\0"s + dwords({0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF})),
                   typed(7, kDecimal, "\0\0\x1D\0"s + dwords({0, 1, 0}))});
  EXPECT_TRUE(truthOf(propertyOf(set, 2).value));
  EXPECT_FALSE(truthOf(propertyOf(set, 3).value));
  EXPECT_EQ(decimalOf(propertyOf(set, 4).value), "-1.2345");
  EXPECT_EQ(decimalOf(propertyOf(set, 5).value), "-12.345");
  EXPECT_EQ(decimalOf(propertyOf(set, 6).value), "7.9228162514264337593543950335");
  EXPECT_EQ(decimalOf(propertyOf(set, 7).value), "");
}

TEST(PropertySet, has_nothing_and_null) {
  const PropertySet set = readSummary({typed(2, kEmpty, ""), typed(3, kNull, ""), text(4, "x")});
  EXPECT_EQ(propertyOf(set, 2).value.type, kEmpty);
  EXPECT_EQ(propertyOf(set, 3).value.type, kNull);
  EXPECT_EQ(textOf(set, 4), "x");
}

TEST(PropertySet, has_texts_whole_and_in_every_type) {
  const std::string longText(70000, 'a');
  const PropertySet set = readSummary(
      {codePage(1252), text(2, longText), typed(3, kLpwstr, countedUnits(u"\u8868\U0001F600\0"s)),
       typed(4, kBstr, counted("b\xE9\0"s)), typed(5, kStream, counted("Contents\0"s)),
       typed(6, kStorage, counted("prop6\0"s)), typed(7, kLpstr, counted(""))});
  EXPECT_EQ(textOf(set, 2), longText);
  EXPECT_EQ(textOf(set, 3), "表😀");
  EXPECT_EQ(textOf(set, 4), "bé");
  EXPECT_EQ(textOf(set, 5), "Contents");
  EXPECT_EQ(textOf(set, 6), "prop6");
  EXPECT_EQ(textOf(set, 7), "");
  EXPECT_EQ(set.damages, std::vector<DamageNote>());
}

TEST(PropertySet, tells_what_stands_behind_the_end_of_a_text) {
  const PropertySet set = readSummary({codePage(1252), typed(2, kLpstr, counted("ab\0cd"s))});
  EXPECT_EQ(textOf(set, 2), "ab");
  EXPECT_EQ(notesOf(set, 2),
            std::vector<std::string>{"more bytes stand behind the end of the text"});
}

TEST(PropertySet, has_blobs_class_ids_and_versioned_streams) {
  const std::string guid("\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10");
  const PropertySet set =
      readSummary({typed(2, kBlob, counted("\0\1\2"s)), typed(3, kClassId, guid),
                   typed(4, kVersionedStream, guid + counted("prop4\0"s))});
  EXPECT_EQ(propertyOf(set, 2).value.bytes, "\0\1\2"s);
  EXPECT_EQ(guidText(propertyOf(set, 3).value.bytes), "{04030201-0605-0807-090A-0B0C0D0E0F10}");
  EXPECT_EQ(textOf(set, 4), "prop4");
}

TEST(PropertySet, has_thumbnails_with_their_formats) {
  const PropertySet set = readSummary(
      {typed(2, kClipboard, counted(dwords({0xFFFFFFFF, 3}) + "META")),
       typed(3, kClipboard, counted(dwords({0xFFFFFFFE}) + "PICT" + "data")),
       typed(4, kClipboard, counted(dwords({4}) + "PNG\0"s + "png")),
       typed(5, kClipboard, counted(dwords({0}) + "none")), typed(6, kClipboard, counted("\1"s))});
  EXPECT_EQ(clipboardFormat(propertyOf(set, 2).value), "Windows metafile");
  EXPECT_EQ(clipboardBytes(propertyOf(set, 2).value), "META");
  EXPECT_EQ(clipboardFormat(propertyOf(set, 3).value), "Macintosh format 1413695824");
  EXPECT_EQ(clipboardBytes(propertyOf(set, 3).value), "data");
  EXPECT_EQ(clipboardFormat(propertyOf(set, 4).value), "PNG");
  EXPECT_EQ(clipboardBytes(propertyOf(set, 4).value), "png");
  EXPECT_EQ(clipboardBytes(propertyOf(set, 5).value), "none");
  EXPECT_EQ(clipboardFormat(propertyOf(set, 6).value), "");
}

TEST(PropertySet, has_vectors_of_numbers_without_an_object_for_each) {
  const PropertySet set =
      readSummary({typed(2, kVectorBit | kI2, dwords({3}) + words(u"\u0001\u0002\uFFFF")),
                   typed(3, kVectorBit | kUi1, dwords({5}) + "abcde"),
                   typed(4, kVectorBit | kI4, dwords({0}))});
  const Value& shorts = propertyOf(set, 2).value;
  ASSERT_EQ(shorts.elementCount(), 3u);
  EXPECT_TRUE(shorts.elements.empty());
  EXPECT_EQ(signedOf(shorts.element(2)), -1);
  EXPECT_EQ(propertyOf(set, 3).value.bytes, "abcde");
  EXPECT_EQ(propertyOf(set, 4).value.elementCount(), 0u);
  EXPECT_EQ(set.damages, std::vector<DamageNote>());
}

std::vector<std::string> textsOf(const Value& value) {
  std::vector<std::string> texts;
  for (const Value& element : value.elements) texts.push_back(element.text);
  return texts;
}

TEST(PropertySet, has_vectors_of_texts_that_are_filled_up_and_that_are_not) {
  const std::vector<std::string> texts = {"ab", "c", "", "defg"};
  const std::string unfilled =
      dwords({4}) + counted("ab\0"s) + counted("c\0"s) + counted("\0"s) + counted("defg\0"s);
  const std::string filled = dwords({4}) + counted("ab\0"s) + "\0"s + counted("c\0"s) + "\0\0"s +
                             counted("\0"s) + "\0\0\0"s + counted("defg\0"s);
  const PropertySet set = readSummary({codePage(1252), typed(2, kVectorBit | kLpstr, unfilled),
                                       typed(3, kVectorBit | kLpstr, filled)});
  EXPECT_EQ(textsOf(propertyOf(set, 2).value), texts);
  EXPECT_EQ(textsOf(propertyOf(set, 3).value), texts);
  EXPECT_EQ(set.damages, std::vector<DamageNote>());
}

TEST(PropertySet, has_vectors_of_wide_texts) {
  const std::string units = dwords({2}) + countedUnits(u"ab\0"s) + "\0\0"s + countedUnits(u"表\0"s);
  const PropertySet set = readSummary({typed(2, kVectorBit | kLpwstr, units)});
  EXPECT_EQ(textsOf(propertyOf(set, 2).value), (std::vector<std::string>{"ab", "表"}));
}

TEST(PropertySet, has_vectors_of_variants) {
  const std::string pairs = dwords({4}) + dwords({kLpstr}) + counted("Title\0"s) +
                            dwords({kI4, 1}) + dwords({kLpstr}) + counted("Sheets\0"s) +
                            dwords({kI2}) + words(u"\u0003\0"s);
  const PropertySet set =
      readSummary({codePage(1252), typed(2, kVectorBit | kVariant, pairs), text(3, "behind")});
  const Value& value = propertyOf(set, 2).value;
  ASSERT_EQ(value.elements.size(), 4u);
  EXPECT_EQ(value.elements[0].text, "Title");
  EXPECT_EQ(signedOf(value.elements[1]), 1);
  EXPECT_EQ(value.elements[2].text, "Sheets");
  EXPECT_EQ(signedOf(value.elements[3]), 3);
  EXPECT_EQ(textOf(set, 3), "behind");
}

TEST(PropertySet, has_arrays_with_their_dimensions) {
  const std::string array = dwords({kI4, 2, 2, 0, 3, 0xFFFFFFFF}) + dwords({1, 2, 3, 4, 5, 6});
  const PropertySet set = readSummary({typed(2, kArrayBit | kI4, array)});
  const Value& value = propertyOf(set, 2).value;
  EXPECT_EQ(value.dimensions, (std::vector<Dimension>{{2, 0}, {3, -1}}));
  ASSERT_EQ(value.elementCount(), 6u);
  EXPECT_EQ(signedOf(value.element(5)), 6);
}

TEST(PropertySet, names_its_properties_by_the_dictionary) {
  const PropertySet set = readSummary({dictionary({{2, "caf\xE9"}, {7, "Other"}}), codePage(1252),
                                       text(2, "x"), text(7, "y"), text(8, "z")});
  EXPECT_EQ(propertyOf(set, 2).name, "café");
  EXPECT_EQ(propertyOf(set, 7).name, "Other");
  EXPECT_EQ(propertyOf(set, 8).name, "");
  EXPECT_EQ(set.sections[0].dictionary.size(), 2u);
}

TEST(PropertySet, names_its_properties_by_a_dictionary_in_utf_16) {
  const std::string names =
      dwords({2, 2, 3}) + words(u"ab\0"s) + "\0\0"s + dwords({3, 2}) + words(u"表\0"s);
  const PropertySet set = readSummary({{kDictionaryId, names},
                                       codePage(1200),
                                       typed(2, kI4, dwords({1})),
                                       typed(3, kI4, dwords({2}))});
  EXPECT_EQ(propertyOf(set, 2).name, "ab");
  EXPECT_EQ(propertyOf(set, 3).name, "表");
}

TEST(PropertySet, names_types_as_the_format_does) {
  EXPECT_EQ(typeName(kLpstr), "VT_LPSTR");
  EXPECT_EQ(typeName(kVectorBit | kVariant), "VT_VECTOR|VT_VARIANT");
  EXPECT_EQ(typeName(kArrayBit | kUi8), "VT_ARRAY|VT_UI8");
  EXPECT_EQ(typeName(0x1F), "VT_LPWSTR");
  EXPECT_EQ(typeName(0x4FF), "VT_0x4FF");
}

}  // namespace
}  // namespace ksv_kit::properties
