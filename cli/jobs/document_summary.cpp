#include "cli/jobs/document_summary.h"

#include <algorithm>

namespace ksv_cli {
namespace {

using properties::StreamSet;

// Of damages of the file: streams that could not be read whole.
bool losesBytes(const Damage& damage) {
  return damage.kind == KSV_DAMAGE_CUT_SHORT || damage.kind == KSV_DAMAGE_CHAIN ||
         damage.kind == KSV_DAMAGE_CYCLE || damage.kind == KSV_DAMAGE_SIZE;
}

bool hasProperties(const StreamSet& set) {
  return std::any_of(
      set.set.sections.begin(), set.set.sections.end(),
      [](const properties::Section& section) { return !section.properties.empty(); });
}

std::string placed(const std::string& reason, uint64_t offset) {
  return reason + " (offset " + std::to_string(offset) + ")";
}

}  // namespace

DocumentSummary readSummary(const std::string& input, properties::WhichSets which) {
  const OpenedDocument document(input);
  DocumentSummary summary;
  summary.properties = properties::propertiesOf(*document, which);
  summary.kind = properties::kindOf(*document);
  summary.damages = document->damages().told();
  const std::vector<StreamSet>& sets = summary.properties.sets;
  if (std::any_of(sets.begin(), sets.end(), hasProperties) || summary.kind.key[0] != '\0')
    return summary;
  if (sets.empty() && !summary.damages.empty()) throw failureOf(summary.damages.front());
  if (sets.empty()) throw Failure("has no summary information");
  throw Failure("has malformed summary information");
}

std::optional<std::string> lossOf(const DocumentSummary& summary) {
  for (const Damage& damage : summary.damages)
    if (losesBytes(damage)) return placed(damage.reason, damage.offset);
  for (const StreamSet& stream : summary.properties.sets)
    for (const properties::DamageNote& damage : stream.set.damages)
      if (properties::losesSomething(damage.kind))
        return "in " + stream.path + " " + placed(wordsOf(damage.kind), damage.offset);
  return std::nullopt;
}

}  // namespace ksv_cli
