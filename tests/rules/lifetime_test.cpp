// Starting and stopping, which nest, and what they leave in the rule base.
#include <cstring>

#include "ksv_cconv.h"
#include "ksv_file.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

class Lifetime : public CharsetDirectoryTest {
 protected:
  void writeCharset(const std::string& file, const std::string& name) {
    directory_.writeRule(file, charset("", "<name>" + name + "</name>"));
  }
};

constexpr uint32_t kUnmatched = 4294967295;

TEST_F(Lifetime, begins_without_lists_and_without_a_count) {
  EXPECT_EQ(ruleBase.refCount, 0u);
  EXPECT_EQ(ruleBase.lists, nullptr);
  EXPECT_EQ(ruleBase.tableMutex, nullptr);
}

TEST_F(Lifetime, start_makes_empty_lists_and_the_lock) {
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(ruleBase.refCount, 1u);
  ASSERT_NE(ruleBase.lists, nullptr);
  EXPECT_EQ(ruleBase.lists->charsets().count(), 0);
  EXPECT_EQ(ruleBase.lists->groups().count(), 0);
  EXPECT_NE(ruleBase.tableMutex, nullptr);
  endProcess();
  EXPECT_EQ(ruleBase.refCount, 0u);
  EXPECT_EQ(ruleBase.lists, nullptr);
}

TEST_F(Lifetime, nested_pairs_keep_what_is_loaded_until_the_last_end) {
  writeCharset("a.xml", "aaa");
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(cconvLoadRule(), 1);
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(ruleBase.refCount, 3u);
  EXPECT_NE(findCharsetByName("aaa"), nullptr);
  endProcess();
  endProcess();
  EXPECT_NE(findCharsetByName("aaa"), nullptr);
  endProcess();
  EXPECT_EQ(findCharsetByName("aaa"), nullptr);
  EXPECT_EQ(ruleBase.lists, nullptr);
}

TEST_F(Lifetime, a_later_start_begins_with_an_empty_rule_base) {
  writeCharset("a.xml", "aaa");
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(startProcess(), 1);
    EXPECT_EQ(findCharsetByName("aaa"), nullptr);
    EXPECT_EQ(cconvLoadRule(), 1);
    EXPECT_NE(findCharsetByName("aaa"), nullptr);
    endProcess();
  }
}

TEST_F(Lifetime, every_start_reads_the_charset_path_anew) {
  const std::string first = directory_.path("");
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(ruleBase.charsetPath, first);
  {
    ScopedVariable other("Charsetpath", "/another/place/");
    EXPECT_EQ(ruleBase.charsetPath, first);
    EXPECT_EQ(startProcess(), 1);
    EXPECT_STREQ(ruleBase.charsetPath, "/another/place/");
    endProcess();
    EXPECT_STREQ(ruleBase.charsetPath, "/another/place/");
  }
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(ruleBase.charsetPath, first);
  endProcess();
  endProcess();
  EXPECT_EQ(ruleBase.charsetPath, first) << "the last end leaves the path as it is";
}

TEST_F(Lifetime, a_separator_is_added_to_a_charset_path_without_one) {
  ScopedVariable setting("Charsetpath", "/a/place");
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(ruleBase.charsetPath, "/a/place" + kSeparator);
  endProcess();
}

TEST_F(Lifetime, set_charset_path_returns_1_and_sets_nothing) {
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(KSV_setCharsetPath("x"), 1);
  EXPECT_EQ(KSV_setCharsetPath(nullptr), 1);
  EXPECT_EQ(ruleBase.charsetPath, directory_.path(""));
  EXPECT_EQ(KSV_Is64bitOS(), 1);
  EXPECT_EQ(KSV_Is64bitFS(), 1);
  endProcess();
}

TEST_F(Lifetime, an_unmatched_end_wraps_the_count_and_frees_nothing) {
  endProcess();
  EXPECT_EQ(ruleBase.refCount, kUnmatched);
  EXPECT_EQ(ruleBase.lists, nullptr);
  ruleBase.refCount = 0;
}

TEST_F(Lifetime, the_start_behind_an_unmatched_end_has_no_lists_and_every_call_fails) {
  writeCharset("a.xml", "aaa");
  endProcess();
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(ruleBase.refCount, 0u);
  EXPECT_EQ(ruleBase.lists, nullptr);

  EXPECT_EQ(cconvLoadRule(), 0);
  EXPECT_EQ(lockMutex(), 0);
  EXPECT_EQ(unlockMutex(), 0);
  char name[KSV_NAME_SIZE] = "left alone";
  EXPECT_EQ(cconvEnumGroup(0, name), 0u);
  EXPECT_STREQ(name, "left alone");
  EXPECT_EQ(findCharsetById(1006), nullptr);
  EXPECT_EQ(findGroupById(2006), nullptr);
  ConverterRecord record = {};
  EXPECT_EQ(cconvInitConvert(&record, nullptr, "aaa"), 1u);
  EXPECT_EQ(cconvChgCharset(&record, nullptr, "aaa"), 1u);
  EXPECT_EQ(cconvConvert(&record), 1u);
  EXPECT_EQ(cconvTermConvert(&record), 0u);
  ruleBase.refCount = 0;
}

TEST_F(Lifetime, the_pair_behind_a_wrapped_count_works) {
  writeCharset("a.xml", "aaa");
  endProcess();
  EXPECT_EQ(startProcess(), 1);  // the count is 0 again
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(ruleBase.refCount, 1u);
  EXPECT_EQ(cconvLoadRule(), 1);
  EXPECT_NE(findCharsetByName("AAA"), nullptr);
  EXPECT_EQ(lockMutex(), 1);
  EXPECT_NE(unlockMutex(), 0);
  endProcess();
  EXPECT_EQ(ruleBase.refCount, 0u);
  EXPECT_EQ(ruleBase.lists, nullptr);
}

TEST_F(Lifetime, the_block_size_is_reset_by_the_first_start_only) {
  setBlockSize(7);
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(ruleBase.blockSize, 0);
  EXPECT_EQ(ruleBase.entriesPerBlock(), 4096u);
  setBlockSize(256);
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(ruleBase.entriesPerBlock(), 256u);
  endProcess();
  setBlockSize(0);
  EXPECT_EQ(ruleBase.entriesPerBlock(), 4096u);
  setBlockSize(65535);
  endProcess();
  EXPECT_EQ(ruleBase.blockSize, 65535) << "the last end leaves it as it is";
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(ruleBase.blockSize, 0);
  endProcess();
}

TEST_F(Lifetime, the_block_size_holds_for_the_tables_filled_afterwards) {
  // Two keys 256 apart lie in one block of 4096 entries, in two of 256.
  directory_.writeTable("t.txt", "100 1\r\n200 2");
  EXPECT_EQ(startProcess(), 1);
  auto wide = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(wide.get()));
  EXPECT_EQ(wide->coverage.blockCount(), 1u);
  setBlockSize(256);
  auto narrow = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(narrow.get()));
  EXPECT_EQ(narrow->coverage.blockCount(), 2u);
  EXPECT_EQ(wide->coverage.blockCount(), 1u);
  setBlockSize(0);
  auto again = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(again.get()));
  EXPECT_EQ(again->coverage.blockCount(), 1u);
  endProcess();
}

}  // namespace
}  // namespace ksv::test
