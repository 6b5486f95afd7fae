// Where everything goes in a compound file that is written from its beginning to its end.
//
//     header | list of the table | table | directory | table of mini sectors | mini sectors |
//     streams
//
// Every chain is one run of sectors, so that the tables follow from where the runs begin and are
// written without being held. Sectors are counted without the one that files of version 4 beyond 2
// GB keep free, and get their real numbers when they are written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kit/documents/document.h"
#include "kit/documents/document_edit.h"

namespace ksv_kit::documents {

class DocumentLayout {
 public:
  using Node = DocumentEdit::Node;
  using Output = DocumentEdit::Output;

  // The nodes that hang together with the first one, the root.
  DocumentLayout(const std::vector<Node>& nodes, bool hasLargeSectors, uint32_t transaction);

  // source: of the nodes whose bytes are copied.
  void write(Document* source, const Output& output) const;

 private:
  // What is written of a node in the directory.
  struct Placed {
    const Node* node;
    uint32_t left;
    uint32_t right;
    uint32_t child;
    bool isRed;
    uint32_t start;  // of a stream: a sector behind the first stream's, or a mini sector
  };
  // Sectors, or mini sectors, that follow each other.
  struct Run {
    uint64_t count;
    uint32_t mark;  // kEndOfChain: a chain; else what the table says of each
  };
  class Writer;

  void placeEntries(const std::vector<Node>& nodes);
  // Makes a tree of entries that follow each other: its top.
  uint32_t linkSiblings(uint32_t first, uint32_t count);
  void placeStreams();
  void placeTables();
  bool isMini(const Placed& entry) const;

  void writeHeader(Writer& writer) const;
  void writeList(Writer& writer) const;
  void writeTable(Writer& writer) const;
  void writeDirectory(Writer& writer) const;
  void fillEntry(const Placed& entry, uint8_t* bytes) const;
  void writeMiniTable(Writer& writer) const;
  void writeStream(const Placed& entry, Document* source, Writer& writer) const;

  uint32_t tableSector(uint64_t index) const;
  uint32_t startOf(const Placed& entry) const;
  uint64_t directoryBegin() const { return difatSectors_ + fatSectors_; }
  // The number of the first of so many sectors; kEndOfChain: there are none.
  uint32_t firstOf(uint64_t sectors, uint64_t counted) const;
  uint64_t sectorsOf(uint64_t bytes) const { return (bytes + sectorSize_ - 1) >> sectorShift_; }
  // The number in the file of a sector that was counted.
  uint64_t numberOf(uint64_t sector) const { return sector < lockedSector_ ? sector : sector + 1; }

  unsigned sectorShift_;
  uint64_t sectorSize_;
  uint32_t transaction_;
  uint64_t lockedSector_ = UINT64_MAX;
  std::vector<Placed> entries_;  // in the order of the directory
  std::vector<Run> miniRuns_;
  uint64_t miniSectors_ = 0;
  std::vector<Run> runs_;  // of streams, and when all is placed of the whole file
  uint64_t difatSectors_ = 0;
  uint64_t fatSectors_ = 0;
  uint64_t directorySectors_ = 0;
  uint64_t miniFatSectors_ = 0;
  uint64_t miniStreamSectors_ = 0;
  uint64_t streamSectors_ = 0;
};

}  // namespace ksv_kit::documents
