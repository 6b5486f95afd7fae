// What all tests of libksv make use of.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "ksv.h"

namespace ksv_kit_tests {

// What a conversion gave: its text, or what it failed with.
struct Converted {
  ksv_result result = KSV_OK;
  std::string text;
  uint64_t offset = 0;
  uint64_t line = 0;
  uint64_t column = 0;
  std::string message;

  bool operator==(const Converted&) const = default;
};

void PrintTo(const Converted& converted, std::ostream* out);

// A text that was converted.
Converted text(std::string_view bytes);

// In one call, by names. A failed one has no text.
Converted convert(const char* from, const char* to, std::string_view input,
                  const ksv_options* options = nullptr);

struct PlanDeleter {
  void operator()(ksv_plan* plan) const { ksv_plan_free(plan); }
};
using Plan = std::unique_ptr<ksv_plan, PlanDeleter>;
Plan plan(const char* from, const char* to, const ksv_options* options = nullptr);

struct ConverterDeleter {
  void operator()(ksv_converter* converter) const { ksv_converter_free(converter); }
};
using Converter = std::unique_ptr<ksv_converter, ConverterDeleter>;
Converter converter(const Plan& plan);

// Fed in pieces of so many bytes, into buffers of so many. What was written in front of a problem
// is the text.
Converted feed(ksv_converter* converter, std::string_view input, size_t piece, size_t room);

// The same, of a failed conversion without what was written.
Converted withoutText(Converted converted);

}  // namespace ksv_kit_tests
