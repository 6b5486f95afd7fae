// What all tests of documents make use of.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kit/documents/document.h"
#include "tests/ole/compound_writer.h"

namespace ksv_kit::documents {

inline constexpr uint16_t kVersions[] = {3, 4};  // of the format

inline std::unique_ptr<Document> openBytes(std::string_view bytes) {
  return Document::open(bytesAt(bytes.data(), bytes.size()));
}

// All of a stream, or what there is of it.
inline std::string contentOf(Document& document, uint32_t index) {
  const auto bytes = document.readWhole(index, SIZE_MAX);
  return std::string(bytes->begin(), bytes->end());
}

inline std::string contentAt(Document& document, std::string_view path) {
  const auto index = document.find(path);
  return index ? contentOf(document, *index) : "(there is no " + std::string(path) + ")";
}

inline std::vector<std::string> pathsOf(const Document& document) {
  std::vector<std::string> paths;
  for (uint32_t i = 1; i < document.entries().size(); ++i) paths.push_back(document.pathOf(i));
  return paths;
}

// The damages in words: "has a chain that leads to no sector at 1024".
inline std::vector<std::string> damagesOf(const Document& document) {
  std::vector<std::string> told;
  for (const Damage& damage : document.damages().told())
    told.push_back(std::string(damage.reason) + " at " + std::to_string(damage.offset));
  return told;
}

inline std::string at(const char* reason, uint64_t offset) {
  return std::string(reason) + " at " + std::to_string(offset);
}

}  // namespace ksv_kit::documents
