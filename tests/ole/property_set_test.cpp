// Property sets: sections, properties and values, sound and damaged.

#include "tests/ole/summary_reader.h"

namespace ksv::test {
namespace {

// Where things stand in a property set of one section.
constexpr size_t kCount = 24;
constexpr size_t kSection = 48;
constexpr size_t kSectionSize = kSection;
constexpr size_t kPropertyCount = kSection + 4;
constexpr size_t kFirstOffset = kSection + 12;

class PropertySets : public SummaryTest {
 protected:
  Reading readSet(const std::string& set, uint16_t kind = kSlidesWithoutTime) {
    return readDocument(document(set), kind);
  }
};

TEST_F(PropertySets, are_read_from_both_streams) {
  const Reading reading =
      readDocument(document(summary({codePage(932), text(2, "Title"), text(4, "Author")}),
                            documentSummary({codePage(932), text(15, "Company"), integer(7, 12)})),
                   kSlidesWithoutTime);
  EXPECT_EQ(reading.result, 0u);
  EXPECT_EQ(reading[KSV_SUMMARY_TITLE], "Title");
  EXPECT_EQ(reading[KSV_SUMMARY_AUTHOR], "Author");
  EXPECT_EQ(reading[KSV_SUMMARY_COMPANY], "Company");
  EXPECT_EQ(reading[KSV_SUMMARY_SLIDES], "12");
}

TEST_F(PropertySets, of_no_compound_document_are_22_and_an_empty_record) {
  for (const char* path : {"missing", ".", "text"}) {
    writeFile("text", "This is no compound document.");
    const Reading reading = readPath(path, kTexts);
    EXPECT_EQ(reading.result, 22u);
    EXPECT_TRUE(reading.isEmpty());
  }
  EXPECT_EQ(readPath(nullptr, kTexts).result, 22u);
}

TEST_F(PropertySets, need_all_their_arguments) {
  const uint16_t parameters[3] = {};
  std::string record(KSV_SUMMARY_RECORD_SIZE, 'x');
  EXPECT_EQ(SummaryInfo("x", &settings_, nullptr, parameters), 22u);
  EXPECT_EQ(SummaryInfo("x", nullptr, record.data(), parameters), 22u);
  EXPECT_EQ(SummaryInfo("x", &settings_, record.data(), nullptr), 22u);
}

TEST_F(PropertySets, that_are_not_there_are_3003) {
  const std::string other = documentSummary({text(2, "Category")});
  const Reading reading = readDocument(document("", other), kTexts);
  EXPECT_EQ(reading.result, 3003u);
  EXPECT_TRUE(reading.isEmpty());
}

TEST_F(PropertySets, without_the_second_one_are_0) {
  EXPECT_EQ(readSummary({text(2, "Title")}).result, 0u);
}

TEST_F(PropertySets, with_a_damaged_second_one_are_0_and_keep_what_it_had) {
  const std::string sound = documentSummary({text(2, "Category")});
  std::string damaged = propertySet({{kDocumentSummaryFormatId, section({text(2, "Category")})},
                                     {kDocumentSummaryFormatId, dwords({7, 0, 0, 0})}});
  const Reading reading = readDocument(document(summary({text(2, "Title")}), damaged), kTexts);
  EXPECT_EQ(reading.result, 0u);
  EXPECT_EQ(reading[KSV_SUMMARY_TITLE], "Title");
  EXPECT_EQ(reading[KSV_SUMMARY_CATEGORY], "Category");
}

TEST_F(PropertySets, that_are_damaged_keep_what_was_read_before) {
  const Reading reading = readSet(propertySet(
      {{kSummaryFormatId, section({text(2, "Title")})}, {kSummaryFormatId, dwords({7, 0, 0, 0})}}));
  EXPECT_EQ(reading.result, 3002u);
  EXPECT_EQ(reading[KSV_SUMMARY_TITLE], "Title");
  // The second set is not read then.
  const std::string bytes = document(propertySet({{kSummaryFormatId, dwords({7, 0, 0, 0})}}),
                                     documentSummary({text(2, "Category")}));
  EXPECT_TRUE(readDocument(bytes, kTexts).isEmpty());
}

TEST_F(PropertySets, without_sections_are_0) {
  EXPECT_EQ(readSet("x").result, 0u);
  EXPECT_EQ(readSet(propertySet({})).result, 0u);
  std::string set = summary({text(2, "Title")});
  putDword(set, kCount, 0);
  EXPECT_TRUE(readSet(set).isEmpty());
  for (size_t size = 1; size < 44; ++size) {
    const Reading reading = readSet(summary({text(2, "Title")}).substr(0, size));
    EXPECT_EQ(reading.result, 0u) << size;
    EXPECT_TRUE(reading.isEmpty()) << size;
  }
}

TEST_F(PropertySets, with_more_sections_than_the_stream_has_room_for_are_3002) {
  std::string set = summary({text(2, "Title")});
  set.resize(88);
  for (const auto& [count, result] :
       std::vector<std::pair<uint32_t, uint32_t>>{{1, 0},
                                                  {2, 0},
                                                  {5, 0},
                                                  {6, 3002},
                                                  {0x7FFFFFFF, 3002},
                                                  {0xFFFFFFFF, 3002},
                                                  {0x0CCCCCCE, 3002}}) {
    // 20 * 5 - 12 is 88.
    putDword(set, kCount, count);
    EXPECT_EQ(readSet(set).result, result) << count;
  }
  // One section is not looked at so.
  putDword(set, kCount, 1);
  set.replace(28, 16, 16, 'x');
  EXPECT_EQ(readSet(set.substr(0, 44)).result, 0u);
}

TEST_F(PropertySets, take_the_sections_of_their_own_format_only) {
  const Reading reading =
      readSet(propertySet({{kDocumentSummaryFormatId, section({text(2, "wrong")})},
                           {std::string(16, '\0'), section({text(2, "wrong")})},
                           {kSummaryFormatId, section({text(2, "right")})},
                           {std::string(16, 'x'), section({text(3, "wrong")})}}));
  EXPECT_EQ(reading.result, 0u);
  EXPECT_EQ(reading[KSV_SUMMARY_TITLE], "right");
  EXPECT_EQ(reading[KSV_SUMMARY_SUBJECT], "");
  for (size_t i = 0; i < 16; ++i) {
    std::string set = summary({text(2, "Title")});
    set[28 + i] = static_cast<char>(set[28 + i] ^ 1);
    EXPECT_TRUE(readSet(set).isEmpty()) << i;
  }
}

TEST_F(PropertySets, take_all_sections_of_their_own_format) {
  const Reading reading =
      readSet(propertySet({{kSummaryFormatId, section({text(2, "first"), text(3, "subject")})},
                           {kSummaryFormatId, section({text(2, "2nd"), text(4, "author")})}}));
  // The second writes over the first, and clears nothing.
  EXPECT_EQ(reading[KSV_SUMMARY_TITLE], "2ndst");
  EXPECT_EQ(reading[KSV_SUMMARY_SUBJECT], "subject");
  EXPECT_EQ(reading[KSV_SUMMARY_AUTHOR], "author");
}

TEST_F(PropertySets, with_a_section_below_8_bytes_are_3002) {
  std::string set = summary({text(2, "Title")});
  for (uint32_t size = 0; size < 8; ++size) {
    putDword(set, kSectionSize, size);
    EXPECT_EQ(readSet(set).result, 3002u) << size;
  }
}

TEST_F(PropertySets, with_a_section_beyond_all_memory_are_12) {
  std::string set = summary({text(2, "Title")});
  for (const auto& [size, result] : std::vector<std::pair<uint32_t, uint32_t>>{
           {0x7FFFFFFD, 0}, {0x7FFFFFFE, 12}, {0x80000000, 12}, {0xFFFFFFFF, 12}}) {
    putDword(set, kSectionSize, size);
    EXPECT_EQ(readSet(set).result, result) << size;
  }
}

// There have to be fewer than (size - 8) / 8, rounded down.
TEST_F(PropertySets, with_as_many_properties_as_fit_are_3002) {
  std::string set = summary({text(2, "Title")});
  for (const auto& [size, count, result] :
       std::vector<std::tuple<uint32_t, uint32_t, uint32_t>>{{8, 0, 3002},
                                                             {15, 0, 3002},
                                                             {16, 0, 0},
                                                             {16, 1, 3002},
                                                             {23, 1, 3002},
                                                             {24, 1, 0},
                                                             {24, 2, 3002},
                                                             {1000, 123, 0},
                                                             {1000, 124, 3002},
                                                             {1000, 0xFFFFFFFF, 3002},
                                                             {0x7FFFFFFD, 0x0FFFFFFD, 0},
                                                             {0x7FFFFFFD, 0x0FFFFFFE, 3002}}) {
    putDword(set, kSectionSize, size);
    putDword(set, kPropertyCount, count);
    EXPECT_EQ(readSet(set).result, result) << size << " " << count;
  }
}

TEST_F(PropertySets, with_a_section_outside_the_stream_are_3002) {
  std::string set = summary({text(2, "Title")});
  const auto size = static_cast<uint32_t>(set.size());
  for (const uint32_t offset : {size, size + 1, size - 3, 0x7FFFFFFFu}) {
    putDword(set, 44, offset);
    EXPECT_EQ(readSet(set).result, 3002u) << offset;
  }
}

// A place from 2^31 up counts as before the start: the set's own first bytes, FFFE, are the
// size then, and its version and system the number of properties.
TEST_F(PropertySets, with_a_section_before_the_start_read_one_from_the_start) {
  std::string set = summary({text(2, "Title")});
  putDword(set, 44, 0x80000000);
  EXPECT_EQ(readSet(set).result, 3002u);
  putDword(set, 0, 1000);
  putDword(set, 4, 1);
  putDword(set, 8, 2);
  putDword(set, 12, kSection + 16);
  EXPECT_EQ(readSet(set)[KSV_SUMMARY_TITLE], "Title");
}

TEST_F(PropertySets, cut_by_the_end_of_the_stream_read_zeroes) {
  std::string set = summary({text(2, "Title"), text(3, "Subject")});
  const size_t title = set.find("Title");
  Reading reading = readSet(set.substr(0, title + 3));
  EXPECT_EQ(reading.result, 0u);
  EXPECT_EQ(reading.bytes(0, 10), std::string("Tit\0\0\0\0\0\0\0", 10));
  EXPECT_EQ(reading[KSV_SUMMARY_SUBJECT], "");
  // Every cut gives a result and no more than is there.
  for (size_t size = 44; size < set.size(); ++size) {
    reading = readSet(set.substr(0, size));
    EXPECT_EQ(reading.result, size < 49 ? 3002u : 0u) << size;
    EXPECT_TRUE(std::string("Title").starts_with(reading[KSV_SUMMARY_TITLE])) << size;
  }
}

TEST_F(PropertySets, skip_a_property_outside_its_section) {
  std::string set = summary({text(2, "Title"), text(3, "Subject")});
  const uint32_t size = getDword(set, kSectionSize);
  for (const uint32_t offset : {size, size - 3, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    std::string damaged = set + std::string(100, '\x1E');
    putDword(damaged, kFirstOffset, offset);
    const Reading reading = readSet(damaged);
    EXPECT_EQ(reading.result, 0u);
    EXPECT_EQ(reading[KSV_SUMMARY_TITLE], "") << offset;
    EXPECT_EQ(reading[KSV_SUMMARY_SUBJECT], "Subject") << offset;
  }
}

TEST_F(PropertySets, skip_a_value_that_leaves_its_section) {
  const std::vector<Property> whole = {integer(2, 5)};
  for (const auto& [property, size] : std::vector<std::pair<Property, uint32_t>>{
           {integer(2, 5), 8}, {time(2, fileTime(2000, 1, 1)), 12}, {textOfLength(2, 1, ""), 8}}) {
    std::string set = summary({integer(99, 0), property});
    const uint32_t offset = getDword(set, kSection + 20);
    putDword(set, kSectionSize, offset + size - 1);
    EXPECT_TRUE(readSet(set).isEmpty()) << size;
  }
  // The code page needs its two bytes.
  std::string set = summary({codePage(949), text(2, "\xC7\xD1")});
  putDword(set, kSection + 8, 2);
  putDword(set, kSection + 12, getDword(set, kSection + 20));
  EXPECT_EQ(readSet(set).result, 0u);
}

TEST_F(PropertySets, clip_a_text_to_its_section) {
  std::string set = summary({textOfLength(2, 100, "Title")}) + "behind the section";
  // The terminator is not taken off then; the section is padded to 8 bytes of text.
  const Reading reading = readSet(set);
  EXPECT_EQ(reading.bytes(0, 20), std::string("Title", 5) + std::string(15, '\0'));
  putDword(set, kSectionSize, getDword(set, kSectionSize) - 4);
  EXPECT_EQ(readSet(set)[0], "Titl");
}

TEST_F(PropertySets, take_a_text_without_its_last_byte) {
  EXPECT_EQ(readSummary({textOfLength(2, 5, "Title")})[0], "Titl");
  EXPECT_EQ(readSummary({textOfLength(2, 1, "Title")})[0], "");
  EXPECT_EQ(readSummary({textOfLength(2, 0, "Title")})[0], "");
  EXPECT_EQ(readSummary({textOfLength(2, 7, std::string("Ti\0le\0\0", 7))}).bytes(0, 7),
            std::string("Ti\0le\0\0", 7));
}

TEST_F(PropertySets, of_kinds_9003_and_9004_end_a_text_at_its_first_zero) {
  for (const uint16_t kind : std::initializer_list<uint16_t>{9003, 9004}) {
    EXPECT_EQ(readSummary({textOfLength(2, 7, std::string("Ti\0le\0\0", 7))}, kind).bytes(0, 7),
              std::string("Ti\0\0\0\0\0", 7));
    // Even one behind the length that is declared.
    EXPECT_EQ(readSummary({textOfLength(2, 3, std::string("Title\0\0", 7))}, kind)[0], "Title");
    EXPECT_EQ(readSummary({textOfLength(2, 0, std::string("Title\0\0", 7))}, kind)[0], "");
    EXPECT_EQ(readSummary({textOfLength(2, 1, std::string("Title\0\0", 7))}, kind)[0], "Title");
  }
}

TEST_F(PropertySets, write_integers_in_decimal) {
  EXPECT_EQ(readSummary({integer(2, 0)})[0], "0");
  EXPECT_EQ(readSummary({integer(2, 2147483647)})[0], "2147483647");
  EXPECT_EQ(readSummary({integer(2, -2147483647 - 1)})[0], "-2147483648");
  EXPECT_EQ(readSummary({integer(9, -1)})[KSV_SUMMARY_REVISION], "-1");
}

// They go through the converter like every text, and so does their code page.
TEST_F(PropertySets, convert_the_digits_of_a_number_from_the_code_page) {
  const Reading reading = readSummary({codePage(1200), integer(2, 12)});
  EXPECT_EQ(reading[0], "\xE3\x88\xB1");  // U+3231
}

TEST_F(PropertySets, write_times) {
  EXPECT_EQ(
      readSummary({time(12, fileTime(2024, 2, 29, 12, 34, 56))}, kSheets)[KSV_SUMMARY_CREATED],
      "2024-02-29 12:34:56");
  EXPECT_EQ(
      readSummary({time(13, fileTime(1999, 12, 31, 23, 59, 59))}, kShort)[KSV_SUMMARY_LAST_SAVED],
      "1999-12-31 23:59:59");
  EXPECT_TRUE(readSummary({time(12, 0)}, kSheets).isEmpty());
  EXPECT_EQ(readSummary({time(12, ~uint64_t{0})}, kSheets)[KSV_SUMMARY_CREATED].substr(0, 5),
            "60056");
}

TEST_F(PropertySets, take_any_type_for_any_property) {
  EXPECT_EQ(readSummary({text(12, "text")}, kSheets)[KSV_SUMMARY_CREATED], "text");
  EXPECT_EQ(readSummary({time(2, fileTime(2000, 1, 1))})[0], "2000-01-01 00:00:00");
  const std::string bytes =
      document(summary({integer(99, 0)}), documentSummary({text(7, "many slides")}));
  EXPECT_EQ(readDocument(bytes, kSlidesWithoutTime)[KSV_SUMMARY_SLIDES], "many slides");
}

TEST_F(PropertySets, skip_values_of_other_types) {
  for (uint32_t type = 0; type < 0x1100; ++type) {
    if (type == 3 || type == 30 || type == 64) continue;
    if (type > 80 && type < 0x1000) continue;
    const std::string value = dwords({type, 4, 0x00636261, 0});
    EXPECT_TRUE(readSummary({{2, value}}).isEmpty()) << type;
    Property aTime = time(2, fileTime(2000, 1, 1));
    putDword(aTime.value, 0, type);
    EXPECT_TRUE(readSummary({aTime}).isEmpty()) << type;
  }
  EXPECT_TRUE(readSummary({{2, dwords({0x10003, 5})}}).isEmpty());
}

TEST_F(PropertySets, take_the_code_page_of_its_own_type_only) {
  const Property wrongType = {1, dwords({3, 949})};
  EXPECT_EQ(readSummary({wrongType, text(2, "\x95\x5C")})[0], "表");
  // Its value has two bytes, whatever follows.
  const Property wide = {1, dwords({2, 0xFFFF0000 | 949})};
  EXPECT_EQ(readSummary({wide, text(2, "\xC7\xD1")})[0], "한");
  const Property negative = {1, dwords({2, static_cast<uint32_t>(-535)})};
  EXPECT_EQ(readSummary({negative, text(2, "表")})[0], "表");
}

TEST_F(PropertySets, with_the_same_property_twice_keep_what_the_longer_one_left) {
  EXPECT_EQ(readSummary({text(2, "abcdef"), text(2, "xyz")})[0], "xyzdef");
  EXPECT_EQ(readSummary({text(2, "abcdef"), text(2, "")})[0], "abcdef");
}

TEST_F(PropertySets, stand_in_streams_of_every_size) {
  for (const size_t padding : {0, 4000, 5000, 70000, 300000}) {
    std::string set = summary({codePage(932), text(2, "Title")});
    const uint32_t section = getDword(set, 44);
    set.insert(section, std::string(padding, 'x'));
    putDword(set, 44, section + static_cast<uint32_t>(padding));
    EXPECT_EQ(readSet(set)[0], "Title") << padding;
    std::string wide = summary({codePage(932), text(2, "Title")});
    wide += std::string(padding, 'y');
    putDword(wide, kSectionSize, getDword(wide, kSectionSize) + static_cast<uint32_t>(padding));
    EXPECT_EQ(readSet(wide)[0], "Title") << padding;
  }
}

Property picture(size_t size) {
  return {17, dwords({71, static_cast<uint32_t>(size)}) + pattern(size)};
}

TEST_F(PropertySets, are_read_behind_a_picture_of_any_size) {
  for (const size_t size : {3000, 3960, 3996, 4000, 4004, 4096, 5000, 70000, 300000}) {
    const Reading reading = readSummary({codePage(932), text(3, "Subject"), picture(size),
                                         text(2, "Title"), integer(9, 123456789)});
    EXPECT_EQ(reading[KSV_SUMMARY_SUBJECT], "Subject") << size;
    EXPECT_EQ(reading[KSV_SUMMARY_TITLE], "Title") << size;
    EXPECT_EQ(reading[KSV_SUMMARY_REVISION], "123456789") << size;
    EXPECT_EQ(readSummary({picture(size), text(2, "Title")}, kAllOfSlides)[0], "Title") << size;
  }
}

TEST_F(PropertySets, are_read_behind_many_others) {
  std::vector<Property> properties(2000, integer(99, 1));
  properties.push_back(text(2, "Title"));
  EXPECT_EQ(readSummary(properties)[0], "Title");
}

// The stream ends with its chain, whatever size it claims.
TEST_F(PropertySets, behind_the_end_of_a_chain_read_as_zero) {
  CompoundWriter writer;
  writer.addStream(0, u"\u0005SummaryInformation",
                   summary({text(3, "Subject"), picture(20000), text(2, "Title")}));
  std::string bytes = writer.write();
  EXPECT_EQ(readDocument(bytes, kTexts)[KSV_SUMMARY_TITLE], "Title");
  putDword(bytes, writer.fatOffset(20), kEnd);
  const Reading reading = readDocument(bytes, kTexts);
  EXPECT_EQ(reading.result, 0u);
  EXPECT_EQ(reading[KSV_SUMMARY_SUBJECT], "Subject");
  EXPECT_EQ(reading[KSV_SUMMARY_TITLE], "");
}

TEST_F(PropertySets, are_found_whatever_the_case_of_their_stream) {
  CompoundWriter writer;
  writer.addStream(0, u"\u0005SUMMARYinformation", summary({text(2, "Title")}));
  EXPECT_EQ(readDocument(writer.write(), kTexts)[0], "Title");
}

// Thousands of sections that are one and the same would be read thousands of times.
TEST_F(PropertySets, with_sections_that_lie_upon_each_other_cost_what_they_are) {
  std::vector<Property> properties(3000, text(2, "Title"));
  const std::string one = section(properties);
  std::string set(28, '\0');
  const uint32_t count = 20000;
  putDword(set, kCount, count);
  for (uint32_t i = 0; i < count; ++i) set += kSummaryFormatId + dwords({28 + 20 * count});
  const auto start = std::chrono::steady_clock::now();
  const Reading reading = readSet(set + one);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_EQ(reading.result, 3002u);
  EXPECT_EQ(reading[0], "Title");
}

TEST_F(PropertySets, may_have_sections_of_256_KB_and_twice_the_file_in_all) {
  constexpr uint32_t kSections = 4;
  std::string set(28, '\0');
  putDword(set, kCount, kSections);
  const auto begin = static_cast<uint32_t>(set.size() + 20 * kSections);
  for (uint32_t i = 0; i < kSections; ++i) set += kSummaryFormatId + dwords({begin});
  set += section({text(2, "Title")}) + std::string(200000, '\0');
  const size_t fileSize = document(set).size();
  const auto most = static_cast<uint32_t>((256 * 1024 + 2 * fileSize) / kSections);
  ASSERT_LT(begin + most + 1, set.size()) << "the sections lie in the stream";
  putDword(set, begin, most);
  EXPECT_EQ(readSet(set).result, 0u);
  putDword(set, begin, most + 1);
  EXPECT_EQ(readSet(set).result, 3002u);
}

TEST_F(PropertySets, that_are_damaged_anywhere_give_a_result_and_keep_to_the_record) {
  std::vector<Property> first = {codePage(932)};
  std::vector<Property> second = {codePage(65001)};
  for (uint32_t id = 2; id < 19; ++id) {
    first.push_back(id % 3 == 0 ? integer(id, 77) : text(id, "text " + std::to_string(id)));
    second.push_back(id % 2 == 0 ? text(id, "文 " + std::to_string(id)) : time(id, ~uint64_t{0}));
  }
  const std::string sound = document(summary(first), documentSummary(second));
  Random random(testSeed());
  int done = 0;
  for (int i = 0; i < 3000; ++i) {
    std::string bytes = sound;
    for (int j = 0; j < 3; ++j) {
      const size_t at = 512 + random() % (bytes.size() - 516) / 4 * 4;
      putDword(bytes, at, random() % 2 == 0 ? random() % 100 : static_cast<uint32_t>(random()) * 2);
    }
    const uint16_t kinds[] = {9003, 7000, 6000, 5000, 10002};
    const uint32_t result = readDocument(bytes, kinds[random() % 5]).result;
    EXPECT_TRUE(result == 0 || result == 12 || result == 22 || result == 3002 || result == 3003);
    if (result == 0) ++done;
  }
  EXPECT_GT(done, 500);
}

}  // namespace
}  // namespace ksv::test
