#include "tests/repertoire/converter.h"

#include <stdexcept>

#include "tests/common/support.h"

namespace repertoire {

namespace {

// No character of any charset here takes more bytes, for each byte of its input.
constexpr size_t kLargestGrowth = 8;
constexpr size_t kSmallestBuffer = 64;

}  // namespace

std::filesystem::path charsetDirectory() { return REPERTOIRE_CHARSET_DIRECTORY; }

RuleBase::RuleBase(const std::filesystem::path& directory) {
  ksv::test::setVariable("Charsetpath", ksv::test::textOf(directory));
  if (startProcess() != 1) {
    throw std::runtime_error("startProcess failed");
  }
  if (cconvLoadRule() != 1) {
    endProcess();
    throw std::runtime_error("no rule file in " + directory.string());
  }
}

RuleBase::~RuleBase() { endProcess(); }

std::vector<std::string> RuleBase::charsetNames() const {
  std::vector<std::string> names;
  char name[KSV_NAME_SIZE];
  for (int32_t index = 0; cconvEnumGroup(index, name) == 1; ++index) {
    names.emplace_back(name);
  }
  return names;
}

Converter::Converter(const std::string& source, const std::string& target, ByteOrder order)
    : record_{}, buffer_(kSmallestBuffer) {
  const uint32_t bigEndian = order == ByteOrder::kBig ? 1 : 0;
  ConvertOptions options{};
  options.outputBigEndian = bigEndian;
  if (cconvInitConvert(&record_, &options, target.c_str()) != KSV_STATUS_DONE) {
    throw std::runtime_error("no target charset " + target);
  }
  uint32_t parameters[3] = {bigEndian, 0, 0};
  if (cconvChgCharset(&record_, parameters, source.c_str()) != KSV_STATUS_DONE) {
    throw std::runtime_error("no source charset " + source);
  }
}

ConversionResult Converter::convert(std::string_view input) {
  if (buffer_.size() < input.size() * kLargestGrowth) {
    buffer_.resize(input.size() * kLargestGrowth);
  }
  record_.input = reinterpret_cast<const uint8_t*>(input.data());
  record_.inputPosition = 0;
  record_.inputLength = static_cast<int32_t>(input.size());
  record_.charactersRead = 0;
  record_.decoderState = 2001;  // as a text begins: in ASCII, with nothing designated
  record_.designatedGroup = 0;
  record_.designatedPlane = 0;
  record_.output = buffer_.data();
  record_.outputPosition = 0;
  record_.outputCapacity = static_cast<int32_t>(buffer_.size());
  const uint32_t status = cconvConvert(&record_);
  return {status, record_.inputPosition, record_.charactersRead, record_.decodedGroup,
          Bytes(buffer_.begin(), buffer_.begin() + record_.outputPosition)};
}

}  // namespace repertoire
