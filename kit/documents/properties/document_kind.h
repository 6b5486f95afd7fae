// Which kind of document a compound file is, by the class of its root and by its streams.
#pragma once

#include <optional>
#include <string>

#include "kit/documents/document.h"
#include "kit/documents/properties/document_properties.h"

namespace ksv_kit::properties {

struct DocumentKind {
  const char* key = "";          // "word"; empty: nothing is known
  const char* description = "";  // "Word document"
  double confidence = 0;         // 1: its class and its streams both say so
  bool hasMacros = false;        // it, or something embedded in it, has code
  bool isEncrypted = false;
  std::optional<bool> isTemplate;  // none: this kind does not say
};

// Reads the beginnings of a few streams. Throws UnreadableDocument.
DocumentKind kindOf(documents::Document& document);

// The version of the application that wrote the properties, "11.0"; empty: they do not say.
std::string applicationVersion(const DocumentProperties& properties);

}  // namespace ksv_kit::properties
