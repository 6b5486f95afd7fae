// aliases.txt of a charset directory: names that its charsets bring.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kit/charsets/charset_names.h"

namespace ksv_kit {

inline constexpr char kAliasFile[] = "aliases.txt";

struct AliasLine {
  CharsetAlias alias;
  size_t line;
};

struct AliasFault {
  size_t line;
  std::string reason;
};

struct AliasFile {
  std::vector<AliasLine> aliases;
  std::vector<AliasFault> faults;  // of lines that are passed over
};

// A line is a name, the charset it stands for, and, where the name fixes one, its byte
// order (little, big or -); what follows is a remark, and so is a line that begins with
// '#'. The text is UTF-8.
AliasFile readAliases(std::string text);

}  // namespace ksv_kit
