#include "kit/documents/properties/document_properties.h"

#include <algorithm>
#include <array>
#include <utility>

#include "kit/documents/properties/code_page_text.h"

namespace ksv_kit::properties {
namespace {

// Sets hold a few kilobytes, with thumbnails a few hundred. What is longer is none.
constexpr size_t kLongestSet = size_t{256} << 20;
constexpr size_t kHead = 28;

void addSet(documents::Document& document, uint32_t entry, std::vector<StreamSet>& sets) {
  const auto bytes = document.readWhole(entry, kLongestSet);
  if (!bytes) return;
  StreamSet found;
  found.path = document.pathOf(entry);
  found.entry = entry;
  found.set = readPropertySet(*bytes);
  readTexts(found.set);
  sets.push_back(std::move(found));
}

bool beginsAsSet(documents::Document& document, uint32_t entry) {
  std::array<uint8_t, kHead> head;
  if (document.entries()[entry].size() < head.size()) return false;
  return document.read(entry, 0, head.data(), head.size()) == head.size() &&
         beginsAsPropertySet(head);
}

std::optional<uint32_t> streamAt(const documents::Document& document, std::string_view path) {
  const std::optional<uint32_t> entry = document.find(path);
  return entry && document.entries()[*entry].isStream() ? entry : std::nullopt;
}

}  // namespace

const StreamSet* DocumentProperties::setAt(std::string_view path) const {
  const auto found = std::find_if(sets.begin(), sets.end(),
                                  [&](const StreamSet& one) { return one.path == path; });
  return found == sets.end() ? nullptr : &*found;
}

const Property* DocumentProperties::find(const KnownProperty& known) const {
  const StreamSet* const stream = setAt(known.isOfSummary ? kSummaryPath : kDocumentSummaryPath);
  if (stream == nullptr) return nullptr;
  const Section* const section =
      stream->set.find(known.isOfSummary ? kSummaryFormat : kDocumentSummaryFormat);
  return section == nullptr ? nullptr : section->find(known.id);
}

std::vector<const Property*> DocumentProperties::custom() const {
  std::vector<const Property*> found;
  const StreamSet* const stream = setAt(kDocumentSummaryPath);
  const Section* const section = stream == nullptr ? nullptr : stream->set.find(kUserDefinedFormat);
  if (section == nullptr) return found;
  for (const Property& property : section->properties)
    if (!property.name.empty()) found.push_back(&property);
  return found;
}

std::optional<uint32_t> rootStream(const documents::Document& document, std::u16string_view name) {
  const std::vector<documents::Entry>& entries = document.entries();
  const auto found =
      std::find_if(entries.begin(), entries.end(), [&](const documents::Entry& entry) {
        return entry.parent == 0 && entry.isStream() && entry.name() == name;
      });
  if (found == entries.end()) return std::nullopt;
  return static_cast<uint32_t>(found - entries.begin());
}

std::optional<PropertySet> setAt(documents::Document& document, std::string_view path) {
  const std::optional<uint32_t> entry = streamAt(document, path);
  if (!entry) return std::nullopt;
  const auto bytes = document.readWhole(*entry, kLongestSet);
  if (!bytes) return std::nullopt;
  return readPropertySet(*bytes);
}

DocumentProperties propertiesOf(documents::Document& document, WhichSets which) {
  DocumentProperties found;
  const std::optional<uint32_t> known[] = {rootStream(document, kSummaryStream),
                                           rootStream(document, kDocumentSummaryStream)};
  for (const std::optional<uint32_t>& entry : known)
    if (entry) addSet(document, *entry, found.sets);
  if (which == WhichSets::kKnown) return found;
  for (uint32_t entry = 0; entry < document.entries().size(); ++entry) {
    const bool isKnown = entry == known[0] || entry == known[1];
    if (!isKnown && document.entries()[entry].isStream() && beginsAsSet(document, entry))
      addSet(document, entry, found.sets);
  }
  return found;
}

}  // namespace ksv_kit::properties
