#include "kit/documents/document_layout.h"

#include <algorithm>
#include <bit>
#include <string_view>

#include "common/byte_order.h"
#include "common/compound_format.h"
#include "kit/documents/entry_names.h"
#include "kit/documents/limits.h"

namespace ksv_kit::documents {
namespace {

namespace at = ksv::compound_entry;
namespace type = ksv::compound_type;

constexpr unsigned kSmallShift = 9;
constexpr unsigned kLargeShift = 12;
constexpr unsigned kMiniShift = 6;
constexpr uint64_t kMiniSize = uint64_t{1} << kMiniShift;
constexpr uint64_t kCutoff = 4096;
// Streams of version 3 end below.
constexpr uint64_t kLargeStream = uint64_t{1} << 31;
// Programs lock the bytes from here on, so no data is kept there.
constexpr uint64_t kLockedOffset = 0x7FFFFF00;

void putWord(uint8_t* bytes, uint16_t value) {
  bytes[0] = static_cast<uint8_t>(value & 0xFF);
  bytes[1] = static_cast<uint8_t>(value >> 8);
}

void putQword(uint8_t* bytes, uint64_t value) {
  ksv::writeUnit32LittleEndian(bytes, static_cast<uint32_t>(value & 0xFFFFFFFF));
  ksv::writeUnit32LittleEndian(bytes + 4, static_cast<uint32_t>(value >> 32));
}

uint64_t parts(uint64_t whole, uint64_t part) { return (whole + part - 1) / part; }

bool hasLargeStream(const std::vector<DocumentEdit::Node>& nodes) {
  return std::any_of(nodes.begin(), nodes.end(),
                     [](const auto& node) { return node.size >= kLargeStream; });
}

}  // namespace

// Hands on the bytes of a file in their order, in blocks, with the locked sector between them.
class DocumentLayout::Writer {
 public:
  Writer(const Output& output, uint64_t lockedOffset, uint64_t sectorSize)
      : output_(output), lockedOffset_(lockedOffset), sectorSize_(sectorSize) {
    block_.reserve(limits::kBlock);
  }

  void put(const uint8_t* bytes, size_t count) {
    while (count > 0) {
      if (position_ == lockedOffset_) add(nullptr, static_cast<size_t>(sectorSize_), 0);
      const uint64_t untilLocked =
          position_ < lockedOffset_ ? lockedOffset_ - position_ : UINT64_MAX;
      const auto part = static_cast<size_t>(std::min<uint64_t>(count, untilLocked));
      add(bytes, part, 0);
      bytes += part;
      count -= part;
    }
  }
  void putDword(uint32_t value) {
    uint8_t bytes[4];
    ksv::writeUnit32LittleEndian(bytes, value);
    put(bytes, sizeof bytes);
  }
  // Up to where a unit ends.
  void fill(uint64_t unit, uint8_t value) {
    const std::vector<uint8_t> rest(static_cast<size_t>((unit - position_ % unit) % unit), value);
    put(rest.data(), rest.size());
  }
  void flush() {
    if (!block_.empty()) output_(block_.data(), block_.size());
    block_.clear();
  }

 private:
  // bytes: null for so many of one value.
  void add(const uint8_t* bytes, size_t count, uint8_t value) {
    while (count > 0) {
      const size_t part = std::min(count, limits::kBlock - block_.size());
      if (bytes == nullptr)
        block_.insert(block_.end(), part, value);
      else
        block_.insert(block_.end(), bytes, bytes + part);
      if (bytes != nullptr) bytes += part;
      count -= part;
      position_ += part;
      if (block_.size() == limits::kBlock) flush();
    }
  }

  const Output& output_;
  const uint64_t lockedOffset_;
  const uint64_t sectorSize_;
  std::vector<uint8_t> block_;
  uint64_t position_ = 0;
};

DocumentLayout::DocumentLayout(const std::vector<Node>& nodes, bool hasLargeSectors,
                               uint32_t transaction)
    : sectorShift_(hasLargeSectors || hasLargeStream(nodes) ? kLargeShift : kSmallShift),
      sectorSize_(uint64_t{1} << sectorShift_),
      transaction_(transaction) {
  placeEntries(nodes);
  placeStreams();
  placeTables();
}

// Storages level by level: so the children of each stand together.
void DocumentLayout::placeEntries(const std::vector<Node>& nodes) {
  const auto placed = [](const Node& node) {
    return Placed{&node, kNoEntry, kNoEntry, kNoEntry, false, 0};
  };
  entries_.push_back(placed(nodes[0]));
  for (size_t i = 0; i < entries_.size(); ++i) {
    std::vector<uint32_t> children = entries_[i].node->children;
    std::stable_sort(children.begin(), children.end(), [&](uint32_t a, uint32_t b) {
      return compareNames(nodes[a].name, nodes[b].name) < 0;
    });
    const auto first = static_cast<uint32_t>(entries_.size());
    for (const uint32_t child : children) entries_.push_back(placed(nodes[child]));
    entries_[i].child = linkSiblings(first, static_cast<uint32_t>(children.size()));
  }
}

// Halves, quarters and so on: all levels but the last are full. With the entries of that one red
// and all others black, every way down meets as many black ones.
uint32_t DocumentLayout::linkSiblings(uint32_t first, uint32_t count) {
  struct Part {
    uint32_t first;
    uint32_t count;
    int level;
  };
  const auto topOf = [](const Part& part) {
    return part.count == 0 ? kNoEntry : part.first + part.count / 2;
  };
  const auto levels = static_cast<int>(std::bit_width(count));
  const bool isFull = std::has_single_bit(uint64_t{count} + 1);
  const Part whole = {first, count, 1};
  std::vector<Part> left = {whole};
  while (!left.empty()) {
    const Part part = left.back();
    left.pop_back();
    if (part.count == 0) continue;
    const Part before = {part.first, part.count / 2, part.level + 1};
    const Part behind = {topOf(part) + 1, part.count - part.count / 2 - 1, part.level + 1};
    Placed& top = entries_[topOf(part)];
    top.left = topOf(before);
    top.right = topOf(behind);
    top.isRed = part.level == levels && !isFull;
    left.push_back(before);
    left.push_back(behind);
  }
  return topOf(whole);
}

bool DocumentLayout::isMini(const Placed& entry) const {
  return entry.node->type == type::kStream && entry.node->size < kCutoff;
}

// Sectors are counted from the first stream on until all in front of it is known.
void DocumentLayout::placeStreams() {
  uint64_t sectors = 0;
  for (Placed& entry : entries_) {
    if (entry.node->type != type::kStream) continue;
    entry.start = ksv::kEndOfChain;
    if (entry.node->size == 0) continue;
    uint64_t& count = isMini(entry) ? miniSectors_ : sectors;
    entry.start = static_cast<uint32_t>(count);
    const uint64_t length =
        isMini(entry) ? parts(entry.node->size, kMiniSize) : sectorsOf(entry.node->size);
    (isMini(entry) ? miniRuns_ : runs_).push_back({length, ksv::kEndOfChain});
    count += length;
  }
  streamSectors_ = sectors;
}

// The table has entries for its own sectors and for those that list it.
void DocumentLayout::placeTables() {
  const uint64_t links = sectorSize_ / 4;
  directorySectors_ = sectorsOf(entries_.size() * uint64_t{ksv::kDirectoryEntrySize});
  miniFatSectors_ = sectorsOf(miniSectors_ * 4);
  miniStreamSectors_ = sectorsOf(miniSectors_ * kMiniSize);
  const uint64_t rest = directorySectors_ + miniFatSectors_ + miniStreamSectors_ + streamSectors_;
  const uint64_t locked = kLockedOffset / sectorSize_ - 1;
  for (uint64_t before = UINT64_MAX; before != fatSectors_ + difatSectors_;) {
    before = fatSectors_ + difatSectors_;
    const bool isLocked = sectorShift_ == kLargeShift && rest + before > locked;
    lockedSector_ = isLocked ? locked : UINT64_MAX;
    fatSectors_ = parts(rest + before + (isLocked ? 1 : 0), links);
    difatSectors_ = fatSectors_ <= ksv::kHeaderTableSectors
                        ? 0
                        : parts(fatSectors_ - ksv::kHeaderTableSectors, links - 1);
  }
  if (rest + fatSectors_ + difatSectors_ >= kHighestSector)
    throw LossyEdit("has more sectors than a document can number", 0);
  const std::vector<Run> front = {{difatSectors_, ksv::kDifatSector},
                                  {fatSectors_, ksv::kFatSector},
                                  {directorySectors_, ksv::kEndOfChain},
                                  {miniFatSectors_, ksv::kEndOfChain},
                                  {miniStreamSectors_, ksv::kEndOfChain}};
  runs_.insert(runs_.begin(), front.begin(), front.end());
}

uint32_t DocumentLayout::firstOf(uint64_t sectors, uint64_t counted) const {
  return sectors == 0 ? ksv::kEndOfChain : static_cast<uint32_t>(numberOf(counted));
}

void DocumentLayout::writeHeader(Writer& writer) const {
  namespace header = ksv::compound_header;
  constexpr uint16_t kMinorVersion = 0x3E;
  constexpr uint16_t kByteOrderMark = 0xFFFE;
  const bool isLarge = sectorShift_ == kLargeShift;
  std::vector<uint8_t> bytes(ksv::kHeaderSize);
  const auto word = [&](size_t offset, unsigned value) {
    putWord(bytes.data() + offset, static_cast<uint16_t>(value));
  };
  const auto dword = [&](size_t offset, uint64_t value) {
    ksv::writeUnit32LittleEndian(bytes.data() + offset, static_cast<uint32_t>(value));
  };
  std::copy(std::begin(ksv::kCompoundSignature), std::end(ksv::kCompoundSignature), bytes.begin());
  word(header::kMinorVersion, kMinorVersion);
  word(header::kMajorVersion, isLarge ? 4 : 3);
  word(header::kByteOrder, kByteOrderMark);
  word(header::kSectorShift, sectorShift_);
  word(header::kMiniSectorShift, kMiniShift);
  dword(header::kDirectorySectorCount, isLarge ? directorySectors_ : 0);
  dword(header::kFatSectorCount, fatSectors_);
  dword(header::kFirstDirectorySector, numberOf(directoryBegin()));
  dword(header::kTransaction, transaction_);
  dword(header::kMiniStreamCutoff, kCutoff);
  dword(header::kFirstMiniFatSector,
        firstOf(miniFatSectors_, directoryBegin() + directorySectors_));
  dword(header::kMiniFatSectorCount, miniFatSectors_);
  dword(header::kFirstDifatSector, firstOf(difatSectors_, 0));
  dword(header::kDifatSectorCount, difatSectors_);
  for (uint64_t i = 0; i < ksv::kHeaderTableSectors; ++i)
    dword(header::kDifat + 4 * static_cast<size_t>(i), tableSector(i));
  writer.put(bytes.data(), bytes.size());
  writer.fill(sectorSize_, 0);
}

// The number of a sector of the table; kFreeSector behind the last.
uint32_t DocumentLayout::tableSector(uint64_t index) const {
  return index < fatSectors_ ? static_cast<uint32_t>(numberOf(difatSectors_ + index))
                             : ksv::kFreeSector;
}

void DocumentLayout::writeList(Writer& writer) const {
  const uint64_t links = sectorSize_ / 4 - 1;
  for (uint64_t i = 0; i < difatSectors_; ++i) {
    for (uint64_t j = 0; j < links; ++j)
      writer.putDword(tableSector(ksv::kHeaderTableSectors + i * links + j));
    writer.putDword(firstOf(difatSectors_ - i - 1, i + 1));
  }
}

void DocumentLayout::writeTable(Writer& writer) const {
  uint64_t sector = 0;
  for (const Run& run : runs_)
    for (uint64_t i = 0; i < run.count; ++i, ++sector) {
      if (sector == lockedSector_) writer.putDword(ksv::kEndOfChain);
      const bool isChain = run.mark == ksv::kEndOfChain;
      writer.putDword(isChain && i + 1 < run.count ? static_cast<uint32_t>(numberOf(sector + 1))
                                                   : run.mark);
    }
  writer.fill(sectorSize_, 0xFF);
}

void DocumentLayout::writeMiniTable(Writer& writer) const {
  uint32_t sector = 0;
  for (const Run& run : miniRuns_)
    for (uint64_t i = 0; i < run.count; ++i) {
      ++sector;
      writer.putDword(i + 1 < run.count ? sector : run.mark);
    }
  writer.fill(sectorSize_, 0xFF);
}

// Of an entry that is not in use all is zero but its links.
void DocumentLayout::writeDirectory(Writer& writer) const {
  const uint64_t entries = directorySectors_ * (sectorSize_ / ksv::kDirectoryEntrySize);
  for (uint64_t i = 0; i < entries; ++i) {
    std::array<uint8_t, ksv::kDirectoryEntrySize> bytes = {};
    if (i < entries_.size()) {
      fillEntry(entries_[static_cast<size_t>(i)], bytes.data());
    } else {
      for (const size_t link : {at::kLeft, at::kRight, at::kChild})
        ksv::writeUnit32LittleEndian(bytes.data() + link, kNoEntry);
    }
    writer.put(bytes.data(), bytes.size());
  }
}

void DocumentLayout::fillEntry(const Placed& entry, uint8_t* bytes) const {
  const Node& node = *entry.node;
  for (size_t i = 0; i < node.name.size(); ++i)
    putWord(bytes + 2 * i, static_cast<uint16_t>(node.name[i]));
  putWord(bytes + at::kNameLength, static_cast<uint16_t>(2 * (node.name.size() + 1)));
  bytes[at::kType] = node.type;
  bytes[at::kColour] = entry.isRed ? 0 : 1;
  ksv::writeUnit32LittleEndian(bytes + at::kLeft, entry.left);
  ksv::writeUnit32LittleEndian(bytes + at::kRight, entry.right);
  ksv::writeUnit32LittleEndian(bytes + at::kChild, entry.child);
  std::copy(node.classId.begin(), node.classId.end(), bytes + at::kClassId);
  ksv::writeUnit32LittleEndian(bytes + at::kStateBits, node.stateBits);
  putQword(bytes + at::kCreated, node.created);
  putQword(bytes + at::kModified, node.modified);
  ksv::writeUnit32LittleEndian(bytes + at::kStartingSector, startOf(entry));
  putQword(bytes + at::kStreamSize,
           node.type == type::kRoot ? miniSectors_ * kMiniSize : node.size);
}

uint32_t DocumentLayout::startOf(const Placed& entry) const {
  const uint64_t miniStream = directoryBegin() + directorySectors_ + miniFatSectors_;
  if (entry.node->type == type::kRoot) return firstOf(miniStreamSectors_, miniStream);
  const bool isInSectors =
      entry.node->type == type::kStream && entry.node->size != 0 && !isMini(entry);
  if (!isInSectors) return entry.start;
  return static_cast<uint32_t>(numberOf(miniStream + miniStreamSectors_ + entry.start));
}

void DocumentLayout::writeStream(const Placed& entry, Document* source, Writer& writer) const {
  const Node& node = *entry.node;
  if (!node.source) return writer.put(node.bytes.data(), node.bytes.size());
  std::vector<uint8_t> block(static_cast<size_t>(std::min<uint64_t>(node.size, limits::kBlock)));
  for (uint64_t done = 0; done < node.size;) {
    const auto wanted = static_cast<size_t>(std::min<uint64_t>(block.size(), node.size - done));
    const size_t came = source->read(*node.source, done, block.data(), wanted);
    if (came < wanted) throw LossyEdit("has changed while it was read", 0);
    writer.put(block.data(), came);
    done += came;
  }
}

void DocumentLayout::write(Document* source, const Output& output) const {
  const uint64_t lockedOffset =
      lockedSector_ == UINT64_MAX ? UINT64_MAX : (lockedSector_ + 1) * sectorSize_;
  Writer writer(output, lockedOffset, sectorSize_);
  writeHeader(writer);
  writeList(writer);
  writeTable(writer);
  writeDirectory(writer);
  writeMiniTable(writer);
  for (const Placed& entry : entries_)
    if (isMini(entry)) {
      writeStream(entry, source, writer);
      writer.fill(kMiniSize, 0);
    }
  writer.fill(sectorSize_, 0);
  for (const Placed& entry : entries_)
    if (entry.node->type == type::kStream && !isMini(entry)) {
      writeStream(entry, source, writer);
      writer.fill(sectorSize_, 0);
    }
  writer.flush();
}

}  // namespace ksv_kit::documents
