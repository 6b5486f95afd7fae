// Writes the streams of a document to files below a directory.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "cli/jobs/opened_document.h"

namespace ksv_cli {

class DocumentExtraction {
 public:
  // Throws Failure where a file is there already with other bytes, unless it may be replaced, and
  // where a link is in the place of one: nothing has been written by then. One with the same bytes
  // is left alone, so that what was ended halfway can be done again.
  DocumentExtraction(Document& document, const std::string& directory, bool replaces);

  // A stream that was written whole.
  using Tell = std::function<void(uint32_t index, const std::string& path)>;
  // One that was not: there is no file of it. What a Failure says begins with its path.
  using TellFailure = std::function<void(const Failure& failure)>;

  // Storages become directories, and streams files, each whole or not at all. Throws Failure where
  // a directory or a file cannot be written.
  void write(const Tell& tell, const TellFailure& tellFailure);

 private:
  void placeEntries();
  std::string freePlace(const std::string& directory, uint32_t index);
  void refuseTaken();
  bool hasSameBytes(uint32_t index);
  void writeStream(uint32_t index);

  Document& document_;
  const std::string directory_;
  const bool replaces_;
  std::vector<std::string> places_;  // by the index of the entry; empty: it is not written
  std::vector<bool> isThere_;        // by the same, with the same bytes
  std::set<std::string> taken_;      // keys of places
  uint64_t left_;                    // bytes that may still be written
};

}  // namespace ksv_cli
