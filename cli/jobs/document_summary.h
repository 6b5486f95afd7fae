// What is to be known of a document, as its own reader gives it.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cli/system/failure.h"
#include "kit/documents/document.h"
#include "kit/documents/properties/document_kind.h"
#include "kit/documents/properties/document_properties.h"

namespace ksv_cli {

namespace properties = ksv_kit::properties;

struct DocumentSummary {
  properties::DocumentProperties properties;
  properties::DocumentKind kind;
  // Of the file, as far as reading came upon them.
  std::vector<ksv_kit::documents::Damage> damages;
};

// Throws Failure: the file cannot be read, or is no document.
std::unique_ptr<ksv_kit::documents::Document> openedDocument(const std::string& path);

// Throws Failure for what has neither properties nor a kind that is known.
DocumentSummary readSummary(const std::string& path, properties::WhichSets which);

// The first thing that could not be read of the properties; none: there is all.
std::optional<std::string> lossOf(const DocumentSummary& summary);

}  // namespace ksv_cli
