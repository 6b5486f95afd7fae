// Documents that are written anew, with changes or without.
#include "kit/documents/document_edit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

#include "documents.h"
#include "kit/documents/entry_names.h"
#include "tests/system/system.h"

namespace ksv_kit::documents {
namespace {

using ksv::test::CompoundWriter;
using ksv::test::getDword;
using ksv::test::pattern;
using ksv::test::putDword;

std::string writtenBy(const DocumentEdit& edit) {
  std::string written;
  edit.write([&](const uint8_t* bytes, size_t count) {
    written.append(reinterpret_cast<const char*>(bytes), count);
  });
  return written;
}

std::vector<uint8_t> bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

// All that a document says of its entries, by path: what has to stay.
std::vector<std::string> factsOf(Document& document) {
  std::vector<std::string> facts;
  for (uint32_t i = 0; i < document.entries().size(); ++i) {
    const DirectoryEntry& stored = *document.entries()[i].stored;
    std::string line = document.pathOf(i) + "|" + std::to_string(stored.type) + "|" +
                       std::to_string(stored.stateBits) + "|" + std::to_string(stored.created) +
                       "|" + std::to_string(stored.modified) + "|";
    line.append(stored.classId.begin(), stored.classId.end());
    facts.push_back(line + "|" + contentOf(document, i));
  }
  std::sort(facts.begin(), facts.end());
  return facts;
}

// Among siblings in a red-black tree no red one stands below a red one, and every way down meets
// as many black ones: how many, or -1.
int blackDepth(const std::string& bytes, const Document& document, uint32_t id, bool isBelowRed) {
  if (id == kNoEntry) return 1;
  const auto& entries = document.entries();
  const auto entry = std::find_if(entries.begin(), entries.end(),
                                  [&](const Entry& other) { return other.id == id; });
  const size_t offset = static_cast<size_t>(entry->stored->offset);
  const bool isRed = bytes[offset + 67] == 0;
  const int left = blackDepth(bytes, document, entry->stored->left, isRed);
  const int right = blackDepth(bytes, document, entry->stored->right, isRed);
  if (left < 0 || left != right || (isRed && isBelowRed)) return -1;
  return left + (isRed ? 0 : 1);
}

void expectSound(const std::string& bytes) {
  const auto document = openBytes(bytes);
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->check().lostSectors, 0u);
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>());
  for (const Entry& entry : document->entries()) {
    EXPECT_FALSE(entry.isOrphan);
    EXPECT_GT(blackDepth(bytes, *document, entry.stored->child, false), 0);
  }
}

class DocumentEdits : public testing::Test {
 protected:
  DocumentEdits() {
    const uint32_t storage = writer_.addStorage(0, u"Storage");
    writer_.node(storage).classId = "0123456789abcdef";
    writer_.node(storage).stateBits = 5;
    writer_.node(storage).created = 0x01DA800000000001;
    writer_.node(storage).modified = 0x01DA800000000002;
    writer_.node(0).classId = "fedcba9876543210";
    writer_.addStream(storage, u"inner", pattern(70, 2));
    writer_.addStream(0, u"\u0005Summary", pattern(4095, 3));
    writer_.addStream(0, u"large", pattern(4096, 4));
    writer_.addStream(0, u"empty", "");
    bytes_ = writer_.write();
  }

  CompoundWriter writer_;
  std::string bytes_;
};

TEST_F(DocumentEdits, without_changes_keep_all_there_is) {
  for (const bool isLarge : {false, true}) {
    if (isLarge) writer_.useVersion4();
    const std::string bytes = writer_.write();
    const auto source = openBytes(bytes);
    source->check();
    // The model writer does not sort names, which alone is set right.
    const std::string written = writtenBy(DocumentEdit(*source));
    expectSound(written);
    const auto again = openBytes(written);
    EXPECT_EQ(factsOf(*again), factsOf(*source));
    EXPECT_EQ(again->header().version, isLarge ? 4 : 3);
    EXPECT_EQ(writtenBy(DocumentEdit(*again)), written);
  }
}

TEST_F(DocumentEdits, replace_add_and_remove_streams) {
  const auto source = openBytes(bytes_);
  DocumentEdit edit(*source);
  edit.setStream("\\x05Summary", bytesOf("new"));
  edit.setStream("storage/INNER", bytesOf(pattern(5000, 9)));
  edit.setStream("Added/below/stream", bytesOf("added"));
  EXPECT_TRUE(edit.remove("large"));
  EXPECT_FALSE(edit.remove("large"));
  EXPECT_FALSE(edit.remove(""));
  const std::string written = writtenBy(edit);
  expectSound(written);
  const auto document = openBytes(written);
  EXPECT_EQ(pathsOf(*document),
            (std::vector<std::string>{"Added", "Added/below", "Added/below/stream", "empty",
                                      "Storage", "Storage/inner", "\\x05Summary"}));
  EXPECT_EQ(contentAt(*document, "\\x05Summary"), "new");
  EXPECT_EQ(contentAt(*document, "Storage/inner"), pattern(5000, 9));
  EXPECT_EQ(contentAt(*document, "Added/below/stream"), "added");
}

TEST_F(DocumentEdits, of_storages_take_what_is_in_them) {
  const auto source = openBytes(bytes_);
  DocumentEdit edit(*source);
  EXPECT_TRUE(edit.remove("Storage"));
  EXPECT_EQ(edit.find("Storage/inner"), std::nullopt);
  const std::string written = writtenBy(edit);
  expectSound(written);
  EXPECT_EQ(pathsOf(*openBytes(written)),
            (std::vector<std::string>{"empty", "large", "\\x05Summary"}));
}

TEST_F(DocumentEdits, refuse_paths_that_cannot_be) {
  const auto source = openBytes(bytes_);
  DocumentEdit edit(*source);
  for (const char* path : {"", "Storage", "large/below", "a\\x2Fb", "a:b", "bad\\q",
                           "a name of thirty-two characters.", "//"})
    EXPECT_THROW(edit.setStream(path, {}), UnfitPath) << path;
  edit.setStream("a name of thirty-one characters", {});
  expectSound(writtenBy(edit));
}

TEST_F(DocumentEdits, refuse_sources_of_which_something_would_be_lost) {
  const std::string sound = bytes_;
  putDword(bytes_, writer_.entryOffset(4) + 120, 60000);
  EXPECT_THROW(DocumentEdit(*openBytes(bytes_)), LossyEdit);
  bytes_ = sound;
  putDword(bytes_, writer_.entryOffset(1) + 76, 0xFFFFFFFF);
  try {
    const auto source = openBytes(bytes_);
    const DocumentEdit edit(*source);
    ADD_FAILURE() << "the orphan is lost";
  } catch (const LossyEdit& lossy) {
    EXPECT_STREQ(lossy.what(), "has orphaned entries, which would be lost");
    EXPECT_EQ(lossy.offset(), writer_.entryOffset(2));
  }
}

// A small file would become a large one.
TEST_F(DocumentEdits, refuse_sources_whose_streams_share_their_bytes) {
  CompoundWriter writer;
  const uint32_t first = writer.addStream(0, u"a", pattern(100'000));
  const uint32_t second = writer.addStream(0, u"b", "");
  std::string bytes = writer.write();
  for (const size_t field : {116, 120})
    putDword(bytes, writer.entryOffset(second) + field,
             getDword(bytes, writer.entryOffset(first) + field));
  EXPECT_THROW(DocumentEdit(*openBytes(bytes)), LossyEdit);
}

TEST_F(DocumentEdits, of_nothing_are_documents) {
  DocumentEdit edit;
  expectSound(writtenBy(edit));
  edit.setStream("only", bytesOf("one"));
  const std::string written = writtenBy(edit);
  expectSound(written);
  EXPECT_EQ(contentAt(*openBytes(written), "only"), "one");
}

// So many that the table of sectors is listed behind the header, more than once.
TEST_F(DocumentEdits, of_large_documents_list_their_table) {
  DocumentEdit edit;
  edit.setStream("large", bytesOf(pattern(20'000'000, 1)));
  edit.setStream("small", bytesOf(pattern(100, 2)));
  const std::string written = writtenBy(edit);
  EXPECT_GE(getDword(written, 72), 2u);
  expectSound(written);
  EXPECT_EQ(contentAt(*openBytes(written), "large"), pattern(20'000'000, 1));
}

// At every count of siblings the tree is balanced.
TEST_F(DocumentEdits, have_balanced_trees_of_siblings) {
  DocumentEdit edit;
  for (int i = 0; i < 70; ++i) {
    edit.setStream("s" + std::to_string(i), bytesOf(std::to_string(i)));
    expectSound(writtenBy(edit));
  }
}

TEST_F(DocumentEdits, of_any_tree_are_read_back_equal) {
  std::mt19937 random(ksv::test::testSeed());
  for (int round = 0; round < 40; ++round) {
    CompoundWriter writer;
    if (random() % 4 == 0) writer.useVersion4();
    writer.backwards = random() % 2 == 0;
    std::vector<uint32_t> storages = {0};
    const auto count = static_cast<uint32_t>(random() % 60);
    for (uint32_t i = 0; i < count; ++i) {
      const uint32_t parent = storages[random() % storages.size()];
      std::u16string name(random() % 10, u'x');
      for (const char c : std::to_string(i)) name.push_back(static_cast<char16_t>(c));
      if (random() % 5 == 0)
        storages.push_back(writer.addStorage(parent, name));
      else
        writer.addStream(parent, name, pattern(random() % 9000, i + 1));
    }
    const std::string bytes = writer.write();
    const auto source = openBytes(bytes);
    const std::string written = writtenBy(DocumentEdit(*source));
    expectSound(written);
    EXPECT_EQ(factsOf(*openBytes(written)), factsOf(*source)) << round;
  }
}

}  // namespace
}  // namespace ksv_kit::documents
