// Calls and texts that are seldom made, and what is left behind them.
#include <filesystem>
#include <string>

#include "cconv/convert/driver.h"
#include "tests/convert/converter.h"
#include "tests/system/system.h"

namespace ksv_test {
namespace {

// Reads a text in UTF-7 as UTF-16, most significant byte first.
Result fromUtf7(const Bytes& input) { return convertWhole({"UTF-7", "UTF-16"}, input); }

class RareCalls : public ConversionTest {};

TEST_F(RareCalls, every_digit_of_a_run_counts) {
  EXPECT_EQ(hex(fromUtf7("++AA-").output), "F8 00") << "a plus is the digit 62";
  EXPECT_EQ(hex(fromUtf7("+ZeVnLIqe-").output), "65 E5 67 2C 8A 9E");
  EXPECT_EQ(hex(fromUtf7("+//0-").output), "FF FD") << "a slash is the digit 63";
  EXPECT_EQ(hex(fromUtf7("+AE09-").output), "00 4D");
}

TEST_F(RareCalls, what_stands_beside_the_digits_ends_a_run) {
  for (const char c : std::string("@[`{:,*.\n")) {
    EXPECT_EQ(fromUtf7(Bytes("+AEE") + c).output, Bytes("\0A\0", 3) + c) << c;
  }
  EXPECT_EQ(hex(fromUtf7("+AEE~a").output), "00 41") << "no character of its own in UTF-7";
}

TEST_F(RareCalls, sources_of_utf7_need_no_parameters) {
  ConverterRecord record = {};
  ASSERT_EQ(cconvInitConvert(&record, nullptr, "UTF-8"), KSV_STATUS_DONE);
  EXPECT_EQ(cconvChgCharset(&record, nullptr, "UTF-7"), KSV_STATUS_DONE);
  EXPECT_EQ(record.inputBigEndian, 0u);
  EXPECT_EQ(cconvConvert(&record), KSV_STATUS_DONE) << "there is no input";
}

TEST_F(RareCalls, no_language_is_the_empty_one) {
  ConverterRecord record = {};
  ASSERT_EQ(cconvChgLang(&record, "ja"), KSV_STATUS_DONE);
  EXPECT_EQ(cconvChgLang(&record, nullptr), KSV_STATUS_DONE);
  EXPECT_STREQ(record.currentLanguage, "");
}

TEST_F(RareCalls, termination_needs_usable_buffers) {
  Converter converter({"UTF-8", "ISO-2022-JP"});
  converter.give("a", 10);
  ASSERT_EQ(converter.convert(), KSV_STATUS_DONE);
  converter.record.outputPosition = -1;
  EXPECT_EQ(cconvTermConvert(&converter.record), KSV_STATUS_FAILURE);
  EXPECT_EQ(converter.record.outputPosition, -1);
}

TEST_F(RareCalls, a_dump_that_cannot_be_written_does_not_stop_a_conversion) {
  const std::string nowhere = ksv::test::makeTemporaryDirectory("ksv_dump") + "/none/dump";
  for (const char* path : {"", nowhere.c_str()}) {
    ksv::inputDumpPath = path;
    EXPECT_EQ(convertWhole({"UTF-8", "UTF-8"}, "text").output, "text") << path;
  }
  ksv::inputDumpPath = nullptr;
  std::filesystem::remove(std::filesystem::path(nowhere).parent_path().parent_path());
}

TEST_F(RareCalls, a_mark_of_each_form_is_skipped_once) {
  const auto skipped = [](const char* charset, const char* mark) {
    Conversion setup{charset, "UTF-8"};
    setup.parameters = {1, 1, 0};
    return convertWhole(setup, bytes(mark));
  };
  EXPECT_EQ(skipped("ISO-10646-UCS-4", "00 00 FE FF 00 00 00 41").output, "A");
  EXPECT_EQ(skipped("ISO-10646-UCS-4", "FF FE 00 00 41 00 00 00").output, "A");
  EXPECT_EQ(skipped("ISO-10646-UCS-4", "FE FF 00 41").output, "") << "a mark of two bytes is none";
  EXPECT_EQ(skipped("UTF-16", "FF FE 41 00").output, "A");
  EXPECT_EQ(skipped("UTF-8", "EF BB BF 41").output, "A");
}

}  // namespace
}  // namespace ksv_test
