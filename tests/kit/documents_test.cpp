// Documents by what libksv exports of them.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "kit.h"
#include "tests/ole/compound_writer.h"

namespace ksv_kit_tests {
namespace {

using ksv::test::CompoundWriter;
using ksv::test::pattern;
using ksv::test::putDword;

struct DocumentDeleter {
  void operator()(ksv_document* document) const { ksv_document_close(document); }
};
using Document = std::unique_ptr<ksv_document, DocumentDeleter>;

Document openMemory(const std::string& bytes) {
  ksv_document* document = nullptr;
  ksv_error error;
  EXPECT_EQ(ksv_document_open_memory(bytes.data(), bytes.size(), &document, &error), KSV_OK)
      << error.message;
  return Document(document);
}

class Documents : public testing::Test {
 protected:
  Documents() {
    writer_.addStream(0, u"\u0005Sum", "properties");
    storage_ = writer_.addStorage(0, u"Store");
    large_ = writer_.addStream(storage_, u"Large", pattern(6000));
    writer_.node(storage_).classId = "0123456789abcdef";
    writer_.node(storage_).stateBits = 7;
    writer_.node(storage_).created = 116444736000000001;
    writer_.node(storage_).modified = 116444736000000002;
    bytes_ = writer_.write();
  }

  CompoundWriter writer_;
  uint32_t storage_, large_;
  std::string bytes_;
  ksv_error error_;
};

TEST_F(Documents, have_entries_by_index) {
  const Document document = openMemory(bytes_);
  ASSERT_EQ(ksv_document_entry_count(document.get()), 4u);
  EXPECT_EQ(ksv_document_entry(document.get(), 0)->kind, KSV_ENTRY_ROOT);
  EXPECT_EQ(ksv_document_entry(document.get(), 0)->parent, KSV_NO_ENTRY);
  const ksv_entry* first = ksv_document_entry(document.get(), 1);
  EXPECT_STREQ(first->name, "\\x05Sum");
  ASSERT_EQ(first->name_length, 4u);
  EXPECT_EQ(first->name_units[0], 5u);
  EXPECT_EQ(first->kind, KSV_ENTRY_STREAM);
  EXPECT_EQ(first->size, 10u);
  const ksv_entry* storage = ksv_document_entry(document.get(), 2);
  EXPECT_EQ(storage->kind, KSV_ENTRY_STORAGE);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(storage->class_id), 16), "0123456789abcdef");
  EXPECT_EQ(storage->state_bits, 7u);
  EXPECT_EQ(storage->created, 116444736000000001u);
  EXPECT_EQ(storage->modified, 116444736000000002u);
  EXPECT_EQ(storage->is_orphan, 0);
  EXPECT_EQ(ksv_document_entry(document.get(), 3)->parent, 2u);
  EXPECT_EQ(ksv_document_entry(document.get(), 4), nullptr);
}

TEST_F(Documents, have_entries_by_path) {
  const Document document = openMemory(bytes_);
  uint32_t index = 0;
  ASSERT_EQ(ksv_document_find(document.get(), "store/LARGE", &index, &error_), KSV_OK);
  EXPECT_EQ(index, 3u);
  char* path = nullptr;
  ASSERT_EQ(ksv_document_path(document.get(), index, &path, &error_), KSV_OK);
  EXPECT_STREQ(path, "Store/Large");
  ksv_free(path);
  ASSERT_EQ(ksv_document_find(document.get(), "none", &index, &error_), KSV_OK);
  EXPECT_EQ(index, KSV_NO_ENTRY);
}

TEST_F(Documents, give_the_bytes_of_streams_from_any_place_on) {
  const Document document = openMemory(bytes_);
  std::string buffer(100, '\0');
  size_t length = 0;
  ASSERT_EQ(ksv_document_read(document.get(), 3, 5950, buffer.data(), 100, &length, &error_),
            KSV_OK);
  EXPECT_EQ(buffer.substr(0, length), pattern(6000).substr(5950));
  EXPECT_EQ(ksv_document_read(document.get(), 3, 6000, nullptr, 0, &length, &error_), KSV_OK);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(ksv_document_read(document.get(), 2, 0, buffer.data(), 1, &length, &error_),
            KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_document_read(document.get(), 9, 0, buffer.data(), 1, &length, &error_),
            KSV_BAD_ARGUMENT);
}

TEST_F(Documents, tell_their_facts) {
  const Document document = openMemory(bytes_);
  ksv_document_facts facts;
  ksv_document_get_facts(document.get(), &facts);
  EXPECT_EQ(facts.version, 3u);
  EXPECT_EQ(facts.sector_size, 512u);
  EXPECT_EQ(facts.file_size, bytes_.size());
  EXPECT_EQ(facts.orphans, 0u);
  EXPECT_EQ(facts.is_checked, 0u);
  ASSERT_EQ(ksv_document_check(document.get(), &error_), KSV_OK);
  ksv_document_get_facts(document.get(), &facts);
  EXPECT_EQ(facts.is_checked, 1u);
  EXPECT_EQ(facts.lost_sectors, 0u);
  EXPECT_EQ(ksv_document_damage_count(document.get()), 0u);
}

TEST_F(Documents, tell_damages_with_their_places) {
  putDword(bytes_, writer_.entryOffset(large_) + 120, 60000);
  const Document document = openMemory(bytes_);
  EXPECT_EQ(ksv_document_damage_count(document.get()), 0u);
  std::string buffer(60000, '\0');
  size_t length = 0;
  ASSERT_EQ(ksv_document_read(document.get(), 3, 0, buffer.data(), 60000, &length, &error_),
            KSV_DAMAGED);
  EXPECT_EQ(length, 6144u);
  EXPECT_STREQ(error_.message, "the document has a stream that is shorter than it claims");
  EXPECT_EQ(error_.offset, writer_.entryOffset(large_) + 120);
  ksv_damage damage;
  ASSERT_EQ(ksv_document_damage(document.get(), 0, &damage), 1);
  EXPECT_EQ(damage.kind, KSV_DAMAGE_SIZE);
  EXPECT_EQ(damage.entry, 3u);
  EXPECT_EQ(damage.offset, writer_.entryOffset(large_) + 120);
  EXPECT_EQ(ksv_document_damage(document.get(), 1, &damage), 0);
}

TEST_F(Documents, are_opened_by_path_and_descriptor) {
  const std::string path = testing::TempDir() + "ksv_documents_test.doc";
  std::ofstream(path, std::ios::binary) << bytes_;
  ksv_document* opened = nullptr;
  ASSERT_EQ(ksv_document_open(path.c_str(), &opened, &error_), KSV_OK) << error_.message;
  EXPECT_EQ(ksv_document_entry_count(opened), 4u);
  std::string buffer(6000, '\0');
  size_t length = 0;
  EXPECT_EQ(ksv_document_read(opened, 3, 0, buffer.data(), 6000, &length, &error_), KSV_OK);
  EXPECT_EQ(buffer, pattern(6000));
  ksv_document_close(opened);
  std::remove(path.c_str());
}

TEST_F(Documents, tell_the_system_s_errors_from_damage) {
  ksv_document* document = nullptr;
  EXPECT_EQ(ksv_document_open("no such file", &document, &error_), KSV_SYSTEM);
  EXPECT_EQ(document, nullptr);
  EXPECT_EQ(std::string(error_.message).find("no such file cannot be read: "), 0u);
  EXPECT_EQ(ksv_document_open(testing::TempDir().c_str(), &document, &error_), KSV_SYSTEM);
  EXPECT_EQ(ksv_document_open_descriptor(-1, &document, &error_), KSV_SYSTEM);
  EXPECT_EQ(ksv_document_open_memory("text", 4, &document, &error_), KSV_NO_DOCUMENT);
  EXPECT_EQ(ksv_document_open_memory(nullptr, 4, &document, &error_), KSV_BAD_ARGUMENT);
  EXPECT_STREQ(ksv_result_name(KSV_DAMAGED), "KSV_DAMAGED");
}

TEST_F(Documents, take_nulls) {
  EXPECT_EQ(ksv_document_open(nullptr, nullptr, nullptr), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_document_entry_count(nullptr), 0u);
  EXPECT_EQ(ksv_document_entry(nullptr, 0), nullptr);
  EXPECT_EQ(ksv_document_damage_count(nullptr), 0u);
  ksv_document_close(nullptr);
}

}  // namespace
}  // namespace ksv_kit_tests
