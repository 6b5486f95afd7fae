// Documents beyond 4 GB, of which only a few sectors are there, and what is read of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "documents.h"

namespace ksv_kit::documents {
namespace {

using ksv::test::kEnd;
using ksv::test::kNone;
using ksv::test::pattern;
using ksv::test::putDword;
using ksv::test::putQword;
using ksv::test::putWord;
using ksv::test::words;

// Pieces of a file that is zero elsewhere, and how much of it was read.
class SparseBytes : public ByteStore {
 public:
  SparseBytes(uint64_t size, uint64_t& bytesRead) : size_(size), bytesRead_(bytesRead) {}

  void put(uint64_t offset, std::string bytes) { pieces_[offset] = std::move(bytes); }

  uint64_t size() const override { return size_; }
  size_t read(uint64_t offset, void* buffer, size_t count) override {
    if (offset >= size_) return 0;
    count = static_cast<size_t>(std::min<uint64_t>(count, size_ - offset));
    bytesRead_ += count;
    std::string bytes(count, '\0');
    for (const auto& [begin, piece] : pieces_) {
      const uint64_t from = std::max(begin, offset);
      const uint64_t to = std::min(begin + piece.size(), offset + count);
      if (from < to)
        bytes.replace(static_cast<size_t>(from - offset), static_cast<size_t>(to - from), piece,
                      static_cast<size_t>(from - begin), static_cast<size_t>(to - from));
    }
    std::copy(bytes.begin(), bytes.end(), static_cast<char*>(buffer));
    return count;
  }

 private:
  const uint64_t size_;
  uint64_t& bytesRead_;
  std::map<uint64_t, std::string> pieces_;
};

constexpr uint64_t kSector = 4096;
constexpr uint32_t kLinks = 1024;

std::string entryOf(std::u16string name, uint8_t type, uint32_t child, uint32_t start,
                    uint64_t size) {
  std::string entry = words(name);
  entry.resize(128);
  putWord(entry, 64, static_cast<uint32_t>(name.size() * 2 + 2));
  entry[66] = static_cast<char>(type);
  putDword(entry, 68, kNone);
  putDword(entry, 72, kNone);
  putDword(entry, 76, child);
  putDword(entry, 116, start);
  putQword(entry, 120, size);
  return entry;
}

std::string headerOf(uint32_t firstDirectory, uint32_t firstTable, uint32_t firstDifat) {
  std::string header(kSector, '\0');
  header.replace(0, 8, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1");
  putWord(header, 26, 4);
  putWord(header, 28, 0xFFFE);
  putWord(header, 30, 12);
  putWord(header, 32, 6);
  putDword(header, 44, 1026);
  putDword(header, 48, firstDirectory);
  putDword(header, 56, 4096);
  putDword(header, 60, kEnd);
  putDword(header, 68, firstDifat);
  putDword(header, 72, 1);
  for (size_t i = 0; i < 109; ++i) putDword(header, 76 + 4 * i, i == 0 ? firstTable : kNone);
  return header;
}

std::string linksOf(std::map<uint32_t, uint32_t> links) {
  std::string sector(kSector, '\xFF');
  for (const auto& [index, link] : links) putDword(sector, 4 * size_t{index}, link);
  return sector;
}

uint64_t offsetOf(uint32_t sector) { return (uint64_t{sector} + 1) * kSector; }

// The directory is sector 0, its table sector 1, the list sector 2; the table of the sectors from
// 1025 * 1024 on is sector 3, and the stream begins with that many: behind 4 GB.
TEST(LargeDocument, streams_behind_4_GB_are_read) {
  constexpr uint32_t kFirst = 1025 * kLinks;
  uint64_t bytesRead = 0;
  auto store = std::make_unique<SparseBytes>(offsetOf(kFirst + 3), bytesRead);
  store->put(0, headerOf(0, 1, 2));
  store->put(offsetOf(0), entryOf(u"Root Entry", 5, 1, kEnd, 0) +
                              entryOf(u"Far", 2, kNone, kFirst, 2 * kSector));
  store->put(offsetOf(1), linksOf({{0, kEnd}}));
  store->put(offsetOf(2), linksOf({{1025 - 109, 3}, {kLinks - 1, kEnd}}));
  store->put(offsetOf(3), linksOf({{0, 2 + kFirst}, {2, kEnd}}));
  store->put(offsetOf(kFirst), pattern(kSector, 7));
  store->put(offsetOf(kFirst + 2), pattern(kSector, 8));
  const auto document = Document::open(std::move(store));
  ASSERT_NE(document, nullptr);
  EXPECT_GT(document->fileSize(), uint64_t{1} << 32);
  EXPECT_EQ(contentAt(*document, "Far"), pattern(kSector, 7) + pattern(kSector, 8));
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>());
  EXPECT_LT(bytesRead, 64u * 1024);
}

// A stream of 5 GB in one piece: what lies in its middle is found by its table alone.
TEST(LargeDocument, streams_of_more_than_4_GB_are_read_in_their_middle) {
  constexpr uint64_t kSize = uint64_t{5} << 30;
  constexpr uint32_t kTables = 1281;
  uint64_t bytesRead = 0;
  auto store = std::make_unique<SparseBytes>(kSize + 4096 * kSector, bytesRead);
  const uint32_t first = 2000;
  const auto last = static_cast<uint32_t>(first + kSize / kSector - 1);
  std::string header = headerOf(0, 1, kTables + 1);
  putDword(header, 44, kTables);
  putDword(header, 72, 2);
  for (uint32_t i = 0; i < 109; ++i) putDword(header, 76 + 4 * size_t{i}, 1 + i);
  store->put(0, header);
  store->put(offsetOf(0),
             entryOf(u"Root Entry", 5, 1, kEnd, 0) + entryOf(u"Huge", 2, kNone, first, kSize));
  std::string table;
  for (uint32_t sector = 0; sector < kTables * kLinks; ++sector) {
    std::string link(4, '\0');
    putDword(link, 0, sector < first || sector >= last ? kEnd : sector + 1);
    table += link;
  }
  store->put(offsetOf(1), table);
  std::map<uint32_t, uint32_t> listed;
  for (uint32_t i = 0; i < kLinks - 1; ++i) listed[i] = 110 + i;
  listed[kLinks - 1] = kTables + 2;
  store->put(offsetOf(kTables + 1), linksOf(listed));
  listed.clear();
  for (uint32_t i = 0; i < kTables - 109 - (kLinks - 1); ++i) listed[i] = 110 + kLinks - 1 + i;
  listed[kLinks - 1] = kEnd;
  store->put(offsetOf(kTables + 2), linksOf(listed));
  constexpr uint64_t kMiddle = (uint64_t{4} << 30) + 12345;
  store->put(offsetOf(first) + kMiddle, "in the middle");
  const auto document = Document::open(std::move(store));
  const uint32_t index = document->find("Huge").value();
  EXPECT_EQ(document->entries()[index].size(), kSize);
  std::string found(13, '\0');
  EXPECT_EQ(document->read(index, kMiddle, found.data(), found.size()), found.size());
  EXPECT_EQ(found, "in the middle");
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>());
  EXPECT_LT(bytesRead, 8u << 20);  // the table of what lies in front
}

}  // namespace
}  // namespace ksv_kit::documents
