// The library's conversion functions, started with the charset directory loaded.
#pragma once

#include <string>
#include <vector>

#include "kit/charsets/charset_names.h"

namespace ksv_cli {

using ksv_kit::CharsetNames;

class RuleBase {
 public:
  // Throws RuleBase::Unusable when there is nothing to convert with.
  RuleBase();
  ~RuleBase();
  RuleBase(const RuleBase&) = delete;
  RuleBase& operator=(const RuleBase&) = delete;

  struct Unusable {
    std::string directory;
    std::string reason;
  };

  // From here on nothing is taken apart piece by piece: the process ends, and all goes with it.
  static void leaveToSystem();

  // The names of the charsets in load order.
  std::vector<std::string> charsets() const;

  // The names under which they can be given.
  CharsetNames names() const;
};

}  // namespace ksv_cli
