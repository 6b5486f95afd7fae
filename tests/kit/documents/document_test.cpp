// The tree of documents and the bytes of their streams.
#include "kit/documents/document.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <tuple>

#include "documents.h"
#include "tests/system/system.h"

namespace ksv_kit::documents {
namespace {

using ksv::test::CompoundWriter;
using ksv::test::pattern;
using ksv::test::putDword;
using ksv::test::TreeShape;

// A tree with a stream of each kind: in mini sectors, in sectors, empty.
uint32_t addTree(CompoundWriter& writer) {
  writer.addStream(0, u"Top", "top");
  const uint32_t storage = writer.addStorage(0, u"書庫");
  writer.addStream(storage, u"deep", pattern(100, 3));
  writer.addStream(storage, u"large", pattern(10000, 4));
  writer.addStream(0, u"empty", "");
  writer.addStream(0, u"\u0005Summary", "s");
  return storage;
}

void expectTree(Document& document) {
  EXPECT_EQ(pathsOf(document), (std::vector<std::string>{"Top", "書庫", "書庫/deep", "書庫/large",
                                                         "empty", "\\x05Summary"}));
  EXPECT_EQ(contentAt(document, "Top"), "top");
  EXPECT_EQ(contentAt(document, "書庫/deep"), pattern(100, 3));
  EXPECT_EQ(contentAt(document, "書庫/large"), pattern(10000, 4));
  EXPECT_EQ(contentAt(document, "empty"), "");
  EXPECT_EQ(contentAt(document, "\\x05Summary"), "s");
  EXPECT_EQ(damagesOf(document), std::vector<std::string>());
}

TEST(Document, version_3_has_its_tree_and_bytes) {
  CompoundWriter writer;
  addTree(writer);
  const std::string bytes = writer.write();
  const auto document = openBytes(bytes);
  ASSERT_NE(document, nullptr);
  expectTree(*document);
}

TEST(Document, version_4_has_its_tree_and_bytes) {
  CompoundWriter writer;
  writer.useVersion4();
  addTree(writer);
  const std::string bytes = writer.write();
  EXPECT_EQ(bytes.size() % 4096, 0u);
  const auto document = openBytes(bytes);
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->header().sectorSize(), 4096u);
  expectTree(*document);
}

TEST(Document, sectors_may_have_other_sizes) {
  for (const uint16_t shift : std::initializer_list<uint16_t>{7, 8, 10, 11, 13, 16}) {
    CompoundWriter writer;
    writer.useVersion4();
    writer.version = shift < 9 ? 3 : 4;  // below 512 bytes the header is not of a sector's size
    writer.sectorShift = shift;
    addTree(writer);
    const std::string bytes = writer.write();
    const auto document = openBytes(bytes);
    ASSERT_NE(document, nullptr) << shift;
    EXPECT_EQ(contentAt(*document, "書庫/large"), pattern(10000, 4)) << shift;
    EXPECT_EQ(contentAt(*document, "書庫/deep"), pattern(100, 3)) << shift;
    EXPECT_EQ(damagesOf(*document),
              std::vector<std::string>{at("has sectors of a size that is not usual", 30)});
  }
}

TEST(Document, sectors_in_any_order_are_put_together) {
  CompoundWriter writer;
  writer.backwards = true;
  addTree(writer);
  const std::string bytes = writer.write();
  const auto document = openBytes(bytes);
  expectTree(*document);
  std::string part(3000, '\0');
  const uint32_t large = document->find("書庫/large").value();
  EXPECT_EQ(document->read(large, 700, part.data(), part.size()), 3000u);
  EXPECT_EQ(part, pattern(10000, 4).substr(700, 3000));
  EXPECT_EQ(document->read(large, 9999, part.data(), part.size()), 1u);
  EXPECT_EQ(document->read(large, 10000, part.data(), part.size()), 0u);
  EXPECT_EQ(document->read(large, UINT64_MAX, part.data(), part.size()), 0u);
}

TEST(Document, entries_have_what_the_directory_says_of_them) {
  CompoundWriter writer;
  const uint32_t storage = addTree(writer);
  writer.node(storage).classId = "0123456789abcdef";
  writer.node(storage).stateBits = 0x12345678;
  writer.node(storage).created = 0x01DA800000000001;
  writer.node(storage).modified = 0x01DA800000000002;
  const std::string bytes = writer.write();
  const auto document = openBytes(bytes);
  const Entry& entry = document->entries()[document->find("書庫").value()];
  EXPECT_FALSE(entry.isStream());
  EXPECT_EQ(std::string(entry.stored->classId.begin(), entry.stored->classId.end()),
            "0123456789abcdef");
  EXPECT_EQ(entry.stored->stateBits, 0x12345678u);
  EXPECT_EQ(entry.stored->created, 0x01DA800000000001u);
  EXPECT_EQ(entry.stored->modified, 0x01DA800000000002u);
  EXPECT_EQ(entry.id, writer.entryId(storage));
  EXPECT_EQ(entry.depth, 1u);
  EXPECT_EQ(entry.parent, 0u);
}

TEST(Document, the_upper_half_of_sizes_counts_from_version_4_on) {
  for (const uint16_t version : kVersions) {
    CompoundWriter writer;
    if (version == 4) writer.useVersion4();
    const uint32_t stream = writer.addStream(0, u"large", pattern(5000));
    std::string bytes = writer.write();
    putDword(bytes, writer.entryOffset(stream) + 124, 1);
    const auto document = openBytes(bytes);
    EXPECT_EQ(document->entries()[1].size(), version == 4 ? 0x100001388u : 5000u);
  }
}

// A chain of siblings is as deep as there are siblings, and no path is too long.
TEST(Document, trees_of_siblings_may_have_any_shape) {
  for (const TreeShape shape :
       {TreeShape::kBalanced, TreeShape::kLeftChain, TreeShape::kRightChain}) {
    CompoundWriter writer;
    writer.shape = shape;
    constexpr int kStreams = 20000;
    for (int i = 0; i < kStreams; ++i) {
      std::u16string name;
      for (const char c : std::to_string(100000 + i)) name.push_back(static_cast<char16_t>(c));
      writer.addStream(0, name, "");
    }
    const std::string bytes = writer.write();
    const auto document = openBytes(bytes);
    EXPECT_EQ(document->entries().size(), kStreams + 1u);
    EXPECT_TRUE(document->find("119999"));
    EXPECT_TRUE(document->damages().told().empty());
  }
}

TEST(Document, storages_may_be_nested_at_any_depth) {
  CompoundWriter writer;
  uint32_t parent = 0;
  for (int i = 0; i < 20000; ++i) parent = writer.addStorage(parent, u"s");
  writer.addStream(parent, u"deepest", "bytes");
  const std::string bytes = writer.write();
  const auto document = openBytes(bytes);
  ASSERT_EQ(document->entries().size(), 20002u);
  const std::string path = document->pathOf(20001);
  EXPECT_EQ(path.size(), 20000 * 2 + 7u);
  EXPECT_EQ(contentAt(*document, path), "bytes");
}

// 110 sectors of table and more are listed in sectors of their own.
TEST(Document, the_list_of_the_table_goes_on_behind_the_header) {
  CompoundWriter writer;
  writer.addStream(0, u"first", pattern(8'000'000, 5));
  writer.addStream(0, u"second", pattern(9'000'000, 6));
  const std::string bytes = writer.write();
  ASSERT_GE(writer.difatSectors().size(), 2u);
  const auto document = openBytes(bytes);
  EXPECT_EQ(contentAt(*document, "first"), pattern(8'000'000, 5));
  EXPECT_EQ(contentAt(*document, "second"), pattern(9'000'000, 6));
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>());
}

TEST(Document, finds_entries_by_paths) {
  CompoundWriter writer;
  writer.addStream(0, u"NAME", "upper");
  writer.addStream(0, u"name", "lower");
  writer.addStream(0, u"Ärger", "umlaut");
  writer.addStream(0, u"a/b", "slash");
  const std::string bytes = writer.write();
  const auto document = openBytes(bytes);
  EXPECT_EQ(contentAt(*document, "name"), "lower");
  EXPECT_EQ(contentAt(*document, "NAME"), "upper");
  EXPECT_EQ(contentAt(*document, "nAME"), "upper");
  EXPECT_EQ(contentAt(*document, "äRGER"), "umlaut");
  EXPECT_EQ(contentAt(*document, "a\\x2Fb"), "slash");
  EXPECT_EQ(document->find(""), 0u);
  for (const char* path : {"a", "a/b", "name/more", "/name", "\\q", "\xFF", "\\orphaned/1/NAME"})
    EXPECT_EQ(document->find(path), std::nullopt) << path;
}

// What no storage leads to, with what stands below it.
TEST(Document, orphans_are_found) {
  CompoundWriter writer;
  const uint32_t storage = addTree(writer);
  std::string bytes = writer.write();
  const size_t root = writer.entryOffset(0);
  // The top of the root's children is left out: all of them lose their storage.
  putDword(bytes, root + 76, 0xFFFFFFFF);
  const auto document = openBytes(bytes);
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>());
  ASSERT_EQ(document->entries().size(), 7u);
  for (size_t i = 1; i < 7; ++i) EXPECT_TRUE(document->entries()[i].isOrphan);
  const std::string path = "\\orphaned/" + std::to_string(writer.entryId(storage)) + "/書庫/large";
  EXPECT_EQ(contentAt(*document, path), pattern(10000, 4));
  EXPECT_EQ(document->pathOf(document->find(path).value()), path);
}

TEST(Document, orphans_in_a_circle_are_each_found_once) {
  CompoundWriter writer;
  const uint32_t a = writer.addStorage(0, u"a");
  const uint32_t b = writer.addStorage(a, u"b");
  std::string bytes = writer.write();
  putDword(bytes, writer.entryOffset(0) + 76, 0xFFFFFFFF);
  putDword(bytes, writer.entryOffset(b) + 76, writer.entryId(a));
  const auto document = openBytes(bytes);
  ASSERT_EQ(document->entries().size(), 3u);
  EXPECT_TRUE(document->entries()[1].isOrphan);
  EXPECT_TRUE(document->entries()[2].isOrphan);
}

TEST(Document, what_is_no_document_is_none) {
  EXPECT_EQ(openBytes(""), nullptr);
  EXPECT_EQ(openBytes("This is no document, though it has bytes."), nullptr);
  EXPECT_EQ(openBytes("PK\x03\x04"), nullptr);
}

TEST(Document, reads_whole_streams_up_to_a_bound) {
  CompoundWriter writer;
  writer.addStream(0, u"five", "bytes");
  const std::string bytes = writer.write();
  const auto document = openBytes(bytes);
  EXPECT_EQ(document->readWhole(1, 4), std::nullopt);
  EXPECT_EQ(document->readWhole(1, 5), (std::vector<uint8_t>{'b', 'y', 't', 'e', 's'}));
  EXPECT_EQ(document->readWhole(0, 5), std::vector<uint8_t>());
}

// The chains of more streams than are kept are found anew.
TEST(Document, streams_can_be_read_in_turns) {
  CompoundWriter writer;
  for (uint32_t i = 0; i < 20; ++i)
    writer.addStream(0, std::u16string(1, static_cast<char16_t>(u'a' + i)), pattern(5000, i + 1));
  const std::string bytes = writer.write();
  const auto document = openBytes(bytes);
  for (const uint64_t offset : {0, 513, 4999})
    for (uint32_t i = 0; i < 20; ++i) {
      char byte = 0;
      EXPECT_EQ(document->read(i + 1, offset, &byte, 1), 1u);
      EXPECT_EQ(byte, pattern(5000, i + 1)[offset]) << i << " " << offset;
    }
}

TEST(Document, a_check_of_a_sound_one_finds_nothing) {
  for (const bool isLarge : {false, true}) {
    CompoundWriter writer;
    if (isLarge) writer.useVersion4();
    writer.addStream(0, u"A", "top");
    const uint32_t storage = writer.addStorage(0, u"b");
    writer.addStream(storage, u"inner", pattern(100, 3));
    writer.addStream(0, u"LARGE", pattern(9'000'000, 4));
    const std::string bytes = writer.write();
    const auto document = openBytes(bytes);
    EXPECT_EQ(document->check().lostSectors, 0u);
    EXPECT_EQ(damagesOf(*document), std::vector<std::string>());
  }
}

}  // namespace
}  // namespace ksv_kit::documents
