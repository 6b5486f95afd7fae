// Where a file that does not open is said to be wrong, and the names of entries as they
// stand in the file.
#include "ole/compound_file.h"
#include "tests/ole/ole_file.h"

namespace ksv::test {
namespace {

constexpr size_t kSectorShift = 30;
constexpr size_t kMiniSectorShift = 32;
constexpr size_t kFatCount = 44;
constexpr size_t kFirstDirectory = 48;
constexpr size_t kFirstMiniFat = 60;
constexpr size_t kMiniFatCount = 64;
constexpr size_t kFirstDifat = 68;
constexpr size_t kDifatCount = 72;
constexpr size_t kDifat = 76;

class CompoundFaults : public OleTest {
 protected:
  CompoundFaults() {
    small_ = writer_.addStream(0, u"small", "abc");
    for (int i = 0; i < 6; ++i)
      writer_.addStream(0, u"stream" + std::u16string(1, u'0' + char16_t(i)), "");
    bytes_ = writer_.write();
  }

  // The offset of what is wrong; -1 when the file opens.
  int64_t faultOf(const std::string& bytes) {
    CompoundFault fault;
    const std::string path = writeNext(bytes);
    if (CompoundFile::open(path.c_str(), fault) != nullptr) return -1;
    EXPECT_NE(fault.reason, nullptr);
    return fault.offset;
  }
  int64_t faultWithDword(size_t at, uint32_t value) {
    std::string bytes = bytes_;
    putDword(bytes, at, value);
    return faultOf(bytes);
  }
  int64_t faultWithWord(size_t at, uint32_t value) {
    std::string bytes = bytes_;
    putWord(bytes, at, value);
    return faultOf(bytes);
  }
  int64_t directoryOffset(size_t number) const {
    return static_cast<int64_t>(writer_.offsetOf(writer_.directorySectors()[number]));
  }

  CompoundWriter writer_;
  std::string bytes_;
  uint32_t small_ = 0;
};

TEST_F(CompoundFaults, of_a_file_that_opens_are_none) { EXPECT_EQ(faultOf(bytes_), -1); }

TEST_F(CompoundFaults, of_a_missing_file_have_no_reason) {
  CompoundFault fault;
  EXPECT_EQ(CompoundFile::open("missing", fault), nullptr);
  EXPECT_EQ(fault.reason, nullptr);
}

TEST_F(CompoundFaults, stand_at_the_field_of_the_header) {
  EXPECT_EQ(faultOf("text"), 0);
  EXPECT_EQ(faultOf(bytes_.substr(0, 100)), 100);
  EXPECT_EQ(faultWithWord(kSectorShift, 20), 30);
  EXPECT_EQ(faultWithWord(kMiniSectorShift, 20), 32);
  EXPECT_EQ(faultWithDword(kFatCount, 0x7FFFFFFF), 44);
  EXPECT_EQ(faultWithDword(kFirstDirectory, kEnd), 48);
  EXPECT_EQ(faultWithDword(kFirstDirectory, 1000), 48);
  EXPECT_EQ(faultWithDword(kFirstMiniFat, 1000), 60);
  EXPECT_EQ(faultWithDword(kFirstMiniFat, kNone), 60);
  EXPECT_EQ(faultWithDword(kMiniFatCount, 0x7FFFFFFF), 64);
  EXPECT_EQ(faultWithDword(kDifat, 1000), 76) << "the first sector of the table";
}

TEST_F(CompoundFaults, stand_at_the_list_that_names_no_more_sectors) {
  std::string bytes = bytes_;
  for (size_t i = 0; i < 109; ++i) putDword(bytes, kDifat + 4 * i, writer_.fatSectors()[0]);
  putDword(bytes, kFatCount, 110);
  putDword(bytes, kFirstDifat, kEnd);
  EXPECT_EQ(faultOf(bytes), 68);
  putDword(bytes, kFirstDifat, 0);
  putDword(bytes, kDifatCount, 0);
  EXPECT_EQ(faultOf(bytes), 72);
  putDword(bytes, kFirstDifat, 1000);
  putDword(bytes, kDifatCount, 1);
  EXPECT_EQ(faultOf(bytes), 68);
}

TEST_F(CompoundFaults, of_a_table_that_the_header_names_whole_are_none) {
  std::string bytes = bytes_;
  for (size_t i = 0; i < 109; ++i) putDword(bytes, kDifat + 4 * i, writer_.fatSectors()[0]);
  putDword(bytes, kFatCount, 109);
  putDword(bytes, kFirstDifat, kEnd);
  EXPECT_EQ(faultOf(bytes), -1);
  for (const size_t number : {size_t{1}, size_t{108}}) {
    std::string damaged = bytes;
    putDword(damaged, kDifat + 4 * number, 1000);
    EXPECT_EQ(faultOf(damaged), static_cast<int64_t>(kDifat + 4 * number));
  }
}

TEST_F(CompoundFaults, of_sectors_as_large_as_the_file_stand_at_the_first_of_them) {
  std::string bytes = bytes_.substr(0, 1024);
  putWord(bytes, kSectorShift, 10);
  EXPECT_EQ(faultOf(bytes), 76);
  putWord(bytes, kSectorShift, 11);
  EXPECT_EQ(faultOf(bytes), 30);
}

TEST_F(CompoundFaults, of_sectors_of_2_GB_stand_at_their_size_in_a_file_of_any) {
  std::string bytes = bytes_;
  putWord(bytes, kSectorShift, 31);
  const std::string path = writeNext(bytes);
  std::filesystem::resize_file(path, (uintmax_t{1} << 32) + 512);
  CompoundFault fault;
  EXPECT_EQ(CompoundFile::open(path.c_str(), fault), nullptr);
  EXPECT_EQ(fault.offset, 30);
}

TEST_F(CompoundFaults, stand_at_the_last_good_sector_of_a_chain) {
  ASSERT_GE(writer_.directorySectors().size(), 2u);
  const uint32_t first = writer_.directorySectors()[0];
  EXPECT_EQ(faultWithDword(writer_.fatOffset(first), 1000), directoryOffset(0));
  EXPECT_EQ(faultWithDword(writer_.fatOffset(first), kNone), directoryOffset(0));
  const uint32_t second = writer_.directorySectors()[1];
  EXPECT_EQ(faultWithDword(writer_.fatOffset(second), 1000), directoryOffset(1));
  const uint32_t mini = writer_.miniFatSectors()[0];
  EXPECT_EQ(faultWithDword(writer_.fatOffset(mini), 1000),
            static_cast<int64_t>(writer_.offsetOf(mini)));
}

TEST_F(CompoundFaults, stand_at_the_entry) {
  const auto entry = static_cast<int64_t>(writer_.entryOffset(small_));
  EXPECT_EQ(faultWithWord(writer_.entryOffset(small_) + 64, 128), entry) << "a name of 128 bytes";
  EXPECT_EQ(faultWithWord(writer_.entryOffset(small_) + 64, 127), -1);
  std::string bytes = bytes_;
  const size_t root = writer_.entryOffset(0);
  bytes[root] = 'X';
  bytes[root + 66] = 1;
  EXPECT_EQ(faultOf(bytes), static_cast<int64_t>(root)) << "without a root";
}

TEST_F(CompoundFaults, of_the_names_of_entries_are_none) {
  const std::u16string longest(31, u'表');
  const std::u16string all(32, u'n');
  CompoundWriter writer;
  const uint32_t ascii = writer.addStream(0, u"small", "abc");
  const uint32_t japanese = writer.addStream(0, longest, "abc");
  const uint32_t unended = writer.addStream(0, u"x", "abc");
  std::string bytes = writer.write();
  const std::string units = words(all);
  bytes.replace(writer.entryOffset(unended), units.size(), units);
  CompoundFault fault;
  const auto file = CompoundFile::open(writeNext(bytes).c_str(), fault);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->nameOf(writer.entryId(ascii)), u"small");
  EXPECT_EQ(file->nameOf(writer.entryId(japanese)), longest);
  EXPECT_EQ(file->nameOf(writer.entryId(unended)), all);
}

}  // namespace
}  // namespace ksv::test
