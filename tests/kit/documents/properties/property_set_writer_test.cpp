#include "kit/documents/properties/property_set_writer.h"

#include <gtest/gtest.h>

#include <random>

#include "kit/documents/properties/code_page_text.h"
#include "kit/documents/properties/known_properties.h"
#include "tests/kit/documents/properties/made_set.h"
#include "tests/system/system.h"

namespace ksv_kit::properties {
namespace {

using ksv::test::codePage;
using ksv::test::dwords;
using ksv::test::text;
using std::string_literals::operator""s;

TEST(PropertySetWriter, writes_what_was_read_with_the_same_bytes) {
  const std::string bytes = ksv::test::propertySet(
      {{std::string(kDocumentSummaryFormat),
        ksv::test::section({codePage(1252), text(2, "Category"),
                            typed(12, kVectorBit | kVariant,
                                  dwords({2, kLpstr}) + counted("Title\0"s) + dwords({kI4, 1}))})},
       {std::string(kUserDefinedFormat),
        ksv::test::section({dictionary({{2, "ab"}, {3, "c"}}), codePage(1252), text(2, "x"),
                            typed(3, kBool, "\xFF\xFF\0\0"s)})}});
  EXPECT_EQ(written(readPropertySet(bytesOf(bytes))), bytes);
}

// Values of every type.
class RandomSets {
 public:
  explicit RandomSets(uint32_t seed) : random_(seed) {}

  PropertySet next() {
    PropertySet set;
    set.version = static_cast<uint16_t>(random_() % 2);
    set.system = number();
    set.classId = bytes(16);
    const size_t sections = 1 + random_() % 2;
    for (size_t i = 0; i < sections; ++i) set.sections.push_back(section(i));
    return set;
  }

 private:
  uint32_t number() { return static_cast<uint32_t>(random_()); }

  std::string bytes(size_t size) {
    std::string made;
    while (made.size() < size) made.push_back(static_cast<char>(random_()));
    return made;
  }

  std::string text(uint16_t page) {
    static const std::vector<std::string> pieces = {"a", "Title ", "é", "ß", "0"};
    std::string made;
    for (size_t i = random_() % 12; i > 0; --i) made += pieces[random_() % pieces.size()];
    return terminatedText(page, made).value();
  }

  Value single(uint16_t type) {
    Value value;
    value.type = type;
    switch (layoutOf(type)) {
      case Layout::kFixed:
        value.bytes = bytes(fixedSizeOf(type));
        break;
      case Layout::kWide:
        value.bytes = text(kUtf16Page);
        break;
      case Layout::kVersioned:
        value.bytes = bytes(16) + text(page_);
        break;
      default:
        value.bytes = isCodePageText(type) ? text(page_) : bytes(random_() % 20);
    }
    return value;
  }

  uint16_t anyType() {
    static constexpr uint16_t kTypes[] = {kEmpty,
                                          kNull,
                                          kI2,
                                          kI4,
                                          kR4,
                                          kR8,
                                          kCurrency,
                                          kDate,
                                          kBstr,
                                          kError,
                                          kBool,
                                          kDecimal,
                                          kI1,
                                          kUi1,
                                          kUi2,
                                          kUi4,
                                          kI8,
                                          kUi8,
                                          kInt,
                                          kUint,
                                          kLpstr,
                                          kLpwstr,
                                          kFileTime,
                                          kBlob,
                                          kStream,
                                          kStorage,
                                          kStreamedObject,
                                          kStoredObject,
                                          kBlobObject,
                                          kClipboard,
                                          kClassId,
                                          kVersionedStream};
    return kTypes[random_() % std::size(kTypes)];
  }

  Value any() {
    const uint16_t type = anyType();
    const uint32_t shape = number() % 4;
    if (shape < 2) return single(type);
    Value value;
    const bool isOfVariants =
        random_() % 3 == 0 || fixedSizeOf(type) + (layoutOf(type) != Layout::kFixed) == 0;
    const uint16_t base = isOfVariants ? uint16_t{kVariant} : type;
    value.type = static_cast<uint16_t>(base | (shape == 2 ? kVectorBit : kArrayBit));
    const uint32_t count = number() % 5;
    if (shape == 3) value.dimensions = {{count, -1}, {1, 7}};
    for (uint32_t i = 0; i < count; ++i) {
      Value element = single(isOfVariants ? anyType() : type);
      if (fixedSizeOf(base) != 0)
        value.bytes += element.bytes;
      else
        value.elements.push_back(std::move(element));
    }
    return value;
  }

  Section section(size_t index) {
    static constexpr uint16_t kPages[] = {1252, 1200, 65001};
    page_ = kPages[random_() % 3];
    Section made;
    made.format = index == 0 ? kDocumentSummaryFormat : kUserDefinedFormat;
    made.codePage = page_;
    Property declared;
    declared.id = kCodePageId;
    declared.value = numberValue(kI2, page_);
    made.properties.push_back(declared);
    const uint32_t count = number() % 8;
    for (uint32_t id = 2; id < 2 + count; ++id) {
      Property property;
      property.id = id;
      property.value = any();
      made.properties.push_back(std::move(property));
      if (random_() % 2 == 0)
        made.dictionary.push_back(
            {id, terminatedText(page_, "name " + std::to_string(id)).value(), ""});
    }
    return made;
  }

  std::mt19937 random_;
  uint16_t page_ = 1252;
};

// Texts are made of the bytes, which are compared.
void expectSame(const PropertySet& made, const PropertySet& read) {
  EXPECT_EQ(read.damages, std::vector<DamageNote>());
  EXPECT_EQ(made.version, read.version);
  EXPECT_EQ(made.system, read.system);
  EXPECT_EQ(made.classId, read.classId);
  ASSERT_EQ(made.sections.size(), read.sections.size());
  for (size_t i = 0; i < made.sections.size(); ++i) {
    EXPECT_EQ(made.sections[i].format, read.sections[i].format);
    EXPECT_EQ(made.sections[i].codePage, read.sections[i].codePage);
    EXPECT_EQ(made.sections[i].dictionary, read.sections[i].dictionary);
    ASSERT_EQ(made.sections[i].properties.size(), read.sections[i].properties.size());
    for (size_t j = 0; j < made.sections[i].properties.size(); ++j) {
      const Property& property = made.sections[i].properties[j];
      const Property& other = read.sections[i].properties[j];
      EXPECT_EQ(property.id, other.id);
      EXPECT_EQ(property.value, other.value) << typeName(property.value.type);
    }
  }
}

TEST(PropertySetWriter, writes_any_set_so_that_it_is_read_back_the_same) {
  RandomSets sets(ksv::test::testSeed());
  for (int i = 0; i < 3000 && !testing::Test::HasFailure(); ++i) {
    const PropertySet made = sets.next();
    const std::string bytes = written(made);
    EXPECT_EQ(bytes.size() % 4, 0u);
    expectSame(made, readPropertySet(bytesOf(bytes)));
  }
}

}  // namespace
}  // namespace ksv_kit::properties
