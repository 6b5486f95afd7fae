// Reading and seeking in streams.
#include <algorithm>

#include "tests/ole/ole_file.h"

namespace ksv::test {
namespace {

constexpr uint32_t kFailed = 0xFFFFFFFF;

class CompoundStreams : public OleTest {
 protected:
  CompoundWriter writer_;
};

TEST_F(CompoundStreams, of_every_border_size_are_read_whole) {
  const size_t sizes[] = {0,    1,    63,   64,   65,   127,  128,  511,  512,  513,
                          1023, 1024, 1025, 2047, 2048, 4031, 4032, 4095, 4096, 4097,
                          4607, 4608, 4609, 8191, 8192, 8193, 9216, 9217};
  for (const bool backwards : {false, true}) {
    CompoundWriter writer;
    writer.backwards = backwards;
    for (const size_t size : sizes) {
      const std::string name = std::to_string(size);
      writer.addStream(0, std::u16string(name.begin(), name.end()),
                       pattern(size, static_cast<uint32_t>(size)));
    }
    const OleHandle file = open(writer.write());
    ASSERT_NE(file, nullptr);
    for (const size_t size : sizes) {
      EXPECT_EQ(contentOf(file.get(), std::to_string(size)),
                pattern(size, static_cast<uint32_t>(size)))
          << size;
    }
  }
}

TEST_F(CompoundStreams, of_the_cutoff_size_are_regular_and_of_one_byte_less_are_mini) {
  writer_.addStream(0, u"less", pattern(4095));
  writer_.addStream(0, u"cutoff", pattern(4096));
  std::string bytes = writer_.write();
  // Without a place for the mini stream, only the regular one is left.
  putDword(bytes, writer_.entryOffset(0) + 116, kNone);
  const OleHandle file = open(bytes);
  EXPECT_EQ(contentOf(file.get(), "less"), "none");
  EXPECT_EQ(contentOf(file.get(), "cutoff"), pattern(4096));
}

TEST_F(CompoundStreams, take_the_cutoff_of_the_header) {
  writer_.cutoff = 100;
  writer_.addStream(0, u"mini", pattern(99));
  writer_.addStream(0, u"regular", pattern(100));
  const OleHandle file = open(writer_.write());
  EXPECT_EQ(contentOf(file.get(), "mini"), pattern(99));
  EXPECT_EQ(contentOf(file.get(), "regular"), pattern(100));
}

TEST_F(CompoundStreams, that_are_empty_need_a_mini_stream_all_the_same) {
  writer_.addStream(0, u"empty", "");
  std::string bytes = writer_.write();
  EXPECT_EQ(contentOf(open(bytes).get(), "empty"), "");
  putDword(bytes, writer_.entryOffset(0) + 116, kNone);
  EXPECT_EQ(contentOf(open(bytes).get(), "empty"), "none");
}

TEST_F(CompoundStreams, read_nothing_when_nothing_is_asked_for) {
  writer_.addStream(0, u"s", "abc");
  const OleHandle file = open(writer_.write());
  const StreamHandle stream = openStream(file.get(), "s");
  char byte = 'x';
  EXPECT_EQ(KSV_2OLEreadStream(stream.get(), &byte, 0), 0u);
  EXPECT_EQ(KSV_2OLEreadStream(stream.get(), nullptr, 3), 0u);
  EXPECT_EQ(byte, 'x');
  EXPECT_EQ(read(stream.get(), 2), "ab");
  EXPECT_EQ(read(stream.get(), 2), "c");
  EXPECT_EQ(read(stream.get(), 2), "");
}

TEST_F(CompoundStreams, are_clamped_when_they_are_sought_beyond_their_end) {
  for (const uint32_t size : {100u, 5000u}) {
    CompoundWriter writer;
    writer.addStream(0, u"s", pattern(size));
    const OleHandle file = open(writer.write());
    const StreamHandle stream = openStream(file.get(), "s");
    EXPECT_EQ(KSV_2OLEseekStream(stream.get(), size + 1, 0), size);
    EXPECT_EQ(read(stream.get(), 1), "");
    EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 0x7FFFFFFF, 0), size);
    EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 0, 2), size);
    EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 1, 2), size);
  }
}

// The sum wraps at 2^32 and is a signed number then.
TEST_F(CompoundStreams, are_clamped_when_they_are_sought_before_their_start) {
  writer_.addStream(0, u"s", pattern(100));
  const OleHandle file = open(writer_.write());
  const StreamHandle stream = openStream(file.get(), "s");
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), static_cast<uint32_t>(-3), 2), 97u);
  EXPECT_EQ(read(stream.get(), 9), pattern(100).substr(97));
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), static_cast<uint32_t>(-101), 2), 0u);
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 0x80000000, 0), 0u);
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 50, 0), 50u);
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), static_cast<uint32_t>(-51), 1), 0u);
  EXPECT_EQ(read(stream.get(), 1), pattern(1));
}

TEST_F(CompoundStreams, move_from_where_the_caller_has_read_to) {
  writer_.addStream(0, u"s", pattern(5000));
  const OleHandle file = open(writer_.write());
  const StreamHandle stream = openStream(file.get(), "s");
  read(stream.get(), 10);
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 0, 1), 10u);
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 5, 1), 15u);
  EXPECT_EQ(read(stream.get(), 3), pattern(5000).substr(15, 3));
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 2000, 1), 2018u);
  EXPECT_EQ(read(stream.get(), 3), pattern(5000).substr(2018, 3));
}

TEST_F(CompoundStreams, know_three_origins) {
  writer_.addStream(0, u"s", pattern(100));
  const OleHandle file = open(writer_.write());
  const StreamHandle stream = openStream(file.get(), "s");
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 10, 0), 10u);
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 0, 3), kFailed);
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 0, 0xFFFF), kFailed);
  EXPECT_EQ(read(stream.get(), 1), pattern(100).substr(10, 1));
}

TEST_F(CompoundStreams, end_at_three_marks) {
  writer_.addStream(0, u"s", pattern(5000));
  std::string bytes = writer_.write();
  const size_t last = writer_.fatOffset(9);
  EXPECT_EQ(getDword(bytes, last), kEnd);
  for (const uint32_t end : {0xFFFFFFFEu, 0xFFFFFFFDu, 0xCFFFFFFEu}) {
    putDword(bytes, last, end);
    EXPECT_EQ(contentOf(open(bytes).get(), "s"), pattern(5000)) << end;
  }
  for (const uint32_t other : {0xFFFFFFFFu, 0xFFFFFFFCu, 0xCFFFFFFDu, 1000u, 0u, 9u, 8u}) {
    putDword(bytes, last, other);
    EXPECT_EQ(contentOf(open(bytes).get(), "s"), "none") << other;
  }
}

TEST_F(CompoundStreams, in_the_mini_stream_end_at_three_marks) {
  writer_.addStream(0, u"s", pattern(200));
  std::string bytes = writer_.write();
  const size_t last = writer_.miniFatOffset(3);
  EXPECT_EQ(getDword(bytes, last), kEnd);
  for (const uint32_t end : {0xFFFFFFFEu, 0xFFFFFFFDu, 0xCFFFFFFEu}) {
    putDword(bytes, last, end);
    EXPECT_EQ(contentOf(open(bytes).get(), "s"), pattern(200)) << end;
  }
  // 128 entries are in a sector of the table.
  for (const uint32_t other : {0xFFFFFFFFu, 0xFFFFFFFCu, 0xCFFFFFFDu, 128u, 0u, 3u}) {
    putDword(bytes, last, other);
    EXPECT_EQ(contentOf(open(bytes).get(), "s"), "none") << other;
  }
}

// Entries that the table lacks are zero: the chain goes back to the first mini sector.
TEST_F(CompoundStreams, in_the_mini_stream_may_lead_through_entries_that_are_filled_with_zero) {
  writer_.addStream(0, u"first", pattern(64));
  const uint32_t second = writer_.addStream(0, u"second", pattern(128, 7));
  std::string bytes = writer_.write();
  putDword(bytes, 64, 2);
  putDword(bytes, writer_.miniFatOffset(1), 200);
  const OleHandle file = open(bytes);
  ASSERT_NE(file, nullptr);
  // 1, 200, 0: the second mini sector lies beyond the mini stream.
  const StreamHandle stream = openStream(file.get(), "second");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(readAll(stream.get()), pattern(128, 7).substr(0, 64));
  // From the first mini sector the same way leads back to it.
  putDword(bytes, writer_.entryOffset(second) + 116, 200);
  putDword(bytes, writer_.miniFatOffset(0), 200);
  EXPECT_EQ(contentOf(open(bytes).get(), "second"), "none");
}

TEST_F(CompoundStreams, with_a_chain_shorter_than_their_size_end_with_it) {
  writer_.addStream(0, u"s", pattern(5000));
  std::string bytes = writer_.write();
  putDword(bytes, writer_.fatOffset(2), kEnd);
  const OleHandle file = open(bytes);
  const StreamHandle stream = openStream(file.get(), "s");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(readAll(stream.get()), pattern(5000).substr(0, 1536));
  // At the end of the chain the file is at its end; behind it there is no place.
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 1536, 0), 1536u);
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 2047, 0), 2047u);
  EXPECT_EQ(read(stream.get(), 1), "");
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 2048, 0), kFailed);
  EXPECT_EQ(read(stream.get(), 1), "");
  // The position has moved all the same.
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), static_cast<uint32_t>(-48), 1), 2000u);
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 1000, 0), 1000u);
  EXPECT_EQ(read(stream.get(), 5), pattern(5000).substr(1000, 5));
}

TEST_F(CompoundStreams, without_any_chain_open_but_hold_nothing) {
  const uint32_t s = writer_.addStream(0, u"s", pattern(5000));
  std::string bytes = writer_.write();
  putDword(bytes, writer_.entryOffset(s) + 116, kEnd);
  EXPECT_EQ(contentOf(open(bytes).get(), "s"), "");
  putDword(bytes, writer_.entryOffset(s) + 116, kNone);
  EXPECT_EQ(contentOf(open(bytes).get(), "s"), "none");
}

// The first sector is at a place that wraps to a negative one.
TEST_F(CompoundStreams, whose_first_byte_has_no_place_do_not_open) {
  const uint32_t s = writer_.addStream(0, u"s", pattern(5000));
  std::string bytes = writer_.write();
  // Its entry in the table is that of sector 9, its place 2^31 bytes and more on.
  putDword(bytes, writer_.entryOffset(s) + 116, 9 + 0x400000);
  EXPECT_EQ(contentOf(open(bytes).get(), "s"), "none");
  // 2^32 bytes on it is where it was.
  putDword(bytes, writer_.entryOffset(s) + 116, 9 + 0x800000);
  EXPECT_EQ(contentOf(open(bytes).get(), "s"), pattern(5000).substr(4608) + std::string(120, '\0'));
}

TEST_F(CompoundStreams, cut_by_the_end_of_the_file_deliver_what_is_there) {
  writer_.addStream(0, u"t", "mini");
  const uint32_t s = writer_.addStream(0, u"s", pattern(5000));
  std::string bytes = writer_.write();
  // One more sector, half of it there, as the only one of the stream: the first entry
  // of the table that is free ends its chain.
  const auto number = static_cast<uint32_t>(bytes.size() / 512 - 1);
  bytes += pattern(300, 9);
  putDword(bytes, writer_.fatOffset(number), kEnd);
  putDword(bytes, writer_.entryOffset(s) + 116, number);
  const OleHandle file = open(bytes);
  const StreamHandle stream = openStream(file.get(), "s");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(read(stream.get(), 100), pattern(300, 9).substr(0, 100));
  EXPECT_EQ(read(stream.get(), 5000), pattern(300, 9).substr(100));
  EXPECT_EQ(read(stream.get(), 5000), "");
}

TEST_F(CompoundStreams, in_a_mini_stream_that_is_too_short_end_with_it) {
  writer_.addStream(0, u"s", pattern(1500));
  std::string bytes = writer_.write();
  putDword(bytes, writer_.fatOffset(writer_.miniStreamSectors()[1]), kEnd);
  const OleHandle file = open(bytes);
  const StreamHandle stream = openStream(file.get(), "s");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(readAll(stream.get()), pattern(1500).substr(0, 1024));
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 1023, 0), 1023u);
  EXPECT_EQ(KSV_2OLEseekStream(stream.get(), 1200, 0), kFailed);
}

TEST_F(CompoundStreams, in_a_mini_stream_that_loops_end_where_it_does) {
  writer_.addStream(0, u"s", pattern(3000));
  std::string bytes = writer_.write();
  const auto& sectors = writer_.miniStreamSectors();
  putDword(bytes, writer_.fatOffset(sectors[3]), sectors[1]);
  EXPECT_EQ(contentOf(open(bytes).get(), "s"), pattern(3000).substr(0, 4 * 512));
  putDword(bytes, writer_.fatOffset(sectors[0]), sectors[0]);
  EXPECT_EQ(contentOf(open(bytes).get(), "s"), pattern(3000).substr(0, 512));
}

TEST_F(CompoundStreams, with_mini_sectors_larger_than_sectors_do_not_open) {
  writer_.addStream(0, u"mini", pattern(100));
  writer_.addStream(0, u"regular", pattern(5000));
  std::string bytes = writer_.write();
  putWord(bytes, 32, 10);
  const OleHandle file = open(bytes);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(contentOf(file.get(), "mini"), "none");
  EXPECT_EQ(contentOf(file.get(), "regular"), pattern(5000));
  putWord(bytes, 32, 9);
  EXPECT_EQ(contentOf(open(bytes).get(), "mini"), pattern(100));
}

// A list of so many sectors would not fit a block of 64 KB.
TEST_F(CompoundStreams, of_16383_sectors_and_more_are_read_whole) {
  for (const size_t sectors : {16382, 16383, 16384, 16385}) {
    CompoundWriter writer;
    const std::string content = pattern(sectors * 512 - 1);
    writer.addStream(0, u"s", content);
    const OleHandle file = open(writer.write());
    const StreamHandle stream = openStream(file.get(), "s");
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(readAll(stream.get()) == content) << sectors;
    const uint32_t near = 16382 * 512 - 5;
    EXPECT_EQ(KSV_2OLEseekStream(stream.get(), near, 0), near);
    EXPECT_EQ(read(stream.get(), 2000), content.substr(near, 2000));
  }
}

TEST_F(CompoundStreams, of_one_file_do_not_disturb_each_other) {
  writer_.addStream(0, u"a", pattern(3000, 1));
  writer_.addStream(0, u"b", pattern(9000, 2));
  const OleHandle file = open(writer_.write());
  const StreamHandle a = openStream(file.get(), "a");
  const StreamHandle b = openStream(file.get(), "b");
  std::string readA;
  std::string readB;
  for (int i = 0; i < 1000; ++i) {
    readA += read(a.get(), 7);
    readB += read(b.get(), 11);
  }
  EXPECT_EQ(readA, pattern(3000, 1));
  EXPECT_EQ(readB, pattern(9000, 2));
}

// Random reads and seeks against the bytes themselves.
TEST_F(CompoundStreams, agree_with_plain_memory_in_random_sequences) {
  Random random(testSeed());
  for (const uint32_t size : {1u, 100u, 1024u, 4095u, 4096u, 5000u, 70000u}) {
    for (const bool backwards : {false, true}) {
      CompoundWriter writer;
      writer.backwards = backwards;
      const std::string content = pattern(size);
      writer.addStream(0, u"before", pattern(777));
      writer.addStream(0, u"s", content);
      const OleHandle file = open(writer.write());
      const StreamHandle stream = openStream(file.get(), "s");
      ASSERT_NE(stream, nullptr);
      int64_t position = 0;
      for (int step = 0; step < 2000; ++step) {
        if (random() % 2 == 0) {
          const uint32_t count = random() % 8 == 0 ? random() % 5000 : random() % 100;
          const std::string expected = content.substr(static_cast<size_t>(position), count);
          ASSERT_EQ(read(stream.get(), count), expected) << size << " at " << position;
          position += static_cast<int64_t>(expected.size());
        } else {
          const uint16_t origin = static_cast<uint16_t>(random() % 3);
          const int32_t offset = static_cast<int32_t>(random() % (2 * size)) -
                                 static_cast<int32_t>(size / 2) - (origin == 2 ? 1 : 0);
          const int64_t base = origin == 0 ? 0 : origin == 1 ? position : size;
          position = std::clamp<int64_t>(base + offset, 0, size);
          ASSERT_EQ(KSV_2OLEseekStream(stream.get(), static_cast<uint32_t>(offset), origin),
                    static_cast<uint32_t>(position));
        }
      }
    }
  }
}

}  // namespace
}  // namespace ksv::test
