// Whether the structure of a document is sound, as people and programs read it.
#pragma once

#include <cstdint>
#include <string>

#include "cli/jobs/opened_document.h"

namespace ksv_cli {

struct DocumentVerdict {
  bool isDamaged = false;
  uint32_t orphans = 0;  // entries in use that are in no storage
  uint64_t lostSectors = 0;

  bool isSound() const { return !isDamaged && orphans == 0; }
  const char* inWords() const { return isDamaged ? "damaged" : isSound() ? "sound" : "orphaned"; }
};

// Looks at all of it.
DocumentVerdict verdictOn(Document& document);

// Both of a document that the verdict is on.
std::string verdictAsText(const Document& document, const DocumentVerdict& verdict,
                          const std::string& title);
std::string verdictAsJson(const Document& document, const DocumentVerdict& verdict,
                          const std::string& input);

}  // namespace ksv_cli
