// Loading of rule files: one file a charset, which names its groups and
// their tables through entity declarations.
//
//     <charset>                     a charset file
//       <name>Shift_JIS</name>
//       <rule construle="constShift_JIS" destrule="destShift_JIS"/>
//       <baseset>&group;             kind 1, in the order groups are tried
//         <dstable bytenum="2">&table;</dstable>
//       </baseset>
//       <diffset>&group;</diffset>   kind 2
//       <eudcset>&group;</eudcset>   kind 3
//     </charset>
#pragma once

#include <string>

#include "cconv/rules/rule_model.h"
#include "cconv/rules/rule_reader.h"

namespace ksv {

// Loads one charset file. True also when the charset is there already.
bool loadRuleFile(const std::string& path);

// Reads the content of a "defined" element. False when the list of ranges is full.
bool parseDefinedRanges(const RuleElement& defined, RangeSet& ranges);

}  // namespace ksv
