// All property sets of a document.
#pragma once

#include <string>
#include <vector>

#include "kit/documents/document.h"
#include "kit/documents/properties/known_properties.h"
#include "kit/documents/properties/property_set.h"

namespace ksv_kit::properties {

struct StreamSet {
  std::string path;    // as Document::pathOf() has it
  uint32_t entry = 0;  // its index
  PropertySet set;
};

enum class WhichSets {
  kKnown,  // the two that all kinds of documents have
  kAll     // every stream that begins as a set does, the two first
};

struct DocumentProperties {
  std::vector<StreamSet> sets;

  const StreamSet* setAt(std::string_view path) const;
  // Null where the document has none.
  const Property* find(const KnownProperty& known) const;
  // The properties with names of users, in the order of the set.
  std::vector<const Property*> custom() const;
};

// With their texts. Throws UnusableEngine, UnreadableDocument.
DocumentProperties propertiesOf(documents::Document& document, WhichSets which);

// The entry of a stream of the root by its name, which a look at each costs less than to make a
// path of it; none: there is none.
std::optional<uint32_t> rootStream(const documents::Document& document, std::u16string_view name);

// A stream as its set, without texts; no stream of that path: none.
std::optional<PropertySet> setAt(documents::Document& document, std::string_view path);

inline constexpr char kSummaryPath[] = "\\x05SummaryInformation";
inline constexpr char kDocumentSummaryPath[] = "\\x05DocumentSummaryInformation";

}  // namespace ksv_kit::properties
