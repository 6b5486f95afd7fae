// How a text is converted.
#pragma once

#include <cstddef>
#include <string>

#include "kit/charsets/charset_names.h"
#include "ksv_cconv.h"

namespace ksv_cli {

struct ConversionSettings {
  ksv_kit::CharsetChoice source;  // without a name: not known yet
  ksv_kit::CharsetChoice target;
  ConvertOptions options{};
  bool skipInvalid = false;
  bool isStrict = false;  // a text of which something was skipped or replaced has failed
  std::string language;   // announced in front of the text; empty: none
  size_t blockSize = 256 * 1024;
};

}  // namespace ksv_cli
