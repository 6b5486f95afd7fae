// A format of the log, which may hold anything, and its argument: what is printed has to be
// what the C library makes of the conversions that it may be given.
//
// Input: two words that are the argument; the format.
#include <cstdint>
#include <cstdio>
#include <string>

#include "common/log_format.h"
#include "fuzz/scratch_directory.h"
#include "fuzz/support.h"
#include "tests/common/slow_log_format.h"

namespace {

std::string printed(std::FILE* stream, const std::string& format, int32_t argument) {
  std::rewind(stream);
  ksv::printFormat(stream, format.c_str(), argument);
  std::string text(static_cast<size_t>(std::ftell(stream)), '\0');
  std::rewind(stream);
  ksv_fuzz::require(std::fread(text.data(), 1, text.size(), stream) == text.size(),
                    "what was printed can be read");
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ksv_fuzz::ScratchDirectory directory;
  static std::FILE* const stream = std::fopen(directory.pathOf("printed").c_str(), "w+b");
  ksv_fuzz::require(stream != nullptr, "a scratch file can be made");

  ksv_fuzz::Input input(data, size);
  const uint32_t high = input.word();
  const auto argument = static_cast<int32_t>(high << 16 | input.word());
  const std::string format = std::string(input.rest()).c_str();  // as far as its terminator
  ksv_fuzz::require(printed(stream, format, argument) == ksv::test::slowFormat(format, argument),
                    "both print the same");
  return 0;
}
