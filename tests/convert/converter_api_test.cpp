#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "tests/convert/converter.h"

namespace ksv_test {
namespace {

using ConverterApi = ConversionTest;

ConverterRecord filledRecord() {
  ConverterRecord record;
  std::memset(&record, 0x5A, sizeof record);
  record.input = nullptr;
  record.inputPosition = record.inputLength = 0;
  record.output = nullptr;
  record.outputPosition = record.outputCapacity = 0;
  return record;
}

TEST_F(ConverterApi, init_of_an_unknown_charset_clears_the_state_and_fails) {
  ConverterRecord record = filledRecord();
  EXPECT_EQ(cconvInitConvert(&record, nullptr, "no-such-charset"), 1u);
  EXPECT_EQ(record.status, 1u);
  EXPECT_EQ(record.targetEncoder, nullptr);
  EXPECT_EQ(record.sourceDecoder, nullptr);
  EXPECT_EQ(record.decoderState, 0u);
  EXPECT_EQ(record.currentLanguage[0], '\0');
  EXPECT_EQ(record.narrowReplacement[0], 0u);
  EXPECT_EQ(record.wideReplacement[3], 0u);
  // What lies before the status, and the source parameters and options, stay.
  EXPECT_EQ(record.charactersRead, 0x5A5A5A5A);
  EXPECT_EQ(record.inputBigEndian, 0x5A5A5A5Au);
  EXPECT_EQ(record.skipInvalid, 0x5A5A5A5Au);
  const uint32_t newlineForm = record.options.newlineForm;  // lies at an odd halfword
  EXPECT_EQ(newlineForm, 0x5A5A5A5Au);
}

TEST_F(ConverterApi, init_without_options_zeroes_them) {
  ConverterRecord record = filledRecord();
  EXPECT_EQ(cconvInitConvert(&record, nullptr, "UTF-8"), 0u);
  const ConvertOptions zero = {};
  EXPECT_EQ(std::memcmp(&record.options, &zero, sizeof zero), 0);
  EXPECT_EQ(record.targetCharsetId, 1006u);
  EXPECT_NE(record.targetEncoder, nullptr);
  EXPECT_NE(record.targetCharset, nullptr);
}

TEST_F(ConverterApi, init_takes_the_options_that_stand_in_the_record) {
  ConverterRecord record = filledRecord();
  record.options.replaceUnmappable = 0;
  const ConvertOptions before = record.options;
  EXPECT_EQ(cconvInitConvert(&record, &record.options, "UTF-8"), 0u);
  EXPECT_EQ(std::memcmp(&record.options, &before, sizeof before), 0);
  EXPECT_EQ(record.defaultLanguage[258], 0x5A);
  EXPECT_EQ(record.defaultLanguage[259], '\0');
}

TEST_F(ConverterApi, init_copies_every_byte_of_the_options_and_clears_the_state_beside_them) {
  ConvertOptions options = {};
  std::memset(&options, 0xA5, sizeof options);
  options.replaceUnmappable = 0;
  options.defaultLanguage[0] = '\0';
  ConverterRecord record = filledRecord();
  EXPECT_EQ(cconvInitConvert(&record, &options, "UTF-8"), 0u);
  EXPECT_EQ(std::memcmp(&record.options, &options, sizeof options), 0);
  ConverterRecord expected = filledRecord();
  char* const first = reinterpret_cast<char*>(&expected.status);
  std::memset(first, 0,
              static_cast<size_t>(reinterpret_cast<char*>(&expected.inputBigEndian) - first));
  std::memset(expected.narrowReplacement, 0, sizeof expected.narrowReplacement);
  std::memset(expected.wideReplacement, 0, sizeof expected.wideReplacement);
  expected.options = options;
  expected.targetCharsetId = record.targetCharsetId;
  expected.targetCharset = record.targetCharset;
  expected.targetEncoder = record.targetEncoder;
  EXPECT_EQ(std::memcmp(&record, &expected, sizeof record), 0);
}

TEST_F(ConverterApi, charset_names_are_found_without_regard_to_case) {
  ConverterRecord record = {};
  char name[] = "sHiFt_jIs";
  EXPECT_EQ(cconvInitConvert(&record, nullptr, name), 0u);
  EXPECT_EQ(record.targetCharsetId, 1001u);
  EXPECT_STREQ(name, "sHiFt_jIs");
}

TEST_F(ConverterApi, null_and_overlong_names_are_unknown) {
  ConverterRecord record = {};
  EXPECT_EQ(cconvInitConvert(&record, nullptr, nullptr), 1u);
  EXPECT_EQ(cconvInitConvert(&record, nullptr, std::string(260, 'a').c_str()), 1u);
  EXPECT_EQ(cconvInitConvert(&record, nullptr, std::string(100000, 'a').c_str()), 1u);
  EXPECT_EQ(cconvInitConvert(&record, nullptr, std::string(259, 'a').c_str()), 1u);
}

TEST_F(ConverterApi, init_copies_the_default_language_three_times) {
  ConverterRecord record = {};
  ConvertOptions options = {};
  std::strcpy(options.defaultLanguage, "ja");
  EXPECT_EQ(cconvInitConvert(&record, &options, "UTF-8"), 0u);
  EXPECT_STREQ(record.defaultLanguage, "ja");
  EXPECT_STREQ(record.emittedLanguage, "ja");
  EXPECT_STREQ(record.currentLanguage, "ja");
}

TEST_F(ConverterApi, a_default_language_without_terminator_is_cut_to_fit) {
  ConverterRecord record = {};
  ConvertOptions options = {};
  std::memset(options.defaultLanguage, 'x', sizeof options.defaultLanguage);
  EXPECT_EQ(cconvInitConvert(&record, &options, "UTF-8"), 0u);
  EXPECT_EQ(std::strlen(record.defaultLanguage), 259u);
}

TEST_F(ConverterApi, change_charset_sets_the_source_fields) {
  ConverterRecord record = {};
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "UTF-8"), 0u);
  record.decodedGroup = record.decodedGroupType = record.unicodeCode = record.rawCode = 99;
  uint32_t parameters[3] = {7, 8, 9};
  EXPECT_EQ(cconvChgCharset(&record, parameters, "Shift_JIS"), 0u);
  EXPECT_EQ(record.sourceCharsetId, 1001u);
  EXPECT_NE(record.sourceDecoder, nullptr);
  EXPECT_EQ(record.decodedGroup, 0u);
  EXPECT_EQ(record.decodedGroupType, 0u);
  EXPECT_EQ(record.unicodeCode, 0u);
  EXPECT_EQ(record.rawCode, 0u);
  EXPECT_EQ(record.decoderState, 2001u);
  EXPECT_EQ(record.preConversion, 0u);
  EXPECT_EQ(record.inputBigEndian, 7u);
  EXPECT_EQ(record.detectByteOrderMark, 8u);
  EXPECT_EQ(record.skipInvalid, 9u);
}

TEST_F(ConverterApi, change_charset_without_parameters_zeroes_them) {
  ConverterRecord record = {};
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "UTF-8"), 0u);
  record.inputBigEndian = record.detectByteOrderMark = record.skipInvalid = 1;
  EXPECT_EQ(cconvChgCharset(&record, nullptr, "Shift_JIS"), 0u);
  EXPECT_EQ(record.inputBigEndian | record.detectByteOrderMark | record.skipInvalid, 0u);
}

TEST_F(ConverterApi, change_to_an_unknown_charset_keeps_the_source_but_not_the_pre_conversion) {
  ConverterRecord record = {};
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "UTF-8"), 0u);
  uint32_t parameters[3] = {1, 0, 1};
  ASSERT_EQ(cconvChgCharset(&record, parameters, "UTF-7"), 0u);
  EXPECT_EQ(record.preConversion, 1u);
  const void* decoder = record.sourceDecoder;
  EXPECT_EQ(cconvChgCharset(&record, nullptr, "no-such-charset"), 1u);
  EXPECT_EQ(record.status, 1u);
  EXPECT_EQ(record.preConversion, 0u);
  EXPECT_EQ(record.sourceDecoder, decoder);
  EXPECT_EQ(record.sourceCharsetId, 1004u);
  EXPECT_EQ(record.skipInvalid, 1u);
}

TEST_F(ConverterApi, utf7_forces_little_endian_in_the_callers_array) {
  ConverterRecord record = {};
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "UTF-8"), 0u);
  uint32_t parameters[3] = {1, 1, 1};
  EXPECT_EQ(cconvChgCharset(&record, parameters, "UTF-7"), 0u);
  EXPECT_EQ(parameters[0], 0u);
  EXPECT_EQ(parameters[1], 1u);
  EXPECT_EQ(record.inputBigEndian, 0u);
  EXPECT_EQ(record.sourceCharsetId, 1004u);
}

TEST_F(ConverterApi, utf7_in_lower_case_is_an_ordinary_name) {
  ConverterRecord record = {};
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "UTF-8"), 0u);
  uint32_t parameters[3] = {1, 0, 0};
  EXPECT_EQ(cconvChgCharset(&record, parameters, "utf-7"), 1u);
  EXPECT_EQ(parameters[0], 1u);
  EXPECT_EQ(record.preConversion, 0u);
}

TEST_F(ConverterApi, hz_stores_its_pre_conversion_before_its_charset_is_looked_up) {
  ConverterRecord record = {};
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "UTF-8"), 0u);
  cconvChgCharset(&record, nullptr, "HZ-GB-2312");
  EXPECT_EQ(record.preConversion, 2u);
}

TEST_F(ConverterApi, change_language_copies_the_name) {
  ConverterRecord record = {};
  record.status = 99;
  EXPECT_EQ(cconvChgLang(&record, "fr"), 0u);
  EXPECT_STREQ(record.currentLanguage, "fr");
  EXPECT_EQ(record.status, 0u);
  EXPECT_EQ(cconvChgLang(&record, std::string(400, 'x').c_str()), 0u);
  EXPECT_EQ(std::strlen(record.currentLanguage), 259u);
  EXPECT_EQ(record.inputBigEndian, 0u);
}

TEST_F(ConverterApi, a_zeroed_record_cannot_convert_but_terminates) {
  ConverterRecord record = {};
  EXPECT_EQ(cconvConvert(&record), 1u);
  EXPECT_EQ(record.status, 1u);
  EXPECT_EQ(cconvTermConvert(&record), 0u);
  EXPECT_EQ(record.status, 0u);
}

TEST_F(ConverterApi, a_record_without_source_cannot_convert) {
  ConverterRecord record = {};
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "UTF-8"), 0u);
  EXPECT_EQ(cconvConvert(&record), 1u);
}

TEST_F(ConverterApi, termination_of_an_initialised_record_calls_the_encoder) {
  ConverterRecord record = {};
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "UTF-8"), 0u);
  record.status = 99;
  EXPECT_EQ(cconvTermConvert(&record), 0u);
  EXPECT_EQ(record.status, 0u);
}

TEST_F(ConverterApi, termination_writes_a_pending_mark) {
  Conversion setup{"Shift_JIS", "UTF-8"};
  setup.options.writeByteOrderMark = 1;
  Converter converter(setup);
  converter.give("", 2);
  EXPECT_EQ(converter.terminate(), 22u);
  EXPECT_EQ(converter.record.outputPosition, 0);
  converter.drain(3);
  EXPECT_EQ(converter.terminate(), 0u);
  EXPECT_EQ(hex(converter.written()), "EF BB BF");
  EXPECT_EQ(converter.record.options.writeByteOrderMark, 0u);
  EXPECT_EQ(converter.terminate(), 0u);
  EXPECT_EQ(converter.record.outputPosition, 3);
}

TEST_F(ConverterApi, null_records_fail) {
  EXPECT_EQ(cconvInitConvert(nullptr, nullptr, "UTF-8"), 1u);
  EXPECT_EQ(cconvChgCharset(nullptr, nullptr, "UTF-8"), 1u);
  EXPECT_EQ(cconvChgLang(nullptr, "ja"), 1u);
  EXPECT_EQ(cconvConvert(nullptr), 1u);
  EXPECT_EQ(cconvTermConvert(nullptr), 1u);
}

TEST_F(ConverterApi, unusable_buffers_fail) {
  Converter converter({"Shift_JIS", "UTF-8"});
  converter.give("abc", 10);
  converter.record.inputPosition = -1;
  EXPECT_EQ(converter.convert(), 1u);
  converter.give("abc", 10);
  converter.record.outputPosition = -1;
  EXPECT_EQ(cconvConvert(&converter.record), 1u);
  converter.record.outputPosition = 0;
  converter.record.input = nullptr;
  EXPECT_EQ(converter.convert(), 1u);
  converter.give("abc", 10);
  converter.record.output = nullptr;
  EXPECT_EQ(cconvConvert(&converter.record), 1u);
}

TEST_F(ConverterApi, an_empty_input_is_done) {
  Converter converter({"Shift_JIS", "UTF-8"});
  EXPECT_EQ(converter.convert(), 0u);
  converter.give("abc", 10);
  converter.record.inputPosition = 5;
  EXPECT_EQ(converter.convert(), 0u);
  converter.record.inputPosition = 0;
  converter.record.inputLength = -5;
  EXPECT_EQ(converter.convert(), 0u);
}

TEST_F(ConverterApi, enumeration_gives_the_loaded_names_in_order) {
  char name[260];
  std::vector<std::string> names;
  for (int32_t i = 0; cconvEnumGroup(i, name) == 1; ++i) names.push_back(name);
  EXPECT_GE(names.size(), 7u);
  EXPECT_NE(std::find(names.begin(), names.end(), "shift_jis-2004"), names.end());
  EXPECT_EQ(cconvEnumGroup(0, nullptr), 0u);
  std::memset(name, 'x', sizeof name);
  EXPECT_EQ(cconvEnumGroup(-1, name), 0u);
  EXPECT_EQ(cconvEnumGroup(static_cast<int32_t>(names.size()), name), 0u);
  EXPECT_EQ(name[0], 'x');
}

TEST_F(ConverterApi, only_the_exact_names_are_endian_aware) {
  EXPECT_EQ(cconvIsEndianAware("UTF-16"), 1u);
  EXPECT_EQ(cconvIsEndianAware("ISO-10646-UCS-2"), 1u);
  EXPECT_EQ(cconvIsEndianAware("ISO-10646-UCS-4"), 1u);
  EXPECT_EQ(cconvIsEndianAware("utf-16"), 0u);
  EXPECT_EQ(cconvIsEndianAware("UTF-8"), 0u);
  EXPECT_EQ(cconvIsEndianAware("UTF-16 "), 0u);
  EXPECT_EQ(cconvIsEndianAware(nullptr), 0u);
}

TEST_F(ConverterApi, replacements_of_the_options_are_looked_up_in_the_target) {
  ConverterRecord record = {};
  ConvertOptions options = {};
  options.replaceUnmappable = 1;
  options.narrowReplacement = '#';
  options.wideReplacement = 0x3042;
  ASSERT_EQ(cconvInitConvert(&record, &options, "Shift_JIS"), 0u);
  const uint32_t narrow[4] = {2002, 1, '#', 1};
  const uint32_t wide[4] = {2006, 1, 0x2422, 2};
  EXPECT_EQ(std::memcmp(record.narrowReplacement, narrow, sizeof narrow), 0);
  EXPECT_EQ(std::memcmp(record.wideReplacement, wide, sizeof wide), 0);
}

TEST_F(ConverterApi, replacements_that_the_target_lacks_give_way_to_the_defaults) {
  ConverterRecord record = {};
  ConvertOptions options = {};
  options.replaceUnmappable = 1;
  options.narrowReplacement = '#';
  options.wideReplacement = 0x0E01;  // Thai, not in Shift_JIS
  ASSERT_EQ(cconvInitConvert(&record, &options, "Shift_JIS"), 0u);
  EXPECT_EQ(record.options.narrowReplacement, 0x3F);
  EXPECT_EQ(record.options.wideReplacement, 0x3013);
  EXPECT_EQ(record.narrowReplacement[2], 0x3Fu);
  EXPECT_EQ(record.wideReplacement[2], 0x222Eu);
}

TEST_F(ConverterApi, replacements_are_left_alone_when_not_asked_for) {
  ConverterRecord record = {};
  ConvertOptions options = {};
  options.wideReplacement = 0x0E01;
  ASSERT_EQ(cconvInitConvert(&record, &options, "Shift_JIS"), 0u);
  EXPECT_EQ(record.options.wideReplacement, 0x0E01);
  EXPECT_EQ(record.wideReplacement[2], 0u);
}

}  // namespace
}  // namespace ksv_test
