// Writes compound files of every shape, and says where their parts stand, so that
// tests can damage them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ksv::test {

inline constexpr uint32_t kNone = 0xFFFFFFFF;
inline constexpr uint32_t kEnd = 0xFFFFFFFE;

// Least significant byte first.
void putWord(std::string& bytes, size_t at, uint32_t value);
void putDword(std::string& bytes, size_t at, uint32_t value);
void putQword(std::string& bytes, size_t at, uint64_t value);
uint32_t getDword(std::string_view bytes, size_t at);
std::string words(std::u16string_view units);
std::string dwords(std::initializer_list<uint32_t> values);

struct Node {
  std::u16string name;
  uint8_t type;  // 1 storage, 2 stream, 5 root
  std::string content;
  std::vector<uint32_t> children;  // of a storage
  std::string classId = std::string(16, '\0');
  uint32_t stateBits = 0;
  uint64_t created = 0;
  uint64_t modified = 0;
};

enum class TreeShape { kBalanced, kRightChain, kLeftChain };

class CompoundWriter {
 public:
  CompoundWriter();

  // Of version 4 with its sectors of 4,096 bytes, the header fills the first, and sizes have 64
  // bits. In version 3 the header has 512 bytes whatever the sectors have, which is what the reader
  // that is described takes.
  uint16_t version = 3;
  void useVersion4() {
    version = 4;
    sectorShift = 12;
  }
  uint16_t sectorShift = 9;
  uint16_t miniSectorShift = 6;
  uint32_t cutoff = 4096;
  TreeShape shape = TreeShape::kBalanced;
  // The sectors of each stream stand in descending order.
  bool backwards = false;
  // Entries that are not in use in front of all but the root.
  uint32_t unusedEntries = 0;

  // Add to a storage, 0 being the root, and return the node's number.
  uint32_t addStream(uint32_t parent, std::u16string_view name, std::string_view content);
  uint32_t addStorage(uint32_t parent, std::u16string_view name);
  Node& node(uint32_t number) { return nodes_[number]; }

  std::string write();

  // Where things stand in the file that was written last.
  uint32_t entryId(uint32_t node) const { return node == 0 ? 0 : node + unusedEntries; }
  size_t entryOffset(uint32_t node) const;
  size_t fatOffset(uint32_t sector) const;
  size_t miniFatOffset(uint32_t miniSector) const;
  size_t offsetOf(uint32_t sector) const { return headerSize() + (size_t{sector} << sectorShift); }
  const std::vector<uint32_t>& directorySectors() const { return directorySectors_; }
  const std::vector<uint32_t>& fatSectors() const { return fatSectors_; }
  const std::vector<uint32_t>& difatSectors() const { return difatSectors_; }
  const std::vector<uint32_t>& miniFatSectors() const { return miniFatSectors_; }
  const std::vector<uint32_t>& miniStreamSectors() const { return miniStreamSectors_; }

 private:
  size_t headerSize() const { return version == 4 ? sectorSize() : 512; }
  // Entries of a sector of the table that are made use of.
  size_t linksPerSector() const {
    return version == 4 ? sectorSize() / 4 : std::min<size_t>(sectorSize() / 4, 128);
  }
  size_t sectorSize() const { return size_t{1} << sectorShift; }
  size_t miniSectorSize() const { return size_t{1} << miniSectorShift; }
  std::vector<uint32_t> appendChain(std::string_view content, bool reversed = false);
  uint32_t appendMini(std::string_view content);
  void appendFat();
  void writeEntries(std::string& directory) const;
  std::string header() const;

  std::vector<Node> nodes_;
  std::vector<uint32_t> starts_;
  std::string sectors_;
  std::vector<uint32_t> fat_;
  std::string miniStream_;
  std::vector<uint32_t> miniFat_;
  std::vector<uint32_t> directorySectors_;
  std::vector<uint32_t> fatSectors_;
  std::vector<uint32_t> difatSectors_;
  std::vector<uint32_t> miniFatSectors_;
  std::vector<uint32_t> miniStreamSectors_;
};

// So many bytes that tell where they stand.
std::string pattern(size_t size, uint32_t seed = 1);

}  // namespace ksv::test
