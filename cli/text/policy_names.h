// What options call the policies of conversions.
#pragma once

#include <string_view>

#include "ksv.h"

namespace ksv_cli {

// KSV_FAIL for a name of none: options say themselves which they take.
inline ksv_policy policyOfName(std::string_view name) {
  struct NamedPolicy {
    const char* name;
    ksv_policy policy;
  };
  constexpr NamedPolicy kPolicies[] = {{"skip", KSV_SKIP},
                                       {"replace", KSV_REPLACE},
                                       {"hex", KSV_HEX_REFERENCE},
                                       {"decimal", KSV_DECIMAL_REFERENCE},
                                       {"escape", KSV_ESCAPE},
                                       {"percent", KSV_PERCENT},
                                       {"look-alike", KSV_LOOK_ALIKE}};
  for (const NamedPolicy& row : kPolicies)
    if (name == row.name) return row.policy;
  return KSV_FAIL;
}

}  // namespace ksv_cli
