#include "in_process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <random>
#include <vector>

#include "cli/system/failure.h"
#include "cli/text/text_conversion.h"
#include "command.h"
#include "ksv_cconv.h"
#include "tests/system/system.h"

namespace ksv_cli_tests {
namespace {

using ksv_kit::ByteOrder;
using ksv_kit::CharsetNames;
using ksv_cli::ConversionSettings;

class TextSource : public ksv_cli::ByteSource {
 public:
  TextSource(const std::string& text, unsigned shortReads)
      : text_(text), shortReads_(shortReads), random_(shortReads) {}

  size_t read(uint8_t* buffer, size_t size) override {
    size_t count = std::min(size, text_.size() - at_);
    if (shortReads_ != 0 && count > 1) count = 1 + random_() % std::min<size_t>(count, 5);
    std::memcpy(buffer, text_.data() + at_, count);
    at_ += count;
    return count;
  }

 private:
  const std::string& text_;
  unsigned shortReads_;
  std::mt19937 random_;
  size_t at_ = 0;
};

class TextSink : public ksv_cli::ByteSink {
 public:
  explicit TextSink(std::string& text) : text_(text) {}
  void write(const uint8_t* bytes, size_t size) override {
    text_.append(reinterpret_cast<const char*>(bytes), size);
  }

 private:
  std::string& text_;
};

}  // namespace

void PrintTo(const Conversion& conversion, std::ostream* out) {
  *out << testing::PrintToString(conversion.output) << ", failure: " << conversion.failure;
}

Converting::Converting() {
  ksv::test::setVariable("Charsetpath", charsetDirectory());
  ruleBase_ = std::make_unique<ksv_cli::RuleBase>();
}

ConversionSettings Converting::settings(const std::string& source, const std::string& target,
                                        const Adjustment& adjust) const {
  const CharsetNames names(ruleBase_->charsets());
  ConversionSettings settings;
  settings.source = names.findSource(source).value();
  settings.target = names.find(target).value();
  settings.options.outputBigEndian =
      !settings.target.hasByteOrder() || settings.target.order == ByteOrder::kBig;
  if (adjust) adjust(settings);
  return settings;
}

Conversion Converting::inPieces(const std::string& source, const std::string& target,
                                const std::string& text, size_t blockSize, const Adjustment& adjust,
                                unsigned shortReads) const {
  ConversionSettings chosen = settings(source, target, adjust);
  chosen.blockSize = blockSize;
  Conversion result;
  TextSource from(text, shortReads);
  TextSink to(result.output);
  try {
    ksv_cli::convertText(chosen, from, to);
  } catch (const ksv_cli::Failure& failure) {
    result.failure = failure.what();
  }
  return result;
}

std::string Converting::atOnce(const std::string& source, const std::string& target,
                               const std::string& text, const Adjustment& adjust) const {
  const ConversionSettings chosen = settings(source, target, adjust);
  std::vector<uint8_t> output(text.size() * 16 + 4096);
  ConverterRecord record{};
  cconvInitConvert(&record, &chosen.options, chosen.target.name.c_str());
  uint32_t parameters[3] = {!chosen.source.hasByteOrder() || chosen.source.order == ByteOrder::kBig,
                            0, chosen.skipInvalid};
  cconvChgCharset(&record, parameters, chosen.source.name.c_str());
  if (!chosen.language.empty()) cconvChgLang(&record, chosen.language.c_str());
  record.input = reinterpret_cast<const uint8_t*>(text.data());
  record.inputLength = static_cast<int32_t>(text.size());
  record.output = output.data();
  record.outputCapacity = static_cast<int32_t>(output.size());
  if (cconvConvert(&record) != KSV_STATUS_DONE) return "";
  if (cconvTermConvert(&record) != KSV_STATUS_DONE) return "";
  return {reinterpret_cast<const char*>(output.data()), static_cast<size_t>(record.outputPosition)};
}

const Converting& converting() {
  static const Converting instance;
  return instance;
}

std::string encoded(const std::string& charset, const std::string& utf8) {
  const Conversion result = converting().inPieces("UTF-8", charset, utf8, 4096);
  EXPECT_EQ(result.failure, "") << "in " << charset;
  return result.output;
}

}  // namespace ksv_cli_tests
