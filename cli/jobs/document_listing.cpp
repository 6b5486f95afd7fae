#include "cli/jobs/document_listing.h"

#include <algorithm>
#include <functional>

#include "cli/jobs/tree_drawing.h"
#include "cli/system/resource_limits.h"
#include "kit/documents/entry_names.h"
#include "kit/documents/properties/times.h"
#include "kit/documents/properties/value.h"

namespace ksv_cli {
namespace {

using ksv_kit::documents::kNoEntry;
using ksv_kit::documents::shownName;

const char* typeOf(const Entry& entry) { return entry.isStream() ? "stream" : "storage"; }

// Empty where none is told.
std::string timeOf(uint64_t fileTime) {
  return fileTime == 0 ? "" : ksv_kit::properties::isoTime(fileTime);
}

std::string classIdOf(const Entry& entry) {
  const auto& bytes = entry.stored->classId;
  const bool isNone =
      std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0; });
  return isNone ? "" : ksv_kit::properties::guidText(std::string(bytes.begin(), bytes.end()));
}

// All but the root.
void forEachListed(const Document& document, const std::function<void(uint32_t)>& visit) {
  for (uint32_t index = 1; index < document.entries().size(); ++index)
    if (document.entries()[index].depth <= limits::kDeepestStorage) visit(index);
}

// Orphans that no storage holds stand behind the last entry of the root.
bool isLastDrawn(const Document& document, const Entry& entry) {
  if (entry.nextSibling != kNoEntry) return false;
  const bool isInRoot = entry.parent == 0;
  return !isInRoot || !document.entries().back().isOrphan;
}

// What is drawn for an entry. An orphan that no storage holds is named by its path.
std::string drawnName(const Document& document, uint32_t index) {
  const Entry& entry = document.entries()[index];
  const std::string name =
      entry.parent == kNoEntry ? document.pathOf(index) : shownName(entry.name());
  return name + (entry.isStream() ? "  " + std::to_string(entry.size()) : "/");
}

std::string orHyphen(std::string text) { return text.empty() ? "-" : text; }

}  // namespace

bool isNestedTooDeep(const Document& document) {
  return std::any_of(document.entries().begin(), document.entries().end(),
                     [](const Entry& entry) { return entry.depth > limits::kDeepestStorage; });
}

std::string listedAsTree(const Document& document, const std::string& title) {
  TreeDrawing drawing(title);
  forEachListed(document, [&](uint32_t index) {
    const Entry& entry = document.entries()[index];
    drawing.add(entry.depth - 1, isLastDrawn(document, entry), drawnName(document, index));
  });
  return drawing.text();
}

std::string listedAsTable(const Document& document) {
  std::string text;
  forEachListed(document, [&](uint32_t index) {
    const Entry& entry = document.entries()[index];
    char state[16];
    std::snprintf(state, sizeof state, "%08X", static_cast<unsigned>(entry.stored->stateBits));
    text +=
        textLine({typeOf(entry), entry.isStream() ? std::to_string(entry.size()) : "-",
                  orHyphen(timeOf(entry.stored->created)), orHyphen(timeOf(entry.stored->modified)),
                  orHyphen(classIdOf(entry)), state, document.pathOf(index)});
  });
  return text;
}

std::string listedAsJson(const Document& document) {
  std::string text;
  forEachListed(document, [&](uint32_t index) {
    const Entry& entry = document.entries()[index];
    const auto addText = [](nlohmann::ordered_json& line, const char* field,
                            const std::string& value) {
      if (!value.empty()) line[field] = value;
    };
    nlohmann::ordered_json line = emptyRecord();
    line["path"] = document.pathOf(index);
    line["type"] = typeOf(entry);
    if (entry.isStream()) line["size"] = entry.size();
    addText(line, "created", timeOf(entry.stored->created));
    addText(line, "modified", timeOf(entry.stored->modified));
    addText(line, "classId", classIdOf(entry));
    if (entry.stored->stateBits != 0) line["stateBits"] = entry.stored->stateBits;
    if (entry.isOrphan) line["orphaned"] = true;
    text += jsonLine(line);
  });
  return text;
}

}  // namespace ksv_cli
