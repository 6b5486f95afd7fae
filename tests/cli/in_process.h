// Conversions inside the test process, for checks that need thousands of them.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "cli/charsets/loaded_rules.h"
#include "cli/text/conversion_settings.h"

namespace ksv_cli_tests {

using Adjustment = std::function<void(ksv_cli::ConversionSettings&)>;

// What came out, and the reason when it ended early.
struct Conversion {
  std::string output;
  std::string failure;

  bool operator==(const Conversion&) const = default;
};

void PrintTo(const Conversion& conversion, std::ostream* out);

class Converting {
 public:
  Converting();

  // As the command converts it, in pieces of the size; shortReads other than 0
  // hands out fewer bytes a read, the number drawn from this seed.
  Conversion inPieces(const std::string& source, const std::string& target, const std::string& text,
                      size_t blockSize, const Adjustment& adjust = nullptr,
                      unsigned shortReads = 0) const;

  // By a single cconvConvert call over the whole text, without any care for marks
  // or well-formedness; empty when the text cannot be converted whole.
  std::string atOnce(const std::string& source, const std::string& target, const std::string& text,
                     const Adjustment& adjust = nullptr) const;

  std::vector<std::string> charsets() const { return ruleBase_->charsets(); }

  ksv_cli::ConversionSettings settings(const std::string& source, const std::string& target,
                                       const Adjustment& adjust) const;

 private:
  std::unique_ptr<ksv_cli::RuleBase> ruleBase_;
};

// A text in UTF-8 in another charset, through the library.
std::string encoded(const std::string& charset, const std::string& utf8);

const Converting& converting();

}  // namespace ksv_cli_tests
