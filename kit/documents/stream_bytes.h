// The bytes of one stream of a compound file, by way of its chain.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "kit/documents/chain.h"
#include "kit/documents/damage.h"
#include "kit/documents/directory.h"
#include "kit/documents/document_header.h"
#include "kit/documents/paged_bytes.h"
#include "kit/documents/sector_tables.h"

namespace ksv_kit::documents {

// What all streams of a document are read by.
struct StreamTables {
  PagedBytes& bytes;
  const Header& header;
  DamageList& damages;
  SectorTable& sectors;
  MiniTable& miniTable;
  Chain& miniStream;  // the sectors that mini sectors lie in
};

class StreamBytes {
 public:
  // All have to stay.
  StreamBytes(StreamTables& tables, const DirectoryEntry& entry, uint32_t id);

  // How many bytes came from a position on: fewer than count only behind the end, and where
  // something is damaged, which is told.
  size_t read(uint64_t position, uint8_t* buffer, size_t count);

  // Tells what keeps any part of it from being read.
  void examine();

  // The chain, whose units are mini sectors or sectors.
  Chain& chain() { return chain_; }
  bool isMini() const { return isMini_; }

 private:
  struct Piece {
    uint64_t offset;  // in the file
    uint64_t length;
  };

  unsigned shift() const { return isMini_ ? tables_.header.miniShift : tables_.header.sectorShift; }
  // Tells that the chain is too short, unless it is told already that it is broken.
  void tellShortChain();
  void tellCutShort();
  std::optional<Piece> pieceAt(uint64_t position, uint64_t wanted);
  std::optional<Piece> pieceOfMiniStream(uint64_t position, uint64_t wanted);

  StreamTables& tables_;
  const uint64_t size_;
  const uint64_t sizeAt_;  // where the size stands in the file
  const uint32_t id_;
  const bool isMini_;
  Chain chain_;
};

}  // namespace ksv_kit::documents
