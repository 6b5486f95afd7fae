#include "tests/ole/compound_writer.h"

#include <algorithm>
#include <cstddef>

namespace ksv::test {
namespace {

constexpr uint32_t kFat = 0xFFFFFFFD;
constexpr uint32_t kDifat = 0xFFFFFFFC;
constexpr size_t kHeaderDifat = 109;

std::string dwordsOf(const std::vector<uint32_t>& values) {
  std::string bytes(values.size() * 4, '\0');
  for (size_t i = 0; i < values.size(); ++i) putDword(bytes, 4 * i, values[i]);
  return bytes;
}

struct Links {
  uint32_t left = kNone;
  uint32_t right = kNone;
};

// Links siblings into a tree of a shape and returns its top.
uint32_t linkTree(std::vector<Links>& links, const std::vector<uint32_t>& ids, size_t first,
                  size_t last, TreeShape shape) {
  if (first == last) return kNone;
  size_t middle = first + (last - first) / 2;
  if (shape == TreeShape::kBalanced) {
    links[ids[middle]] = {linkTree(links, ids, first, middle, shape),
                          linkTree(links, ids, middle + 1, last, shape)};
    return ids[middle];
  }
  for (size_t i = first; i + 1 < last; ++i) {
    if (shape == TreeShape::kRightChain) {
      links[ids[i]].right = ids[i + 1];
    } else {
      links[ids[i]].left = ids[i + 1];
    }
  }
  return ids[first];
}

}  // namespace

void putWord(std::string& bytes, size_t at, uint32_t value) {
  bytes[at] = static_cast<char>(value & 0xFF);
  bytes[at + 1] = static_cast<char>(value >> 8 & 0xFF);
}

void putDword(std::string& bytes, size_t at, uint32_t value) {
  putWord(bytes, at, value);
  putWord(bytes, at + 2, value >> 16);
}

void putQword(std::string& bytes, size_t at, uint64_t value) {
  putDword(bytes, at, static_cast<uint32_t>(value & 0xFFFFFFFF));
  putDword(bytes, at + 4, static_cast<uint32_t>(value >> 32));
}

uint32_t getDword(std::string_view bytes, size_t at) {
  uint32_t value = 0;
  for (size_t i = 4; i-- > 0;) value = value * 256 + static_cast<uint8_t>(bytes[at + i]);
  return value;
}

std::string words(std::u16string_view units) {
  std::string bytes(units.size() * 2, '\0');
  for (size_t i = 0; i < units.size(); ++i) putWord(bytes, 2 * i, units[i]);
  return bytes;
}

std::string dwords(std::initializer_list<uint32_t> values) { return dwordsOf(values); }

std::string pattern(size_t size, uint32_t seed) {
  std::string bytes(size, '\0');
  uint32_t state = seed;
  for (char& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<char>(state >> 24);
  }
  return bytes;
}

CompoundWriter::CompoundWriter() { nodes_.push_back({u"Root Entry", 5, "", {}}); }

uint32_t CompoundWriter::addStream(uint32_t parent, std::u16string_view name,
                                   std::string_view content) {
  const uint32_t number = static_cast<uint32_t>(nodes_.size());
  nodes_.push_back({std::u16string(name), 2, std::string(content), {}});
  nodes_[parent].children.push_back(number);
  return number;
}

uint32_t CompoundWriter::addStorage(uint32_t parent, std::u16string_view name) {
  const uint32_t number = addStream(parent, name, "");
  nodes_[number].type = 1;
  return number;
}

std::string CompoundWriter::write() {
  sectors_.clear();
  fat_.clear();
  miniStream_.clear();
  miniFat_.clear();
  starts_.assign(nodes_.size(), kEnd);
  for (size_t i = 1; i < nodes_.size(); ++i) {
    const Node& node = nodes_[i];
    if (node.type != 2 || node.content.empty()) continue;
    starts_[i] = node.content.size() < cutoff ? appendMini(node.content)
                                              : appendChain(node.content, backwards).front();
  }
  miniStreamSectors_ = appendChain(miniStream_);
  starts_[0] = miniStreamSectors_.empty() ? kEnd : miniStreamSectors_.front();
  miniFat_.resize((miniFat_.size() + sectorSize() / 4 - 1) / (sectorSize() / 4) * sectorSize() / 4,
                  kNone);
  miniFatSectors_ = appendChain(dwordsOf(miniFat_));
  std::string directory;
  writeEntries(directory);
  directorySectors_ = appendChain(directory);
  appendFat();
  return header() + sectors_;
}

std::vector<uint32_t> CompoundWriter::appendChain(std::string_view content, bool reversed) {
  std::vector<uint32_t> chain;
  for (size_t at = 0; at < content.size(); at += sectorSize()) {
    chain.push_back(static_cast<uint32_t>(fat_.size() + chain.size()));
  }
  if (reversed) std::reverse(chain.begin(), chain.end());
  const size_t begin = sectors_.size();
  sectors_.resize(begin + chain.size() * sectorSize());
  fat_.resize(fat_.size() + chain.size());
  for (size_t i = 0; i < chain.size(); ++i) {
    const std::string_view piece = content.substr(i * sectorSize(), sectorSize());
    std::copy(piece.begin(), piece.end(),
              sectors_.begin() + static_cast<ptrdiff_t>(chain[i] * sectorSize()));
    fat_[chain[i]] = i + 1 < chain.size() ? chain[i + 1] : kEnd;
  }
  return chain;
}

uint32_t CompoundWriter::appendMini(std::string_view content) {
  const uint32_t first = static_cast<uint32_t>(miniFat_.size());
  for (size_t at = 0; at < content.size(); at += miniSectorSize()) {
    std::string piece(content.substr(at, miniSectorSize()));
    piece.resize(miniSectorSize());
    miniStream_ += piece;
    miniFat_.push_back(static_cast<uint32_t>(miniFat_.size() + 1));
  }
  miniFat_.back() = kEnd;
  return first;
}

// The table has entries for its own sectors and for those that list it. In version 3 128
// entries of a sector of it are used, however large it is.
void CompoundWriter::appendFat() {
  const size_t perSector = linksPerSector();
  const size_t perDifat = sectorSize() / 4 - 1;
  size_t fatCount = 0;
  size_t difatCount = 0;
  while (fatCount * perSector < fat_.size() + fatCount + difatCount) {
    ++fatCount;
    difatCount = fatCount <= kHeaderDifat ? 0 : (fatCount - kHeaderDifat + perDifat - 1) / perDifat;
  }
  fatSectors_.clear();
  difatSectors_.clear();
  const uint32_t first = static_cast<uint32_t>(fat_.size());
  for (size_t i = 0; i < fatCount; ++i) {
    fatSectors_.push_back(first + static_cast<uint32_t>(i));
    fat_.push_back(kFat);
  }
  for (size_t i = 0; i < difatCount; ++i) {
    difatSectors_.push_back(static_cast<uint32_t>(fat_.size()));
    fat_.push_back(kDifat);
  }
  std::vector<uint32_t> table = fat_;
  table.resize(fatCount * perSector, kNone);
  for (size_t i = 0; i < fatCount; ++i) {
    const auto from = table.begin() + static_cast<ptrdiff_t>(i * perSector);
    std::string sector = dwordsOf({from, from + static_cast<ptrdiff_t>(perSector)});
    sector.resize(sectorSize(), '\xFF');
    sectors_ += sector;
  }
  for (size_t i = 0; i < difatCount; ++i) {
    std::vector<uint32_t> list(perDifat + 1, kNone);
    for (size_t j = 0; j < perDifat && kHeaderDifat + i * perDifat + j < fatCount; ++j) {
      list[j] = fatSectors_[kHeaderDifat + i * perDifat + j];
    }
    list[perDifat] = i + 1 < difatCount ? difatSectors_[i + 1] : kEnd;
    sectors_ += dwordsOf(list);
  }
}

void CompoundWriter::writeEntries(std::string& directory) const {
  std::vector<Links> links(nodes_.size());
  std::vector<uint32_t> tops(nodes_.size(), kNone);
  for (size_t i = 0; i < nodes_.size(); ++i) {
    tops[i] = linkTree(links, nodes_[i].children, 0, nodes_[i].children.size(), shape);
  }
  const auto idOf = [&](uint32_t node) { return node == kNone ? kNone : entryId(node); };
  const size_t count = nodes_.size() + unusedEntries;
  const size_t perSector = sectorSize() / 128;
  directory.assign((count + perSector - 1) / perSector * sectorSize(), '\0');
  for (uint32_t i = 0; i < nodes_.size(); ++i) {
    const Node& node = nodes_[i];
    std::string entry = words(node.name).substr(0, 64);
    entry.resize(128);
    putWord(entry, 64, static_cast<uint32_t>(node.name.size() * 2 + 2));
    entry[66] = static_cast<char>(node.type);
    entry[67] = 1;
    putDword(entry, 68, idOf(links[i].left));
    putDword(entry, 72, idOf(links[i].right));
    putDword(entry, 76, idOf(tops[i]));
    entry.replace(80, 16, node.classId);
    putDword(entry, 96, node.stateBits);
    putQword(entry, 100, node.created);
    putQword(entry, 108, node.modified);
    putDword(entry, 116, starts_[i]);
    putDword(entry, 120, static_cast<uint32_t>(i == 0 ? miniStream_.size() : node.content.size()));
    directory.replace(size_t{entryId(i)} * 128, 128, entry);
  }
}

std::string CompoundWriter::header() const {
  std::string bytes(headerSize(), '\0');
  bytes.replace(0, 8, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1");
  putWord(bytes, 24, 0x3E);
  putWord(bytes, 26, version);
  putWord(bytes, 28, 0xFFFE);
  putWord(bytes, 30, sectorShift);
  putWord(bytes, 32, miniSectorShift);
  if (version == 4) putDword(bytes, 40, static_cast<uint32_t>(directorySectors_.size()));
  putDword(bytes, 44, static_cast<uint32_t>(fatSectors_.size()));
  putDword(bytes, 48, directorySectors_.front());
  putDword(bytes, 56, cutoff);
  putDword(bytes, 60, miniFatSectors_.empty() ? kEnd : miniFatSectors_.front());
  putDword(bytes, 64, static_cast<uint32_t>(miniFatSectors_.size()));
  putDword(bytes, 68, difatSectors_.empty() ? kEnd : difatSectors_.front());
  putDword(bytes, 72, static_cast<uint32_t>(difatSectors_.size()));
  for (size_t i = 0; i < kHeaderDifat; ++i) {
    putDword(bytes, 76 + 4 * i, i < fatSectors_.size() ? fatSectors_[i] : kNone);
  }
  return bytes;
}

size_t CompoundWriter::entryOffset(uint32_t node) const {
  const size_t perSector = sectorSize() / 128;
  const uint32_t id = entryId(node);
  return offsetOf(directorySectors_[id / perSector]) + id % perSector * 128;
}

size_t CompoundWriter::fatOffset(uint32_t sector) const {
  return offsetOf(fatSectors_[sector / linksPerSector()]) + sector % linksPerSector() * 4;
}

size_t CompoundWriter::miniFatOffset(uint32_t miniSector) const {
  const size_t perSector = sectorSize() / 4;
  return offsetOf(miniFatSectors_[miniSector / perSector]) + miniSector % perSector * 4;
}

}  // namespace ksv::test
