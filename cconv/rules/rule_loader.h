// Loading of rule files: one file a charset, which names its member subsets and
// their tables through entity declarations.
//
//     <charset>                     a charset file
//       <name>Shift_JIS</name>
//       <rule construle="constShift_JIS" destrule="destShift_JIS"/>
//       <baseset>&subset;             kind 1, in the order members are tried
//         <dstable bytenum="2">&table;</dstable>
//       </baseset>
//       <diffset>&subset;</diffset>   kind 2
//       <eudcset>&subset;</eudcset>   kind 3
//     </charset>
#pragma once

#include <memory>
#include <string>

#include "cconv/rules/rule_model.h"
#include "cconv/rules/rule_text.h"

namespace ksv {

// Loads one charset file. True also when the charset is there already.
bool loadRuleFile(const std::string& path);

// The builders that loadRuleFile is made of. Each takes the charset file and the
// content span of the element that it reads, and returns null on failure.
std::unique_ptr<SubsetDef> buildBaseSubset(const RuleText& charsetText, Span span,
                                           RuleFiles& files);
std::unique_ptr<SubsetDef> buildDiffSubset(const RuleText& charsetText, Span span,
                                           RuleFiles& files);
std::unique_ptr<SubsetDef> buildEudcSubset(const RuleText& charsetText, Span span,
                                           RuleFiles& files);
std::unique_ptr<CodeTable> buildDestTable(const RuleText& charsetText, Span span);

// Reads the content of a "defined" element. False when the list of ranges is full.
bool parseDefinedRanges(const RuleText& text, Span span, RangeSet& ranges);

// Gives the table the file that the entity reference in the span of the
// referencing text names, as the declaring text declares it.
bool attachTableFile(const RuleText& declaring, const RuleText& referencing, Span span,
                     CodeTable& table);

}  // namespace ksv
