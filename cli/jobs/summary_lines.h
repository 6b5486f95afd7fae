// The properties of a document as lines and as records.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "cli/jobs/document_summary.h"

namespace ksv_cli {

enum class SummaryForm {
  kKnown,  // by the names that people know
  kAll     // every property of every set, as it stands there
};

// In UTF-8, each with a line end. name: of the document, as it is shown.
std::string summaryLines(const std::string& name, const DocumentSummary& summary, SummaryForm form);

// Adds the fields to the record of the document.
void addSummary(nlohmann::ordered_json& record, const DocumentSummary& summary, SummaryForm form);

// Lines of a label and a text whose further lines stand under its first. Control characters, which
// could do things to a terminal, are U+FFFD.
std::string labelled(const std::string& label, const std::string& text);

}  // namespace ksv_cli
