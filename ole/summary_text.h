// The texts of properties: how they are cut, and their way into the caller's charset.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "ksv_cconv.h"
#include "ksv_ole.h"
#include "ole/limits.h"

namespace ksv {

using limits::kLongestText;

// How many bytes of a text are left when it is cut to at most 256 without splitting a
// character of the code page.
size_t trimmedLength(std::string_view text, uint16_t codePage);

class SummaryText {
 public:
  explicit SummaryText(const KsvSummarySettings& settings);

  // Converts a text of at most kLongestText bytes. When a charset is not loaded,
  // the output stays what it was.
  void convert(std::string_view text, uint16_t codePage);

  // Bytes in the target charset.
  const uint8_t* output() const { return output_.data(); }
  size_t outputLength() const { return outputLength_; }

 private:
  void prepare(uint16_t codePage);
  bool setUp(uint16_t codePage);

  // Names as the converter takes them: those of the settings may lack a terminator.
  char targetCharset_[KSV_NAME_SIZE] = {};
  char language_[KSV_NAME_SIZE] = {};
  ConvertOptions options_ = {};
  // As it is set up for texts of a code page, if there is such a converter.
  ConverterRecord prepared_ = {};
  std::optional<uint16_t> preparedCodePage_;
  bool isUsable_ = false;
  std::array<uint8_t, KSV_SUMMARY_TEXT_SIZE> output_;
  size_t outputLength_ = 0;
};

}  // namespace ksv
