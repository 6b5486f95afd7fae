// A program of others, in C++: converts a Shift_JIS text and prints the bytes of UTF-8.
#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "ksv_cconv.h"

namespace {

void demand(uint32_t status) {
  if (status != KSV_STATUS_DONE) throw std::runtime_error("status " + std::to_string(status));
}

std::string toUtf8(const std::string& text) {
  ConverterRecord record{};
  uint32_t source[3] = {1, 0, 0};  // most significant byte first
  std::array<uint8_t, 32> output;
  demand(cconvInitConvert(&record, nullptr, "UTF-8"));
  demand(cconvChgCharset(&record, source, "Shift_JIS"));
  record.input = reinterpret_cast<const uint8_t*>(text.data());
  record.inputLength = static_cast<int32_t>(text.size());
  record.output = output.data();
  record.outputCapacity = static_cast<int32_t>(output.size());
  demand(cconvConvert(&record));
  demand(cconvTermConvert(&record));
  return {output.begin(), output.begin() + record.outputPosition};
}

}  // namespace

int main() {
  try {
    if (startProcess() == 0 || cconvLoadRule() == 0) return 1;
    for (const char c : toUtf8("\x93\xFA\x96\x7B")) {
      std::printf("%02X ", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
    std::puts("in C++");
    endProcess();
    return 0;
  } catch (const std::exception& error) {
    std::printf("%s\n", error.what());
    return 1;
  }
}
