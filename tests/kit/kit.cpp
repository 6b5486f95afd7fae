#include "kit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <vector>

namespace ksv_kit_tests {
namespace {

Converted failed(const ksv_error& error) {
  return {static_cast<ksv_result>(error.result),
          "",
          error.offset,
          error.line,
          error.column,
          error.message};
}

}  // namespace

void PrintTo(const Converted& converted, std::ostream* out) {
  *out << ksv_result_name(converted.result) << ' ' << testing::PrintToString(converted.text) << ' '
       << converted.message;
}

Converted text(std::string_view bytes) { return {KSV_OK, std::string(bytes), 0, 0, 0, ""}; }

Converted convert(const char* from, const char* to, std::string_view input,
                  const ksv_options* options) {
  char* output = nullptr;
  size_t length = 0;
  ksv_error error;
  const ksv_result result =
      ksv_convert(from, to, options, input.data(), input.size(), &output, &length, &error);
  EXPECT_EQ(result, error.result);
  EXPECT_EQ(output == nullptr, result != KSV_OK);
  Converted converted = failed(error);
  if (output != nullptr) {
    converted.text.assign(output, length);
    EXPECT_EQ(output[length], '\0');
  }
  ksv_free(output);
  return converted;
}

Plan plan(const char* from, const char* to, const ksv_options* options) {
  ksv_plan* made = nullptr;
  ksv_error error;
  EXPECT_EQ(ksv_plan_new(from, to, options, &made, &error), KSV_OK) << error.message;
  return Plan(made);
}

Converter converter(const Plan& plan) {
  ksv_converter* made = nullptr;
  EXPECT_EQ(ksv_converter_new(plan.get(), &made, nullptr), KSV_OK);
  return Converter(made);
}

Converted feed(ksv_converter* converter, std::string_view input, size_t piece, size_t room) {
  std::vector<char> buffer(room);
  std::string made;
  ksv_error error;
  const auto ends = [&](ksv_result result, size_t written) {
    EXPECT_LE(written, room);
    made.append(buffer.data(), written);
    return result != KSV_OK && result != KSV_NO_ROOM;
  };
  for (size_t at = 0; at < input.size();) {
    size_t used = 0;
    size_t written = 0;
    const size_t count = std::min(piece, input.size() - at);
    const ksv_result result = ksv_converter_feed(converter, input.data() + at, count, &used,
                                                 buffer.data(), room, &written, &error);
    at += used;
    EXPECT_TRUE(result != KSV_OK || used == count);
    if (ends(result, written)) {
      Converted converted = failed(error);
      converted.text = made;
      return converted;
    }
  }
  for (;;) {
    size_t written = 0;
    const ksv_result result =
        ksv_converter_finish(converter, buffer.data(), room, &written, &error);
    if (ends(result, written) || result == KSV_OK) break;
  }
  Converted converted = failed(error);
  converted.text = made;
  return converted;
}

Converted withoutText(Converted converted) {
  if (converted.result != KSV_OK) converted.text.clear();
  return converted;
}

}  // namespace ksv_kit_tests
