// What is to be known of a document, as its own reader gives it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/jobs/opened_document.h"
#include "kit/documents/properties/document_kind.h"
#include "kit/documents/properties/document_properties.h"

namespace ksv_cli {

namespace properties = ksv_kit::properties;

struct DocumentSummary {
  properties::DocumentProperties properties;
  properties::DocumentKind kind;
  // Of the file, as far as reading came upon them.
  std::vector<Damage> damages;
};

// Throws Failure for what is no document, and for one that has neither properties nor a kind that
// is known.
DocumentSummary readSummary(const std::string& input, properties::WhichSets which);

// The first thing that could not be read of the properties; none: there is all.
std::optional<std::string> lossOf(const DocumentSummary& summary);

}  // namespace ksv_cli
