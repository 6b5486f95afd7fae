// Fields that have parameters: Content-Type and Content-Disposition.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/mail/header_words.h"

namespace ksv_cli {

// Its value: what extended parameters have told the charset of, or what programs write in their
// place, which are encoded words, and bytes as they are.
struct HeaderParameter {
  std::string name;  // in small letters
  std::vector<HeaderRun> value;
};

struct ParameterField {
  std::string value;  // in small letters: "text/plain", "attachment"
  std::vector<HeaderParameter> parameters;

  const HeaderParameter* find(std::string_view name) const;
};

// field: unfolded. Pieces of a value (NAME*0, NAME*1) are put together in the order of their
// numbers; of a parameter that is there in several forms the extended one counts.
ParameterField parameterField(std::string_view field);

// The bytes of a value that is ASCII, such as the name of a charset.
std::string plainValue(const HeaderParameter& parameter);

}  // namespace ksv_cli
