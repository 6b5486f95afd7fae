// How a text is converted.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "kit/charsets/charset_names.h"
#include "kit/text/declarations.h"
#include "ksv.hpp"
#include "ksv_cconv.h"

namespace ksv_cli {

// As the charset directory has them.
inline constexpr char kAsciiName[] = "iso-646irv";

struct ConversionSettings {
  ksv_kit::CharsetChoice source;  // without a name: not known yet
  ksv_kit::CharsetChoice target;
  ConvertOptions options{};
  bool skipInvalid = false;
  bool repairs = false;   // a text that was written as UTF-8 twice is mended in front
  bool isStrict = false;  // a text of which something was skipped or replaced has failed
  std::string language;   // announced in front of the text; empty: none
  size_t blockSize = 256 * 1024;
  std::optional<ksv_kit::DeclaredName> declared;  // what the text is to say of its charset
  // What happens to characters and problems beyond the above. The names are asked when a profile
  // has another charset for one of the two.
  ksv::Options changes;
  const ksv_kit::CharsetNames* names = nullptr;
};

}  // namespace ksv_cli
