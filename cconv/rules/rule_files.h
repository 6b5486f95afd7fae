// Rule files and the entities through which they name each other and their tables.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "cconv/rules/rule_text.h"

namespace ksv {

// Reads the file of that name (its directory is ignored) from the charset
// directory. The defaults hold for a file that neither marks nor names its
// encoding. False, with an empty text, for a file that cannot be read, is empty,
// or is in UTF-8 or Shift_JIS.
bool readRuleText(const std::string& path, TextEncodingKind defaultEncoding, bool defaultBigEndian,
                  RuleText& text);

// The group files of one run over the charset directory: most of them belong to
// several charsets, and are read and cleaned once.
class RuleFiles {
 public:
  // As readRuleText; null for its false. The text stays where it is.
  const RuleText* read(const std::string& path, TextEncodingKind defaultEncoding,
                       bool defaultBigEndian);
  // What has been read already; null when that has not.
  const RuleText* find(const std::string& path, TextEncodingKind defaultEncoding,
                       bool defaultBigEndian) const;

 private:
  using Key = std::tuple<std::string, TextEncodingKind, bool>;
  std::map<Key, RuleText> texts_;
};

// The file that the text declares for an entity: NAME SYSTEM "file".
std::optional<std::string> entityFile(const RuleText& text, std::string_view name);

}  // namespace ksv
