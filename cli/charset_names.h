// The names under which a charset can be given on the command line.
#ifndef KSV_CLI_CHARSET_NAMES_H
#define KSV_CLI_CHARSET_NAMES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "unicode_check.h"

namespace ksv_cli {

enum class ByteOrder { kOpen, kLittle, kBig };

struct CharsetChoice {
  std::string name;  // as the charset directory has it
  std::string display;
  UnicodeForm form = UnicodeForm::kNone;
  ByteOrder order = ByteOrder::kOpen;  // the one that the name given fixes

  // Whether the bytes of a unit have an order at all.
  bool hasByteOrder() const { return form != UnicodeForm::kNone && form != UnicodeForm::kUtf8; }
};

struct CharsetListing {
  std::string display;
  std::vector<std::string> aliases;
};

class CharsetNames {
 public:
  // directoryNames: what the charset directory holds, in its order.
  explicit CharsetNames(std::vector<std::string> directoryNames);

  // A name of the directory comes before an alias of the same spelling.
  std::optional<CharsetChoice> find(std::string_view name) const;

  std::vector<CharsetListing> list() const;

 private:
  bool holds(std::string_view lowerName) const;

  std::vector<std::string> directoryNames_;
};

}  // namespace ksv_cli

#endif
