// What the command line says of properties that are to be changed, and the documents with them.
#pragma once

#include <string>
#include <vector>

#include "cli/system/streams.h"
#include "kit/documents/document.h"
#include "kit/documents/properties/known_properties.h"
#include "kit/documents/properties/property_set.h"

namespace ksv_cli {

struct PropertyOptions {
  std::vector<std::string> set;     // "title=..."
  std::vector<std::string> custom;  // "Project=...", "Count=7:number"
  std::vector<std::string> removed;

  bool areGiven() const { return !set.empty() || !custom.empty() || !removed.empty(); }
};

struct PropertyEdit {
  // Of those that all kinds of documents have; null: one that users have named.
  const ksv_kit::properties::KnownProperty* known = nullptr;
  std::string name;
  bool isRemoved = false;
  ksv_kit::properties::Value value = {};
};

// In the order in which they are done: removals first. Throws UsageError.
std::vector<PropertyEdit> propertyEdits(const PropertyOptions& options);

// Writes the document with the changes; all streams but those of its properties stay as they are.
// Throws Failure, also for a document of which something would be lost.
void writeEdited(ksv_kit::documents::Document& document, const std::vector<PropertyEdit>& edits,
                 ByteSink& sink);

}  // namespace ksv_cli
