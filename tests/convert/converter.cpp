#include "tests/convert/converter.h"

#include <algorithm>
#include <ostream>

#include "tests/system/system.h"

namespace ksv_test {
namespace {

constexpr char kCharsetPath[] = "Charsetpath";

}  // namespace

std::string hex(const Bytes& text) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string shown;
  for (const char c : text) {
    if (!shown.empty()) shown += ' ';
    shown += kDigits[static_cast<uint8_t>(c) >> 4];
    shown += kDigits[static_cast<uint8_t>(c) & 0xF];
  }
  return shown;
}

Bytes bytes(const std::string& hexText) {
  Bytes result;
  for (size_t i = 0; i + 1 < hexText.size(); i += 3) {
    result += static_cast<char>(std::stoi(hexText.substr(i, 2), nullptr, 16));
  }
  return result;
}

ConvertOptions Conversion::bigEndianOutput() {
  ConvertOptions options = {};
  options.outputBigEndian = 1;
  return options;
}

CharsetPath::CharsetPath(const std::string& directory)
    : before_(ksv::test::variable(kCharsetPath)) {
  ksv::test::setVariable(kCharsetPath, directory);
}

CharsetPath::~CharsetPath() { ksv::test::setVariable(kCharsetPath, before_); }

ShippedDirectory::ShippedDirectory() {
  const CharsetPath path(KSV_TEST_CHARSET_DIRECTORY);
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(cconvLoadRule(), 1);
}

ShippedDirectory::~ShippedDirectory() { endProcess(); }

Converter::Converter(const Conversion& setup) {
  EXPECT_EQ(cconvInitConvert(&record, &setup.options, setup.target.c_str()), 0u);
  std::array<uint32_t, 3> parameters = setup.parameters;
  EXPECT_EQ(cconvChgCharset(&record, parameters.data(), setup.source.c_str()), 0u);
}

void Converter::give(const Bytes& input, int32_t capacity) {
  input_ = input;
  record.input = reinterpret_cast<const uint8_t*>(input_.data());
  record.inputPosition = 0;
  record.inputLength = static_cast<int32_t>(input_.size());
  drained_.clear();
  record.outputPosition = 0;
  drain(capacity);
}

void Converter::showInput(int32_t length) { record.inputLength = length; }

void Converter::drain(int32_t capacity) {
  drained_.append(output_.begin(), output_.begin() + record.outputPosition);
  // Exactly as large as it says, so that a sanitizer sees a byte too many.
  output_ = std::vector<uint8_t>(static_cast<size_t>(capacity));
  output_.shrink_to_fit();
  record.output = output_.data();
  record.outputPosition = 0;
  record.outputCapacity = capacity;
}

uint32_t Converter::convert() { return cconvConvert(&record); }
uint32_t Converter::terminate() { return cconvTermConvert(&record); }

Bytes Converter::written() const {
  return drained_ + Bytes(output_.begin(), output_.begin() + record.outputPosition);
}

void PrintTo(const Result& result, std::ostream* out) {
  *out << "status " << result.status << " at " << result.position << " [" << hex(result.output)
       << "]";
}

Result convertWhole(const Conversion& setup, const Bytes& input) {
  Converter converter(setup);
  converter.give(input, static_cast<int32_t>(input.size()) * 32 + 1024);
  const uint32_t status = converter.convert();
  return {status, converter.record.inputPosition, converter.written()};
}

}  // namespace ksv_test
