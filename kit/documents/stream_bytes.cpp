#include "kit/documents/stream_bytes.h"

#include <algorithm>

#include "common/compound_format.h"

namespace ksv_kit::documents {
namespace {

LinkTable& tableOf(StreamTables& tables, bool isMini) {
  if (isMini) return tables.miniTable;
  return tables.sectors;
}

// How many units lie in the piece from inFirst on, so many bytes long, without an overflow.
uint64_t unitsOf(uint64_t inFirst, uint64_t bytes, unsigned shift) {
  const uint64_t unit = uint64_t{1} << shift;
  return (bytes >> shift) + (((bytes & (unit - 1)) + inFirst + unit - 1) >> shift);
}

}  // namespace

StreamBytes::StreamBytes(StreamTables& tables, const DirectoryEntry& entry, uint32_t id)
    : tables_(tables),
      size_(entry.size),
      sizeAt_(entry.offset + ksv::compound_entry::kStreamSize),
      id_(id),
      isMini_(entry.size < tables.header.cutoff),
      chain_(tableOf(tables, isMini_), tables.damages,
             {entry.size == 0 ? ksv::kEndOfChain : entry.start,
              entry.offset + ksv::compound_entry::kStartingSector, id}) {}

void StreamBytes::tellShortChain() {
  if (!chain_.isBroken())
    tables_.damages.tell(KSV_DAMAGE_SIZE, sizeAt_, "has a stream that is shorter than it claims",
                         id_);
}

void StreamBytes::tellCutShort() {
  tables_.damages.tell(KSV_DAMAGE_CUT_SHORT, tables_.bytes.size(), "ends inside a stream", id_);
}

void StreamBytes::examine() {
  for (uint64_t position = 0; position < size_;) {
    const std::optional<Piece> piece = pieceAt(position, size_ - position);
    if (!piece) return;
    if (piece->offset + piece->length > tables_.bytes.size()) return tellCutShort();
    position += piece->length;
  }
}

size_t StreamBytes::read(uint64_t position, uint8_t* buffer, size_t count) {
  if (position >= size_) return 0;
  const size_t wanted = static_cast<size_t>(std::min<uint64_t>(count, size_ - position));
  size_t done = 0;
  while (done < wanted) {
    const std::optional<Piece> piece = pieceAt(position + done, wanted - done);
    if (!piece) break;
    const auto length = static_cast<size_t>(piece->length);
    const size_t came = tables_.bytes.read(piece->offset, buffer + done, length);
    done += came;
    if (came == length) continue;
    tellCutShort();
    break;
  }
  return done;
}

std::optional<StreamBytes::Piece> StreamBytes::pieceAt(uint64_t position, uint64_t wanted) {
  const uint64_t inFirst = position & ((uint64_t{1} << shift()) - 1);
  const std::optional<Chain::Run> run =
      chain_.from(position >> shift(), unitsOf(inFirst, wanted, shift()));
  if (!run) {
    tellShortChain();
    return std::nullopt;
  }
  const uint64_t length = std::min(wanted, (uint64_t{run->count} << shift()) - inFirst);
  if (!isMini_) return Piece{tables_.sectors.offsetOf(run->sector) + inFirst, length};
  return pieceOfMiniStream((uint64_t{run->sector} << shift()) + inFirst, length);
}

std::optional<StreamBytes::Piece> StreamBytes::pieceOfMiniStream(uint64_t position,
                                                                 uint64_t wanted) {
  const unsigned sectorShift = tables_.header.sectorShift;
  const uint64_t inFirst = position & (tables_.header.sectorSize() - 1);
  const std::optional<Chain::Run> run =
      tables_.miniStream.from(position >> sectorShift, unitsOf(inFirst, wanted, sectorShift));
  if (!run) {
    tables_.damages.tell(KSV_DAMAGE_CHAIN, sizeAt_ - 4,
                         "has a stream whose mini sectors are not there", id_);
    return std::nullopt;
  }
  const uint64_t length = std::min(wanted, (uint64_t{run->count} << sectorShift) - inFirst);
  return Piece{tables_.sectors.offsetOf(run->sector) + inFirst, length};
}

}  // namespace ksv_kit::documents
