// Documents as jobs open them, and how their damages are told.
#pragma once

#include <memory>
#include <string>

#include "cli/jobs/result_line.h"
#include "cli/system/failure.h"
#include "cli/system/named_input.h"
#include "kit/documents/document.h"

namespace ksv_cli {

using ksv_kit::documents::Damage;
using ksv_kit::documents::Document;
using ksv_kit::documents::Entry;

class OpenedDocument {
 public:
  // Throws Failure for what is no document, and what the reader throws where the system refuses.
  explicit OpenedDocument(const std::string& input);

  Document& operator*() const { return *document_; }
  Document* operator->() const { return document_.get(); }

 private:
  const NamedInput input_;
  std::unique_ptr<Document> document_;
};

// "cut-short": what records call a kind of damage.
const char* nameOf(ksv_damage_kind kind);

// "has a chain that leads to no sector (offset 76)".
Failure failureOf(const Damage& damage);

// Tells what was come upon so far on standard error, and with records as such on standard output.
// A few damages are told; 'ksv ole check' tells all. Returns the exit status.
enum class Telling { kLines, kRecords };
int tellDamages(const std::string& input, const Document& document, Telling telling);

}  // namespace ksv_cli
