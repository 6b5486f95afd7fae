// Documents beyond 4 GB, of which only a few sectors are there, and what is read of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "documents.h"
#include "kit/documents/document_edit.h"
#include "sparse_bytes.h"

namespace ksv_kit::documents {
namespace {

using ksv::test::kEnd;
using ksv::test::kNone;
using ksv::test::pattern;
using ksv::test::putDword;
using ksv::test::putQword;
using ksv::test::putWord;
using ksv::test::words;

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

constexpr uint32_t kHugeFirst = 2000;

// A document with one stream in one piece, of which nothing but its tables is there.
std::unique_ptr<SparseBytes> hugeDocument(uint64_t size, uint64_t& bytesRead) {
  auto store = std::make_unique<SparseBytes>(size + 4096 * kSector, bytesRead);
  const auto last = static_cast<uint32_t>(kHugeFirst + size / kSector - 1);
  const uint32_t tables = last / kLinks + 1;
  const uint32_t lists = (tables - 109 + kLinks - 2) / (kLinks - 1);
  std::string header = headerOf(0, 1, tables + 1);
  putDword(header, 44, tables);
  putDword(header, 72, lists);
  for (uint32_t i = 0; i < 109; ++i) putDword(header, 76 + 4 * size_t{i}, 1 + i);
  store->put(0, header);
  store->put(offsetOf(0),
             entryOf(u"Root Entry", 5, 1, kEnd, 0) + entryOf(u"Huge", 2, kNone, kHugeFirst, size));
  std::string table(size_t{tables} * kSector, '\xFF');
  putDword(table, 0, kEnd);
  for (uint32_t i = 0; i < tables; ++i) putDword(table, 4 * size_t{1 + i}, 0xFFFFFFFD);
  for (uint32_t i = 0; i < lists; ++i) putDword(table, 4 * size_t{1 + tables + i}, 0xFFFFFFFC);
  for (uint32_t sector = kHugeFirst; sector <= last; ++sector)
    putDword(table, 4 * size_t{sector}, sector == last ? kEnd : sector + 1);
  store->put(offsetOf(1), table);
  for (uint32_t list = 0; list < lists; ++list) {
    std::map<uint32_t, uint32_t> listed;
    for (uint32_t i = 0; i < kLinks - 1 && 109 + list * (kLinks - 1) + i < tables; ++i)
      listed[i] = 110 + list * (kLinks - 1) + i;
    listed[kLinks - 1] = list + 1 < lists ? tables + 2 + list : kEnd;
    store->put(offsetOf(tables + 1 + list), linksOf(listed));
  }
  return store;
}

// What lies in the middle is found by the table alone.
TEST(LargeDocument, streams_of_more_than_4_GB_are_read_in_their_middle) {
  constexpr uint64_t kSize = uint64_t{5} << 30;
  constexpr uint64_t kMiddle = (uint64_t{4} << 30) + 12345;
  uint64_t bytesRead = 0;
  auto store = hugeDocument(kSize, bytesRead);
  store->put(offsetOf(kHugeFirst) + kMiddle, "in the middle");
  const auto document = Document::open(std::move(store));
  const uint32_t index = document->find("Huge").value();
  EXPECT_EQ(document->entries()[index].size(), kSize);
  std::string found(13, '\0');
  EXPECT_EQ(document->read(index, kMiddle, found.data(), found.size()), found.size());
  EXPECT_EQ(found, "in the middle");
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>());
  EXPECT_LT(bytesRead, 8u << 20);  // the table of what lies in front
}

// The sector at 7FFFFF00 is kept free, and what lies behind it is moved on.
TEST(LargeDocument, more_than_2_GB_are_written_around_the_sector_that_is_locked) {
  constexpr uint64_t kSize = (uint64_t{2} << 30) + 100 * kSector;
  uint64_t bytesRead = 0;
  auto store = hugeDocument(kSize, bytesRead);
  const std::vector<uint64_t> places = {0, 0x7FF00000, kSize - 9};
  for (const uint64_t place : places) store->put(offsetOf(kHugeFirst) + place, "MARKED HE");
  const auto source = Document::open(std::move(store));
  auto written = std::make_unique<SparseBytes>(kSize + 4096 * kSector, bytesRead);
  uint64_t position = 0;
  DocumentEdit(*source).write([&](const uint8_t* bytes, size_t count) {
    const bool isZero = bytes[0] == 0 && std::memcmp(bytes, bytes + 1, count - 1) == 0;
    if (!isZero) written->put(position, {reinterpret_cast<const char*>(bytes), count});
    position += count;
  });
  written->cut(position);
  const uint64_t locked = 0x7FFFFF00 / kSector * kSector;
  std::string sector(kSector, 'x');
  written->read(locked, sector.data(), sector.size());
  EXPECT_EQ(sector, std::string(kSector, '\0'));
  const auto document = Document::open(std::move(written));
  EXPECT_EQ(document->check().lostSectors, 0u);
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>());
  for (const uint64_t place : places) {
    std::string found(9, '\0');
    EXPECT_EQ(document->read(1, place, found.data(), found.size()), found.size());
    EXPECT_EQ(found, "MARKED HE") << place;
  }
}

}  // namespace
}  // namespace ksv_kit::documents
