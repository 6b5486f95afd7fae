#include "cli/jobs/document_summary.h"

#include <algorithm>
#include <utility>

#include "cli/jobs/zipped_document.h"

namespace ksv_cli {
namespace {

namespace documents = ksv_kit::documents;
using properties::StreamSet;

// Of damages of the file: streams that could not be read whole.
bool losesBytes(const documents::Damage& damage) {
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

std::unique_ptr<documents::Document> openedDocument(const std::string& path) {
  try {
    auto document = documents::Document::open(documents::bytesOfFile(path.c_str()));
    if (document != nullptr) return document;
  } catch (const documents::UnreadableDocument& unreadable) {
    throw Failure(unreadable.what());
  }
  if (const std::optional<std::string> zipped = zippedDocument(path))
    throw Failure::at(0, "is " + *zipped + ", which is no compound document");
  throw Failure::at(0, "is not a compound document");
}

DocumentSummary readSummary(const std::string& path, properties::WhichSets which) {
  const auto document = openedDocument(path);
  DocumentSummary summary;
  try {
    summary.properties = properties::propertiesOf(*document, which);
    summary.kind = properties::kindOf(*document);
  } catch (const documents::UnreadableDocument& unreadable) {
    throw Failure(unreadable.what());
  }
  summary.damages = document->damages().told();
  const std::vector<StreamSet>& sets = summary.properties.sets;
  if (std::any_of(sets.begin(), sets.end(), hasProperties) || summary.kind.key[0] != '\0')
    return summary;
  if (sets.empty()) throw Failure("has no summary information");
  throw Failure("has malformed summary information");
}

std::optional<std::string> lossOf(const DocumentSummary& summary) {
  for (const documents::Damage& damage : summary.damages)
    if (losesBytes(damage)) return placed(damage.reason, damage.offset);
  for (const StreamSet& stream : summary.properties.sets)
    for (const properties::DamageNote& damage : stream.set.damages)
      if (properties::losesSomething(damage.kind))
        return "in " + stream.path + " " + placed(wordsOf(damage.kind), damage.offset);
  return std::nullopt;
}

}  // namespace ksv_cli
