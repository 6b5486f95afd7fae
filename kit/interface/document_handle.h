// An open document, as the functions of the interface share it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kit/documents/document.h"
#include "ksv.h"

struct ksv_document {
  explicit ksv_document(std::unique_ptr<ksv_kit::documents::Document> read);

  std::unique_ptr<ksv_kit::documents::Document> document;
  std::vector<std::string> names;
  std::vector<std::vector<uint16_t>> units;
  std::vector<ksv_entry> entries;
  ksv_kit::documents::CheckedFacts checked;
  bool isChecked = false;
};
