// What is told of damaged documents, and where; and that what is sound is still read.
#include <gtest/gtest.h>

#include "documents.h"

namespace ksv_kit::documents {
namespace {

using ksv::test::CompoundWriter;
using ksv::test::kEnd;
using ksv::test::kNone;
using ksv::test::pattern;
using ksv::test::putDword;
using ksv::test::putWord;

// Names in their order: A, b, LARGE, storage.
class DocumentDamage : public testing::Test {
 protected:
  DocumentDamage() {
    small_ = writer_.addStream(0, u"A", pattern(200, 1));
    other_ = writer_.addStream(0, u"b", "other");
    large_ = writer_.addStream(0, u"LARGE", pattern(5000, 2));
    storage_ = writer_.addStorage(0, u"storage");
    inner_ = writer_.addStream(storage_, u"inner", pattern(5000, 3));
    bytes_ = writer_.write();
  }

  std::unique_ptr<Document> checked() {
    auto document = openBytes(bytes_);
    document->check();
    return document;
  }

  void expectOne(const std::string& damage) {
    EXPECT_EQ(damagesOf(*checked()), std::vector<std::string>{damage});
  }

  uint32_t firstSectorOf(uint32_t node) const {
    return ksv::test::getDword(bytes_, writer_.entryOffset(node) + 116);
  }

  CompoundWriter writer_;
  uint32_t small_, other_, large_, storage_, inner_;
  std::string bytes_;
};

TEST_F(DocumentDamage, of_the_header_is_told_and_the_rest_is_read) {
  const std::vector<std::tuple<size_t, uint32_t, const char*>> values = {
      {26, 7, "has a version that is not known"},
      {28, 0xFEFF, "has a mark of byte order that is none"}};
  for (const auto& [offset, value, reason] : values) {
    const std::string sound = bytes_;
    putWord(bytes_, offset, value);
    const auto document = checked();
    EXPECT_EQ(damagesOf(*document)[0], at(reason, offset));
    bytes_ = sound;
  }
  putWord(bytes_, 30, 0xFFFF);
  const auto document = openBytes(bytes_);
  EXPECT_EQ(damagesOf(*document)[0], at("has sectors of a size that is not usual", 30));
  EXPECT_EQ(contentAt(*document, "storage/inner"), pattern(5000, 3));
}

TEST_F(DocumentDamage, counts_of_the_header_are_checked) {
  for (const auto& [offset, reason] : std::vector<std::pair<size_t, const char*>>{
           {44, "counts the sectors of its table wrongly"},
           {64, "counts the sectors of its table of mini sectors wrongly"},
           {40, "counts the sectors of its directory wrongly"}}) {
    const std::string sound = bytes_;
    putDword(bytes_, offset, 99);
    expectOne(at(reason, offset));
    bytes_ = sound;
  }
}

TEST_F(DocumentDamage, a_chain_that_leads_nowhere_ends_one_stream) {
  const uint32_t second = firstSectorOf(large_) + 1;
  putDword(bytes_, writer_.fatOffset(second), 100000);
  const auto document = openBytes(bytes_);
  EXPECT_EQ(contentAt(*document, "LARGE"), pattern(5000, 2).substr(0, 1024));
  EXPECT_EQ(damagesOf(*document),
            std::vector<std::string>{
                at("has a chain that leads out of its table", writer_.fatOffset(second))});
  EXPECT_EQ(document->damages().told()[0].kind, KSV_DAMAGE_CHAIN);
  EXPECT_EQ(document->damages().told()[0].id, writer_.entryId(large_));
  EXPECT_EQ(contentAt(*document, "A"), pattern(200, 1));
  EXPECT_EQ(contentAt(*document, "storage/inner"), pattern(5000, 3));
  EXPECT_EQ(document->damages().told().size(), 1u);
}

TEST_F(DocumentDamage, a_chain_that_begins_nowhere_is_told_at_the_entry) {
  putDword(bytes_, writer_.entryOffset(large_) + 116, kNone);
  const auto document = openBytes(bytes_);
  EXPECT_EQ(contentAt(*document, "LARGE"), "");
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>{at("has a chain that leads to no sector",
                                                              writer_.entryOffset(large_) + 116)});
}

TEST_F(DocumentDamage, a_circle_of_sectors_ends_where_it_closes) {
  const uint32_t first = firstSectorOf(large_);
  putDword(bytes_, writer_.fatOffset(first + 3), first + 1);
  putDword(bytes_, writer_.entryOffset(large_) + 120, 0x7FFFFFFF);
  const auto document = openBytes(bytes_);
  EXPECT_EQ(contentAt(*document, "LARGE"), pattern(5000, 2).substr(0, 4 * 512));
  EXPECT_EQ(damagesOf(*document),
            std::vector<std::string>{
                at("has a chain that comes back to itself", writer_.fatOffset(first + 3))});
  EXPECT_EQ(document->damages().told()[0].kind, KSV_DAMAGE_CYCLE);
}

TEST_F(DocumentDamage, a_circle_of_mini_sectors_ends_where_it_closes) {
  putDword(bytes_, writer_.miniFatOffset(1), 0);
  const auto document = openBytes(bytes_);
  EXPECT_EQ(contentAt(*document, "A"), pattern(200, 1).substr(0, 128));
  EXPECT_EQ(contentAt(*document, "b"), "other");
  EXPECT_EQ(damagesOf(*document),
            std::vector<std::string>{
                at("has a chain that comes back to itself", writer_.miniFatOffset(1))});
}

TEST_F(DocumentDamage, a_stream_that_claims_more_than_its_chain_has_is_told_once) {
  const size_t entry = writer_.entryOffset(large_);
  putDword(bytes_, entry + 120, 60000);
  const auto document = openBytes(bytes_);
  const std::string content = contentAt(*document, "LARGE");
  EXPECT_EQ(content.size(), 10u * 512);
  EXPECT_EQ(content.substr(0, 5000), pattern(5000, 2));
  EXPECT_EQ(contentAt(*document, "LARGE"), content);
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>{at(
                                      "has a stream that is shorter than it claims", entry + 120)});
}

TEST_F(DocumentDamage, a_file_cut_short_has_what_lies_in_front_of_the_cut) {
  CompoundWriter writer;
  writer.addStream(0, u"first", pattern(5000, 1));
  writer.addStream(0, u"second", pattern(5000, 2));
  const std::string whole = writer.write();
  // All but the streams stands behind them, so they are moved to the end.
  const auto document = openBytes(whole);
  const uint64_t cut = document->fileSize() - 300;
  const auto shorter = openBytes(std::string_view(whole).substr(0, cut));
  ASSERT_NE(shorter, nullptr);
  EXPECT_FALSE(shorter->entries().empty());
  EXPECT_EQ(contentAt(*shorter, "first"), pattern(5000, 1));
}

TEST_F(DocumentDamage, a_sector_of_two_streams_is_told) {
  const uint32_t shared = firstSectorOf(large_);
  putDword(bytes_, writer_.entryOffset(inner_) + 116, shared);
  const auto document = openBytes(bytes_);
  EXPECT_EQ(document->check().lostSectors, 10u);
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>{at("has a sector that belongs to two",
                                                              writer_.offsetOf(shared))});
}

TEST_F(DocumentDamage, a_mini_sector_of_two_streams_is_told) {
  putDword(bytes_, writer_.entryOffset(other_) + 116, 0);
  expectOne(at("has a mini sector that belongs to two streams", writer_.miniFatOffset(0)));
}

TEST_F(DocumentDamage, links_between_entries_are_told_where_they_stand) {
  for (const uint32_t target : {uint32_t{100000}, writer_.entryId(storage_)}) {
    const std::string sound = bytes_;
    putDword(bytes_, writer_.entryOffset(inner_) + 72, target);
    const auto document = openBytes(bytes_);
    EXPECT_EQ(damagesOf(*document),
              std::vector<std::string>{
                  at(target == 100000 ? "has a link to an entry that is none"
                                      : "has a link to an entry that stands elsewhere already",
                     writer_.entryOffset(inner_) + 72)});
    EXPECT_EQ(document->entries().size(), 6u);
    bytes_ = sound;
  }
}

TEST_F(DocumentDamage, entries_with_odd_values_are_told_and_shown) {
  const size_t entry = writer_.entryOffset(other_);
  putWord(bytes_, entry + 64, 7);
  bytes_[writer_.entryOffset(storage_) + 66] = 4;
  const auto document = openBytes(bytes_);
  EXPECT_EQ(damagesOf(*document),
            (std::vector<std::string>{
                at("has a name of another length than it claims", entry + 64),
                at("has an entry of no known type", writer_.entryOffset(storage_) + 66)}));
  EXPECT_EQ(contentAt(*document, "b"), "other");
  EXPECT_EQ(contentAt(*document, "storage/inner"), pattern(5000, 3));
}

TEST_F(DocumentDamage, an_entry_without_a_name_is_told) {
  putWord(bytes_, writer_.entryOffset(other_), 0);
  putWord(bytes_, writer_.entryOffset(other_) + 64, 2);
  const auto document = openBytes(bytes_);
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>{at("has an entry without a name",
                                                              writer_.entryOffset(other_))});
}

TEST_F(DocumentDamage, a_name_without_an_end_has_32_units) {
  for (size_t i = 0; i < 32; ++i) putWord(bytes_, writer_.entryOffset(other_) + 2 * i, 'n');
  const auto document = openBytes(bytes_);
  EXPECT_EQ(contentAt(*document, std::string(32, 'n')), "other");
  EXPECT_EQ(document->damages().told()[0].kind, KSV_DAMAGE_ENTRY);
}

TEST_F(DocumentDamage, another_root_is_found) {
  bytes_[writer_.entryOffset(0) + 66] = 0;
  const auto none = openBytes(bytes_);
  EXPECT_EQ(none->damages().told()[0].kind, KSV_DAMAGE_ROOT);
  bytes_[writer_.entryOffset(storage_) + 66] = 5;
  const auto document = openBytes(bytes_);
  EXPECT_EQ(document->damages().told()[0].kind, KSV_DAMAGE_ROOT);
  EXPECT_EQ(contentAt(*document, "inner"), pattern(5000, 3));
}

TEST_F(DocumentDamage, without_a_directory_there_are_no_entries) {
  putDword(bytes_, 48, kEnd);
  const auto document = checked();
  EXPECT_TRUE(document->entries().empty());
  EXPECT_EQ(document->find(""), std::nullopt);
  EXPECT_EQ(damagesOf(*document)[0], at("has no directory", 48));
}

TEST_F(DocumentDamage, the_order_of_siblings_is_checked) {
  CompoundWriter writer;
  writer.addStream(0, u"b", "1");
  const uint32_t second = writer.addStream(0, u"A", "2");
  const uint32_t third = writer.addStream(0, u"a", "3");
  bytes_ = writer.write();
  EXPECT_EQ(
      damagesOf(*checked()),
      (std::vector<std::string>{
          at("has entries that are not in the order of their names", writer.entryOffset(second)),
          at("has two entries of one name in a storage", writer.entryOffset(third))}));
}

TEST_F(DocumentDamage, sectors_of_the_table_have_to_be_there_and_be_marked) {
  const std::string sound = bytes_;
  putDword(bytes_, writer_.fatOffset(writer_.fatSectors()[0]), kEnd);
  expectOne(at("has a sector of its table that is not marked as one",
               writer_.fatOffset(writer_.fatSectors()[0])));
  bytes_ = sound;
  putDword(bytes_, 80, 100000);
  putDword(bytes_, 44, 2);
  expectOne(at("lacks a sector of its table", 80));
}

TEST_F(DocumentDamage, lost_sectors_are_counted_and_no_damage) {
  putDword(bytes_, writer_.entryOffset(large_) + 116, kEnd);
  putDword(bytes_, writer_.entryOffset(large_) + 120, 0);
  const auto document = openBytes(bytes_);
  EXPECT_EQ(document->check().lostSectors, 10u);
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>());
}

TEST_F(DocumentDamage, what_orphans_had_is_not_lost_and_not_told) {
  putDword(bytes_, writer_.entryOffset(storage_) + 76, kNone);
  const auto document = openBytes(bytes_);
  EXPECT_EQ(document->check().lostSectors, 0u);
  EXPECT_EQ(damagesOf(*document), std::vector<std::string>());
  EXPECT_EQ(pathsOf(*document).back(),
            "\\orphaned/" + std::to_string(writer_.entryId(inner_)) + "/inner");
}

// What that part of the table reaches is gone, the directory in it.
TEST_F(DocumentDamage, lists_of_the_table_that_come_back_end_there) {
  CompoundWriter writer;
  writer.addStream(0, u"large", pattern(17'000'000, 5));
  bytes_ = writer.write();
  const size_t behindFirst = writer.offsetOf(writer.difatSectors()[0]) + 508;
  putDword(bytes_, behindFirst, writer.difatSectors()[0]);
  const auto document = openBytes(bytes_);
  EXPECT_EQ(damagesOf(*document)[0],
            at("has a list of its table that comes back to itself", behindFirst));
  EXPECT_EQ(document->damages().told()[0].kind, KSV_DAMAGE_SECTOR_TABLE);
}

TEST(DocumentDamages, of_one_kind_at_one_place_are_one) {
  DamageList list;
  list.tell(KSV_DAMAGE_CHAIN, 5, "a");
  list.tell(KSV_DAMAGE_CHAIN, 5, "b");
  list.tell(KSV_DAMAGE_CYCLE, 5, "c");
  EXPECT_EQ(list.told().size(), 2u);
  for (uint64_t i = 0; i < 20000; ++i) list.tell(KSV_DAMAGE_LINK, i, "d");
  EXPECT_EQ(list.told().size(), 10000u);
  EXPECT_EQ(list.untold(), 10002u);
}

}  // namespace
}  // namespace ksv_kit::documents
