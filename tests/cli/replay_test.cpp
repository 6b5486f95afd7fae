#include "kit/text/replay.h"

#include <gtest/gtest.h>

#include <string>

#include "command.h"
#include "in_process.h"

namespace ksv_cli_tests {
namespace {

// The start of the character at which the converter stops, in UTF-8 out.
int32_t startOfStop(const std::string& source, const std::string& text) {
  const auto settings = converting().settings(source, "UTF-8", nullptr);
  std::string output(text.size() * 8 + 64, '\0');
  ConverterRecord record{};
  EXPECT_EQ(cconvInitConvert(&record, &settings.options, settings.target.name.c_str()), 0u);
  uint32_t parameters[3] = {1, 0, 0};
  EXPECT_EQ(cconvChgCharset(&record, parameters, settings.source.name.c_str()), 0u);
  record.input = reinterpret_cast<const uint8_t*>(text.data());
  record.inputLength = static_cast<int32_t>(text.size());
  record.output = reinterpret_cast<uint8_t*>(output.data());
  record.outputCapacity = static_cast<int32_t>(output.size());
  const ConverterRecord before = record;
  EXPECT_EQ(cconvConvert(&record), static_cast<uint32_t>(KSV_STATUS_INVALID));
  return ksv_kit::characterStart(before, record.inputPosition);
}

TEST(CharacterStart, is_found_whatever_the_decoder_reports) {
  EXPECT_EQ(startOfStop("Shift_JIS", bytes({'a', 0x81, 0x7F, 'b'})), 1);
  EXPECT_EQ(startOfStop("Shift_JIS", bytes({0x81, 0x7F})), 0);
  EXPECT_EQ(startOfStop("Shift_JIS", bytes({0x82, 0xA0, 0x82, 0xA0, 0xFF, 'b'})), 4);
  EXPECT_EQ(startOfStop("UCS-2BE", bytes({0, 'a', 0xD8, 0x00, 0, 'b'})), 2);
}

TEST(CharacterStart, is_found_behind_more_output_than_the_scratch_holds) {
  const std::string good(100000, 'a');
  EXPECT_EQ(startOfStop("Shift_JIS", good + bytes({0x81, 0x7F})), 100000);
}

}  // namespace
}  // namespace ksv_cli_tests
