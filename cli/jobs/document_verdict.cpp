#include "cli/jobs/document_verdict.h"

#include <algorithm>

#include "cli/system/resource_limits.h"

namespace ksv_cli {
namespace {

std::string counted(uint64_t count, const std::string& one, const std::string& many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

// Empty where storages are nested deeper than is shown.
std::string shownPath(const Document& document, uint32_t index) {
  const bool isShown = document.entries()[index].depth <= limits::kDeepestStorage;
  return isShown ? document.pathOf(index) : "";
}

// The path of the entry that a damage concerns; empty: it concerns none, or the root.
std::string pathOf(const Document& document, const Damage& damage) {
  const std::optional<uint32_t> index = document.indexOf(damage.id);
  return index ? shownPath(document, *index) : "";
}

std::string lineOf(const Document& document, const Damage& damage) {
  const std::string path = pathOf(document, damage);
  return "  " + std::string(failureOf(damage).what()) + (path.empty() ? "" : ": " + path) + "\n";
}

nlohmann::ordered_json recordOf(const Document& document, const Damage& damage) {
  nlohmann::ordered_json record = emptyRecord();
  record["kind"] = nameOf(damage.kind);
  record["reason"] = damage.reason;
  record["offset"] = damage.offset;
  record["entry"] = textOrNull(pathOf(document, damage));
  return record;
}

}  // namespace

DocumentVerdict verdictOn(Document& document) {
  DocumentVerdict verdict;
  verdict.lostSectors = document.check().lostSectors;
  verdict.isDamaged = !document.damages().told().empty();
  verdict.orphans =
      static_cast<uint32_t>(std::count_if(document.entries().begin(), document.entries().end(),
                                          [](const Entry& entry) { return entry.isOrphan; }));
  return verdict;
}

std::string verdictAsText(const Document& document, const DocumentVerdict& verdict,
                          const std::string& title) {
  std::string text = title + ": " + verdict.inWords() + "\n";
  for (const Damage& damage : document.damages().told()) text += lineOf(document, damage);
  if (document.damages().untold() != 0)
    text += "  " + counted(document.damages().untold(), "more damage", "more damages") + "\n";
  for (uint32_t index = 0; index < document.entries().size(); ++index)
    if (document.entries()[index].isOrphan)
      text += "  has an orphaned entry: " + shownPath(document, index) + "\n";
  if (verdict.lostSectors != 0)
    text += "  has " + counted(verdict.lostSectors, "sector", "sectors") + " in use of no entry\n";
  return text;
}

std::string verdictAsJson(const Document& document, const DocumentVerdict& verdict,
                          const std::string& input) {
  nlohmann::ordered_json record = ksv_cli::recordOf(input, ResultForm::kFull);
  record["verdict"] = verdict.inWords();
  record["version"] = document.header().version;
  record["sectorSize"] = document.header().sectorSize();
  record["entries"] = document.entries().size();
  record["orphans"] = verdict.orphans;
  record["lostSectors"] = verdict.lostSectors;
  record["damages"] = nlohmann::ordered_json::array();
  for (const Damage& damage : document.damages().told())
    record["damages"].push_back(recordOf(document, damage));
  record["moreDamages"] = document.damages().untold();
  return jsonLine(record);
}

}  // namespace ksv_cli
