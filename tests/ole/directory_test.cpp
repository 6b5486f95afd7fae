// How entries are named and found.
#include "tests/ole/ole_file.h"

namespace ksv::test {
namespace {

class DirectoryEntries : public OleTest {
 protected:
  std::string write() { return bytes_ = writer_.write(); }
  void setLinks(uint32_t node, uint32_t left, uint32_t right) {
    putDword(bytes_, writer_.entryOffset(node) + 68, left);
    putDword(bytes_, writer_.entryOffset(node) + 72, right);
  }
  void setRootChild(uint32_t id) { putDword(bytes_, writer_.entryOffset(0) + 76, id); }

  CompoundWriter writer_;
  std::string bytes_;
};

TEST_F(DirectoryEntries, tell_storages_apart_by_case_but_not_streams) {
  writer_.addStorage(0, u"abc");
  writer_.addStream(0, u"def", "content");
  const OleHandle file = open(write());
  EXPECT_NE(openStorage(file.get(), "abc"), nullptr);
  EXPECT_EQ(openStorage(file.get(), "ABC"), nullptr);
  EXPECT_EQ(contentOf(file.get(), "DEF"), "content");
  EXPECT_EQ(contentOf(file.get(), "dEf"), "content");
  EXPECT_EQ(contentOf(file.get(), "deg"), "none");
}

TEST_F(DirectoryEntries, are_named_in_shift_jis) {
  writer_.addStorage(0, u"書庫");
  writer_.addStream(0, u"表計算ｱ", "content");
  const OleHandle file = open(write());
  EXPECT_NE(openStorage(file.get(), "\x8F\x91\x8C\xC9"), nullptr);
  EXPECT_EQ(contentOf(file.get(), "\x95\x5C\x8C\x76\x8E\x5A\xB1"), "content");
}

// U+0141 and U+2460 are not in Shift_JIS; control characters map to nothing.
TEST_F(DirectoryEntries, have_the_low_byte_of_what_shift_jis_lacks) {
  writer_.addStream(0, u"a\u0141\u2460\u0005", "content");
  const OleHandle file = open(write());
  EXPECT_EQ(contentOf(file.get(), "aA`\x05"), "content");
}

TEST_F(DirectoryEntries, end_at_a_low_byte_of_zero) {
  writer_.addStream(0, u"ab\u0100cd", "content");
  const OleHandle file = open(write());
  EXPECT_EQ(contentOf(file.get(), "ab"), "content");
}

TEST_F(DirectoryEntries, may_have_names_of_31_characters) {
  const std::u16string name = u"一二三四五六七八九十一二三四五六七八九十一二三四五六七八九十終";
  ASSERT_EQ(name.size(), 31u);
  writer_.addStream(0, name, "content");
  const OleHandle file = open(write());
  std::string encoded;
  for (int i = 0; i < 3; ++i) {
    encoded += "\x88\xEA\x93\xF1\x8E\x4F\x8E\x6C\x8C\xDC\x98\x5A\x8E\xB5\x94\xAA\x8B\xE3\x8F\x5C";
  }
  encoded += "\x8F\x49";
  EXPECT_EQ(encoded.size(), 62u);
  EXPECT_EQ(contentOf(file.get(), encoded), "content");
}

// One unit more is read than the length tells, which counts the terminator.
TEST_F(DirectoryEntries, are_named_by_one_unit_more_than_their_length) {
  const uint32_t node = writer_.addStream(0, u"abcdef", "content");
  write();
  putWord(bytes_, writer_.entryOffset(node) + 64, 4);
  OleHandle file = open(bytes_);
  EXPECT_EQ(contentOf(file.get(), "abc"), "content");
  putWord(bytes_, writer_.entryOffset(node) + 64, 5);
  file = open(bytes_);
  EXPECT_EQ(contentOf(file.get(), "abc"), "content");
  putWord(bytes_, writer_.entryOffset(node) + 64, 1);
  file = open(bytes_);
  EXPECT_EQ(contentOf(file.get(), "a"), "content");
}

// With 32 characters and no terminator the length and the type are characters too: 0x0042
// ("B") and 0x0102, whose low byte is 2; then the left sibling, which is FFFFFFFF.
TEST_F(DirectoryEntries, are_named_by_what_follows_a_name_that_is_too_long) {
  const uint32_t node = writer_.addStream(0, std::u16string(31, u'x'), "content");
  write();
  putWord(bytes_, writer_.entryOffset(node) + 62, 'y');
  putWord(bytes_, writer_.entryOffset(node) + 64, 66);
  const OleHandle file = open(bytes_);
  EXPECT_EQ(contentOf(file.get(), std::string(31, 'x') + "yB\x02"), "content");
}

TEST_F(DirectoryEntries, are_found_in_storages_in_storages) {
  const uint32_t outer = writer_.addStorage(0, u"outer");
  const uint32_t inner = writer_.addStorage(outer, u"inner");
  writer_.addStream(inner, u"stream", "deep");
  writer_.addStream(0, u"stream", "shallow");
  const OleHandle file = open(write());
  EXPECT_EQ(openStorage(file.get(), "inner"), nullptr);
  const StorageHandle outerStorage = openStorage(file.get(), "outer");
  ASSERT_NE(outerStorage, nullptr);
  EXPECT_EQ(contentOf(outerStorage.get(), "stream"), "none");
  const StorageHandle innerStorage = openStorage(outerStorage.get(), "inner");
  ASSERT_NE(innerStorage, nullptr);
  EXPECT_EQ(contentOf(innerStorage.get(), "stream"), "deep");
  EXPECT_EQ(contentOf(file.get(), "stream"), "shallow");
}

TEST_F(DirectoryEntries, are_found_in_trees_of_every_shape) {
  for (const TreeShape shape :
       {TreeShape::kBalanced, TreeShape::kLeftChain, TreeShape::kRightChain}) {
    CompoundWriter writer;
    writer.shape = shape;
    for (char16_t c = u'a'; c <= u'z'; ++c) {
      writer.addStream(0, std::u16string(1, c), std::string(1, static_cast<char>(c)));
    }
    const OleHandle file = open(writer.write());
    for (char c = 'a'; c <= 'z'; ++c) {
      EXPECT_EQ(contentOf(file.get(), std::string(1, c)), std::string(1, c));
    }
  }
}

std::u16string numbered(uint32_t number) {
  const std::string text = "s" + std::to_string(number);
  return {text.begin(), text.end()};
}

// A stream is looked for 256 levels deep, a storage as deep as it takes.
TEST_F(DirectoryEntries, are_found_down_to_level_256) {
  for (const TreeShape shape : {TreeShape::kLeftChain, TreeShape::kRightChain}) {
    CompoundWriter writer;
    writer.shape = shape;
    for (uint32_t i = 1; i <= 257; ++i) writer.addStream(0, numbered(i), "x");
    const OleHandle file = open(writer.write());
    EXPECT_NE(openStream(file.get(), "s1"), nullptr);
    EXPECT_NE(openStream(file.get(), "s256"), nullptr);
    EXPECT_EQ(openStream(file.get(), "s257"), nullptr);
    EXPECT_NE(openStorage(file.get(), "s257"), nullptr);
  }
}

TEST_F(DirectoryEntries, beyond_level_256_fail_a_search_that_comes_to_them_first) {
  CompoundWriter writer;
  writer.shape = TreeShape::kLeftChain;
  for (uint32_t i = 1; i <= 257; ++i) writer.addStream(0, numbered(i), "x");
  const uint32_t last = writer.addStream(0, u"last", "y");
  std::string bytes = writer.write();
  // "last" hangs on the right of the first instead of under level 257.
  putDword(bytes, writer.entryOffset(257) + 68, kNone);
  putDword(bytes, writer.entryOffset(1) + 72, writer.entryId(last));
  EXPECT_EQ(contentOf(open(bytes).get(), "last"), "none");
  putDword(bytes, writer.entryOffset(256) + 68, kNone);
  EXPECT_EQ(contentOf(open(bytes).get(), "last"), "y");
}

TEST_F(DirectoryEntries, in_a_cycle_fail_a_stream_but_not_a_storage) {
  const uint32_t a = writer_.addStream(0, u"a", "1");
  const uint32_t b = writer_.addStream(0, u"b", "2");
  const uint32_t c = writer_.addStream(0, u"c", "3");
  write();
  setRootChild(a);
  setLinks(a, b, c);
  setLinks(b, a, kNone);
  setLinks(c, kNone, kNone);
  const OleHandle file = open(bytes_);
  EXPECT_EQ(contentOf(file.get(), "a"), "1");
  EXPECT_EQ(contentOf(file.get(), "b"), "2");
  EXPECT_EQ(contentOf(file.get(), "c"), "none");
  EXPECT_NE(openStorage(file.get(), "c"), nullptr);
  EXPECT_EQ(openStorage(file.get(), "d"), nullptr);
}

TEST_F(DirectoryEntries, that_point_to_themselves_are_a_cycle) {
  const uint32_t a = writer_.addStream(0, u"a", "1");
  write();
  setRootChild(a);
  setLinks(a, a, a);
  const OleHandle file = open(bytes_);
  EXPECT_EQ(contentOf(file.get(), "a"), "1");
  EXPECT_EQ(contentOf(file.get(), "b"), "none");
  EXPECT_EQ(openStorage(file.get(), "b"), nullptr);
}

TEST_F(DirectoryEntries, that_are_not_there_fail_a_stream_but_not_a_storage) {
  const uint32_t a = writer_.addStream(0, u"a", "1");
  const uint32_t b = writer_.addStream(0, u"b", "2");
  write();
  setRootChild(a);
  for (const uint32_t outside : {8u, 1000u, 0xFFFFFFFEu, 0x80000000u}) {
    setLinks(a, outside, b);
    setLinks(b, kNone, kNone);
    const OleHandle file = open(bytes_);
    EXPECT_EQ(contentOf(file.get(), "a"), "1");
    EXPECT_EQ(contentOf(file.get(), "b"), "none") << outside;
    EXPECT_NE(openStorage(file.get(), "b"), nullptr) << outside;
  }
}

// An entry that is not in use is all zeroes: its siblings are entry 0, the root.
TEST_F(DirectoryEntries, that_are_not_in_use_have_no_name_and_lead_to_the_first) {
  const uint32_t a = writer_.addStream(0, u"a", "1");
  const uint32_t b = writer_.addStream(0, u"b", "2");
  write();
  setRootChild(a);
  setLinks(a, 3, b);
  setLinks(b, kNone, kNone);
  OleHandle file = open(bytes_);
  // 3 leads to 0, which leads nowhere, twice.
  EXPECT_EQ(contentOf(file.get(), "b"), "2");
  EXPECT_NE(openStorage(file.get(), ""), nullptr);
  EXPECT_EQ(contentOf(file.get(), ""), "none");
  // The root's own sibling closes a cycle.
  putDword(bytes_, writer_.entryOffset(0) + 68, 3);
  file = open(bytes_);
  EXPECT_EQ(contentOf(file.get(), "b"), "none");
}

// As many slots are looked at for a storage as entries are in use, and one.
TEST_F(DirectoryEntries, behind_the_number_in_use_are_absent_for_a_storage) {
  for (const uint32_t unused : {1u, 2u}) {
    CompoundWriter writer;
    writer.unusedEntries = unused;
    writer.addStream(0, u"a", "1");
    const OleHandle file = open(writer.write());
    EXPECT_EQ(contentOf(file.get(), "a"), "1");
    // Two in use: slots 0 to 2.
    EXPECT_EQ(openStorage(file.get(), "a") != nullptr, unused == 1) << unused;
  }
}

TEST_F(DirectoryEntries, may_be_opened_as_storages_whatever_they_are) {
  const uint32_t a = writer_.addStream(0, u"a", "1");
  const uint32_t b = writer_.addStream(0, u"b", "2");
  write();
  setRootChild(a);
  setLinks(a, kNone, kNone);
  putDword(bytes_, writer_.entryOffset(a) + 76, b);
  setLinks(b, kNone, kNone);
  const OleHandle file = open(bytes_);
  const StorageHandle storage = openStorage(file.get(), "a");
  ASSERT_NE(storage, nullptr);
  EXPECT_EQ(contentOf(storage.get(), "b"), "2");
}

TEST_F(DirectoryEntries, of_a_stream_s_name_that_are_no_stream_hide_it) {
  const uint32_t a = writer_.addStorage(0, u"NAME");
  const uint32_t b = writer_.addStream(0, u"name", "2");
  write();
  setRootChild(a);
  setLinks(a, kNone, b);
  setLinks(b, kNone, kNone);
  EXPECT_EQ(contentOf(open(bytes_).get(), "name"), "none");
  setRootChild(b);
  setLinks(a, kNone, kNone);
  setLinks(b, kNone, a);
  EXPECT_EQ(contentOf(open(bytes_).get(), "NAME"), "2");
}

TEST_F(DirectoryEntries, are_found_first_in_the_node_then_left_then_right) {
  const uint32_t right = writer_.addStream(0, u"Same", "right");
  const uint32_t left = writer_.addStream(0, u"same", "left");
  const uint32_t top = writer_.addStream(0, u"top", "top");
  write();
  setRootChild(top);
  setLinks(top, left, right);
  setLinks(left, kNone, kNone);
  setLinks(right, kNone, kNone);
  EXPECT_EQ(contentOf(open(bytes_).get(), "SAME"), "left");
  setLinks(top, kNone, right);
  setLinks(right, left, kNone);
  EXPECT_EQ(contentOf(open(bytes_).get(), "SAME"), "right");
}

// Searched once, a subtree counts by its depth wherever else it hangs.
TEST_F(DirectoryEntries, in_a_shared_subtree_count_their_levels_in_each_place) {
  for (const uint32_t height : {55u, 56u}) {
    CompoundWriter writer;
    writer.shape = TreeShape::kLeftChain;
    for (uint32_t i = 1; i <= 200 + height; ++i) writer.addStream(0, numbered(i), "x");
    const uint32_t top = writer.addStream(0, u"top", "y");
    const uint32_t last = writer.addStream(0, u"last", "z");
    std::string bytes = writer.write();
    const auto link = [&](uint32_t node, uint32_t left, uint32_t right) {
      putDword(bytes, writer.entryOffset(node) + 68, left);
      putDword(bytes, writer.entryOffset(node) + 72, right);
    };
    // The chain from 201 on begins on level 2, and again on level 202.
    putDword(bytes, writer.entryOffset(0) + 76, top);
    link(top, 201, 1);
    link(1, 2, last);
    link(200, 201, kNone);
    link(200 + height, kNone, kNone);
    link(last, kNone, kNone);
    EXPECT_EQ(contentOf(open(bytes).get(), "last"), height == 55 ? "z" : "none");
  }
}

TEST_F(DirectoryEntries, stand_in_many_sectors) {
  for (uint32_t i = 1; i <= 3000; ++i) writer_.addStream(0, numbered(i), "c" + std::to_string(i));
  const OleHandle file = open(write());
  EXPECT_GT(writer_.directorySectors().size(), 700u);
  for (uint32_t i = 1; i <= 3000; i += 123) {
    EXPECT_EQ(contentOf(file.get(), "s" + std::to_string(i)), "c" + std::to_string(i));
  }
}

// The count of entries in use has 16 bits: 65536 of them are none.
TEST_F(DirectoryEntries, of_which_65536_are_in_use_count_as_none) {
  for (const uint32_t count : {65535u, 65536u, 65537u}) {
    CompoundWriter writer;
    for (uint32_t i = 1; i < count; ++i) writer.addStream(0, u"x", "");
    const std::string bytes = writer.write();
    EXPECT_EQ(opens(bytes), count != 65536) << count;
  }
}

}  // namespace
}  // namespace ksv::test
