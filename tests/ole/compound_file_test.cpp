// What opens and what does not.
#include "tests/ole/ole_file.h"

namespace ksv::test {
namespace {

constexpr size_t kFatCount = 44;
constexpr size_t kFirstDirectory = 48;
constexpr size_t kMiniFatStart = 60;
constexpr size_t kMiniFatCount = 64;
constexpr size_t kDifatStart = 68;
constexpr size_t kDifatCount = 72;

class CompoundFileOpening : public OleTest {
 protected:
  CompoundFileOpening() {
    writer_.addStream(0, u"small", "abc");
    writer_.addStream(0, u"large", pattern(5000));
    bytes_ = writer_.write();
  }

  bool opensWithDword(size_t at, uint32_t value) {
    std::string bytes = bytes_;
    putDword(bytes, at, value);
    return opens(bytes);
  }
  bool opensWithWord(size_t at, uint32_t value) {
    std::string bytes = bytes_;
    putWord(bytes, at, value);
    return opens(bytes);
  }

  CompoundWriter writer_;
  std::string bytes_;
};

TEST_F(CompoundFileOpening, reads_a_file_with_a_small_and_a_large_stream) {
  const OleHandle file = open(bytes_);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(contentOf(file.get(), "small"), "abc");
  EXPECT_EQ(contentOf(file.get(), "large"), pattern(5000));
}

TEST_F(CompoundFileOpening, needs_a_file_and_its_signature) {
  EXPECT_EQ(KSV_2OLEopen(nullptr), nullptr);
  EXPECT_EQ(KSV_2OLEopen("missing"), nullptr);
  EXPECT_EQ(KSV_2OLEopen("."), nullptr);
  EXPECT_FALSE(opens(""));
  for (size_t i = 0; i < 8; ++i) {
    std::string bytes = bytes_;
    bytes[i] = static_cast<char>(bytes[i] ^ 1);
    EXPECT_FALSE(opens(bytes)) << i;
  }
}

TEST_F(CompoundFileOpening, takes_a_name_beyond_ascii) {
  writeFile("文書", bytes_);
  const OleHandle file(KSV_2OLEopen("文書"));
  EXPECT_NE(file, nullptr);
}

TEST_F(CompoundFileOpening, fails_wherever_the_file_is_cut_before_its_tables_end) {
  // The sector table comes last.
  for (size_t size = 0; size < bytes_.size(); size += size < 512 ? 1 : 64) {
    EXPECT_FALSE(opens(bytes_.substr(0, size))) << size;
  }
  EXPECT_FALSE(opens(bytes_.substr(0, bytes_.size() - 1)));
  EXPECT_TRUE(opens(bytes_ + "x"));
}

TEST_F(CompoundFileOpening, does_not_mind_versions_and_unused_fields) {
  for (const size_t at : {size_t{8}, size_t{20}, size_t{24}, size_t{26}, size_t{28}, size_t{34},
                          size_t{40}, size_t{52}}) {
    EXPECT_TRUE(opensWithWord(at, 0xABCD)) << at;
  }
}

TEST_F(CompoundFileOpening, fails_when_sectors_are_larger_than_the_file) {
  ASSERT_LT(bytes_.size(), 1u << 13);
  ASSERT_GT(bytes_.size(), 1u << 12);
  for (const uint32_t shift : {13, 20, 30, 31, 32, 41, 64, 256 + 9, 0xFFFF}) {
    EXPECT_FALSE(opensWithWord(30, shift)) << shift;
    EXPECT_FALSE(opensWithWord(32, shift)) << shift;
  }
  EXPECT_TRUE(opensWithWord(32, 12));
  EXPECT_TRUE(opensWithWord(32, 0));
}

TEST_F(CompoundFileOpening, fails_when_sectors_hold_no_entry) {
  for (uint32_t shift = 0; shift < 7; ++shift) EXPECT_FALSE(opensWithWord(30, shift)) << shift;
}

TEST_F(CompoundFileOpening, fails_when_the_table_has_more_sectors_than_the_file_bytes) {
  const auto size = static_cast<uint32_t>(bytes_.size());
  EXPECT_FALSE(opensWithDword(kFatCount, size + 1));
  EXPECT_FALSE(opensWithDword(kFatCount, 0xFFFFFFFF));
  EXPECT_FALSE(opensWithDword(kFatCount, 0x80000000));
  EXPECT_FALSE(opensWithDword(kFatCount, 0));
}

TEST_F(CompoundFileOpening, fails_when_a_sector_of_the_table_is_not_there) {
  for (const uint32_t sector : {1000u, 0x7FFFFFu, 0xFFFFFFFEu}) {
    EXPECT_FALSE(opensWithDword(76, sector)) << sector;
  }
  // The place is a 32-bit number: 0x800000 sectors of 512 bytes on, it is the same.
  EXPECT_TRUE(opensWithDword(76, getDword(bytes_, 76) + 0x800000));
}

TEST_F(CompoundFileOpening, asks_a_table_of_110_sectors_for_the_list_of_the_rest) {
  std::string bytes = bytes_ + std::string(512, '\0');
  putDword(bytes, kFatCount, 110);
  for (size_t i = 0; i < 109; ++i) putDword(bytes, 76 + 4 * i, getDword(bytes, 76));
  const auto list = static_cast<uint32_t>(bytes_.size() / 512 - 1);
  putDword(bytes, bytes_.size(), getDword(bytes, 76));
  for (const uint32_t none : {0xFFFFFFFEu, 0xFFFFFFFDu, 0xFFFFFFFCu, 0xFFFFFFFFu, list + 1}) {
    putDword(bytes, kDifatStart, none);
    putDword(bytes, kDifatCount, 1);
    EXPECT_FALSE(opens(bytes)) << none;
  }
  putDword(bytes, kDifatStart, list);
  EXPECT_TRUE(opens(bytes));
  putDword(bytes, kDifatCount, 0);
  EXPECT_FALSE(opens(bytes));
  putDword(bytes, kDifatCount, 0xFFFFFFFF);
  EXPECT_TRUE(opens(bytes));
}

// Every entry of a list sector but the last names a sector of the table; the last leads
// to the next list sector, even back to the same one.
TEST_F(CompoundFileOpening, follows_a_list_to_where_all_sectors_are_named) {
  const uint32_t fatSector = getDword(bytes_, 76);
  std::string bytes = bytes_ + std::string(1024, '\0');
  const auto list = static_cast<uint32_t>(bytes_.size() / 512 - 1);
  for (size_t i = 0; i < 109; ++i) putDword(bytes, 76 + 4 * i, fatSector);
  for (size_t i = 0; i < 256; ++i) putDword(bytes, bytes_.size() + 4 * i, fatSector);
  putDword(bytes, kDifatStart, list);
  putDword(bytes, kDifatCount, 1);
  const size_t lastEntry = bytes_.size() + 4 * 127;
  putDword(bytes, lastEntry, 0xFFFFFFFE);
  putDword(bytes, kFatCount, 109 + 127);
  EXPECT_TRUE(opens(bytes));
  putDword(bytes, kFatCount, 109 + 128);
  EXPECT_FALSE(opens(bytes));
  putDword(bytes, lastEntry, list + 1);
  EXPECT_TRUE(opens(bytes));
  putDword(bytes, lastEntry, list);
  EXPECT_TRUE(opens(bytes));
  putDword(bytes, kFatCount, 109 + 127 * 7 + 3);
  EXPECT_TRUE(opens(bytes));
  putDword(bytes, bytes_.size() + 4 * 126, list + 100);
  EXPECT_FALSE(opens(bytes));
}

TEST_F(CompoundFileOpening, reads_a_table_of_more_than_109_sectors) {
  writer_.addStream(0, u"very large", pattern(110 * 128 * 512));
  const OleHandle file = open(writer_.write());
  ASSERT_NE(file, nullptr);
  EXPECT_GT(writer_.fatSectors().size(), 109u);
  EXPECT_EQ(writer_.difatSectors().size(), 1u);
  EXPECT_EQ(contentOf(file.get(), "small"), "abc");
  EXPECT_TRUE(contentOf(file.get(), "very large") == pattern(110 * 128 * 512));
}

TEST_F(CompoundFileOpening, fails_when_the_directory_chain_points_to_itself) {
  const uint32_t sector = writer_.directorySectors().front();
  EXPECT_FALSE(opensWithDword(writer_.fatOffset(sector), sector));
}

TEST_F(CompoundFileOpening, fails_when_the_directory_chain_does_not_end) {
  const uint32_t sector = writer_.directorySectors().front();
  // Two sectors that lead to each other; the table's own sector is not read as one.
  std::string bytes = bytes_;
  putDword(bytes, writer_.fatOffset(sector), 0);
  putDword(bytes, writer_.fatOffset(0), sector);
  EXPECT_FALSE(opens(bytes));
  for (const uint32_t end :
       {0xFFFFFFFFu, 0xFFFFFFFDu, 0xFFFFFFFCu, 0xCFFFFFFEu, 0x80000000u, 0x7FFFFFFFu, 1000u}) {
    EXPECT_FALSE(opensWithDword(writer_.fatOffset(sector), end)) << end;
  }
}

TEST_F(CompoundFileOpening, fails_without_a_directory) {
  for (const uint32_t sector : {0xFFFFFFFEu, 0xFFFFFFFFu, 0xFFFFFFFDu, 0x80000000u, 1000u}) {
    EXPECT_FALSE(opensWithDword(kFirstDirectory, sector)) << sector;
  }
  const uint32_t wrapped = writer_.directorySectors().front() + 0x800000;
  EXPECT_TRUE(opensWithDword(kFirstDirectory, wrapped));
}

TEST_F(CompoundFileOpening, fills_a_mini_table_that_is_shorter_than_declared) {
  EXPECT_EQ(writer_.miniFatSectors().size(), 1u);
  EXPECT_TRUE(opensWithDword(kMiniFatCount, 2));
  EXPECT_TRUE(opensWithDword(kMiniFatCount, 0x3FFFFF));
  EXPECT_FALSE(opensWithDword(kMiniFatCount, 0x400000));
  EXPECT_FALSE(opensWithDword(kMiniFatCount, 0xFFFFFFFF));
  EXPECT_TRUE(opensWithDword(kMiniFatStart, 0xFFFFFFFE));
}

TEST_F(CompoundFileOpening, fails_when_the_mini_table_is_longer_than_declared_or_broken) {
  const uint32_t sector = writer_.miniFatSectors().front();
  for (const uint32_t next : {0u, sector, 0xFFFFFFFFu, 0xFFFFFFFDu, 0xCFFFFFFEu, 1000u}) {
    EXPECT_FALSE(opensWithDword(writer_.fatOffset(sector), next)) << next;
  }
  for (const uint32_t first : {0xFFFFFFFFu, 0xFFFFFFFDu, 0xFFFFFFFCu, 1000u}) {
    EXPECT_FALSE(opensWithDword(kMiniFatStart, first)) << first;
  }
  std::string bytes = bytes_;
  putDword(bytes, writer_.fatOffset(sector), sector);
  putDword(bytes, kMiniFatCount, 0x3FFFFF);
  EXPECT_FALSE(opens(bytes));
  // Nobody looks at the chain of a table that has no sectors.
  putDword(bytes, kMiniFatCount, 0);
  EXPECT_TRUE(opens(bytes));
}

TEST_F(CompoundFileOpening, finds_the_root_by_name_or_by_type) {
  const size_t root = writer_.entryOffset(0);
  std::string bytes = bytes_;
  bytes[root + 66] = 1;
  EXPECT_TRUE(opens(bytes));  // by its name
  bytes[root] = 'r';
  EXPECT_FALSE(opens(bytes));
  bytes[root + 66] = 5;
  EXPECT_TRUE(opens(bytes));  // by its type
}

TEST_F(CompoundFileOpening, fails_when_the_root_is_empty) {
  EXPECT_FALSE(opensWithDword(writer_.entryOffset(0) + 76, 0xFFFFFFFF));
  EXPECT_TRUE(opensWithDword(writer_.entryOffset(0) + 76, 0xFFFFFFFE));
}

TEST_F(CompoundFileOpening, fails_when_no_entry_is_in_use) {
  std::string bytes = bytes_;
  for (uint32_t node = 0; node < 3; ++node) putWord(bytes, writer_.entryOffset(node) + 64, 0);
  EXPECT_FALSE(opens(bytes));
}

// The root is looked for among the first slots, as many as entries are in use, and one.
TEST_F(CompoundFileOpening, looks_for_the_root_no_further_than_entries_are_in_use) {
  for (const bool isFound : {true, false}) {
    CompoundWriter writer;
    writer.addStream(0, u"a", "abc");
    std::string bytes = writer.write();
    const size_t directory = writer.entryOffset(0);
    const std::string entries = bytes.substr(directory, 256);
    bytes.replace(directory, 512, std::string(512, '\0'));
    // Two entries in use: slots 0 to 2 are looked at.
    const size_t slot = isFound ? 2 : 3;
    bytes.replace(directory + slot * 128, 128, entries, 0, 128);
    bytes.replace(directory + 128, 128, entries, 128, 128);
    EXPECT_EQ(opens(bytes), isFound);
  }
}

TEST_F(CompoundFileOpening, fails_on_a_name_that_leaves_its_entry) {
  const size_t length = writer_.entryOffset(1) + 64;
  EXPECT_TRUE(opensWithWord(length, 127));
  EXPECT_FALSE(opensWithWord(length, 128));
  EXPECT_FALSE(opensWithWord(length, 0xFFFF));
  // Not when the entry is not in use.
  std::string bytes = bytes_;
  putWord(bytes, length, 0xFFFF);
  bytes[length + 2] = 0;
  EXPECT_TRUE(opens(bytes));
}

TEST_F(CompoundFileOpening, reads_sectors_of_other_sizes) {
  for (const uint16_t shift :
       std::initializer_list<uint16_t>{uint16_t{10}, uint16_t{12}, uint16_t{13}}) {
    CompoundWriter writer;
    writer.sectorShift = shift;
    writer.addStream(0, u"small", "abc");
    writer.addStream(0, u"large", pattern(100000));
    const OleHandle file = open(writer.write());
    ASSERT_NE(file, nullptr) << shift;
    EXPECT_EQ(contentOf(file.get(), "small"), "abc");
    EXPECT_EQ(contentOf(file.get(), "large"), pattern(100000));
  }
}

// A sector of 128 bytes counts as 128 entries all the same: 32 of them are there.
TEST_F(CompoundFileOpening, has_32_of_128_entries_in_a_sector_of_128_bytes) {
  CompoundWriter writer;
  writer.sectorShift = 7;
  writer.addStream(0, u"large", pattern(4096));
  const std::string bytes = writer.write();
  EXPECT_GT(writer.directorySectors().front(), 31u);
  EXPECT_FALSE(opens(bytes));
  CompoundWriter few;
  few.sectorShift = 7;
  few.cutoff = 0;
  few.addStream(0, u"large", pattern(1024));
  const OleHandle file = open(few.write());
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(contentOf(file.get(), "large"), pattern(1024));
}

}  // namespace
}  // namespace ksv::test
