// The tree of a document as people and programs read it.
#pragma once

#include <string>

#include "cli/jobs/opened_document.h"

namespace ksv_cli {

// Entries nested deeper than limits::kDeepestStorage are left out of all three.
bool isNestedTooDeep(const Document& document);

std::string listedAsTree(const Document& document, const std::string& title);
// A line an entry: type, size, when created and modified, class id, state bits, path.
std::string listedAsTable(const Document& document);
std::string listedAsJson(const Document& document);

}  // namespace ksv_cli
