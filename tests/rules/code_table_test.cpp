// Code tables: insertion, look-up, the coverage of blocks, and lists of tables.
#include "cconv/rules/code_table.h"

#include "cconv/rules/publication.h"
#include "ksv_cconv.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

constexpr uint32_t kBlock = 4096;

std::unique_ptr<CodeTable> loadedTable(uint16_t valueBytes = 4) {
  auto table = tableOf("table.txt", kUtf16Little, CodeTable::kFirstColumn, valueBytes);
  table->state = CodeTable::State::kLoaded;
  return table;
}

struct Answer {
  bool found;
  uint32_t value;
  friend bool operator==(const Answer&, const Answer&) = default;
};
std::ostream& operator<<(std::ostream& out, const Answer& answer) {
  return out << (answer.found ? "found " : "not found ") << std::hex << answer.value;
}

// What is left in the value when nothing was found.
constexpr uint32_t kUntouched = 0xDEADBEEF;

Answer lookUp(const CodeTable& table, uint32_t key) {
  uint32_t value = kUntouched;
  const bool found = tableLookup(table, key, value);
  return {found, found ? value : 0};
}
constexpr Answer kNotFound = {false, 0};

TEST(CodeTableLookup, in_an_unloaded_table_gives_the_key_itself) {
  auto table = tableOf("table.txt");
  for (const uint32_t key : {0u, 1u, 0x8140u, 0xFFFFFFFFu}) {
    EXPECT_EQ(lookUp(*table, key), (Answer{true, key}));
  }
  EXPECT_TRUE(tableInsert(*table, 5, 6, kBlock));
  EXPECT_EQ(lookUp(*table, 5), (Answer{true, 5})) << "until it is loaded";
  table->state = CodeTable::State::kLoaded;
  EXPECT_EQ(lookUp(*table, 5), (Answer{true, 6}));
}

TEST(CodeTableLookup, in_a_table_without_a_file_gives_the_key_itself) {
  CodeTable table(CodeTable::kFirstColumn, 4);
  EXPECT_FALSE(ensureTableLoaded(&table));
  EXPECT_EQ(lookUp(table, 0x1234), (Answer{true, 0x1234}));
  EXPECT_EQ(table.reading, CodeTable::Reading::kNotRead);
}

TEST(CodeTableLookup, in_a_loaded_empty_table_finds_nothing_but_never_key_0) {
  auto table = loadedTable();
  EXPECT_EQ(lookUp(*table, 0), kNotFound) << "no block covers it";
  EXPECT_EQ(lookUp(*table, 1), kNotFound);
}

TEST(CodeTableLookup, takes_a_stored_0_for_no_mapping) {
  auto table = loadedTable();
  EXPECT_TRUE(tableInsert(*table, 10, 0, kBlock));
  EXPECT_TRUE(tableInsert(*table, 12, 7, kBlock));
  EXPECT_EQ(lookUp(*table, 10), kNotFound);
  EXPECT_EQ(lookUp(*table, 11), kNotFound);
  EXPECT_EQ(lookUp(*table, 12), (Answer{true, 7}));
}

TEST(CodeTableLookup, finds_key_0_with_whatever_is_stored) {
  auto table = loadedTable();
  EXPECT_TRUE(tableInsert(*table, 0, 0, kBlock));
  EXPECT_EQ(lookUp(*table, 0), (Answer{true, 0}));
  EXPECT_TRUE(tableInsert(*table, 0, 9, kBlock));
  EXPECT_EQ(lookUp(*table, 0), (Answer{true, 9}));
}

TEST(CodeTableLookup, finds_key_0_only_where_a_block_begins_with_it) {
  auto table = loadedTable();
  EXPECT_TRUE(tableInsert(*table, 1, 5, kBlock));
  EXPECT_EQ(lookUp(*table, 0), kNotFound);
  EXPECT_FALSE(table->coverage.coversZero());
  EXPECT_TRUE(tableInsert(*table, 0, 0, kBlock));
  EXPECT_TRUE(table->coverage.coversZero());
  EXPECT_EQ(lookUp(*table, 0), (Answer{true, 0}));
}

TEST(CodeTableBounds, follow_the_smallest_and_largest_key) {
  auto table = loadedTable();
  EXPECT_FALSE(table->hasEntries);
  EXPECT_TRUE(tableInsert(*table, 10, 1, kBlock));
  EXPECT_TRUE(table->hasEntries);
  EXPECT_EQ(table->low, 10u);
  EXPECT_EQ(table->high, 10u);
  EXPECT_TRUE(tableInsert(*table, 5, 2, kBlock));
  EXPECT_EQ(table->low, 5u);
  EXPECT_EQ(table->high, 10u);
  EXPECT_EQ(lookUp(*table, 5), (Answer{true, 2}));
  EXPECT_EQ(lookUp(*table, 10), (Answer{true, 1}));
  EXPECT_TRUE(tableInsert(*table, 7, 3, kBlock));
  EXPECT_EQ(table->low, 5u);
  EXPECT_EQ(table->high, 10u);
  EXPECT_TRUE(tableInsert(*table, 0, 4, kBlock));
  EXPECT_EQ(table->low, 0u);
  EXPECT_TRUE(tableInsert(*table, 3, 4, kBlock));
  EXPECT_EQ(table->low, 0u) << "0 was inserted, so it stays the smallest";
}

TEST(CodeTableBounds, shut_out_what_blocks_cover_beyond_them) {
  auto table = loadedTable();
  EXPECT_TRUE(tableInsert(*table, 100, 1, kBlock));
  EXPECT_TRUE(table->coverage.covers(101));
  EXPECT_EQ(lookUp(*table, 101), kNotFound);
  EXPECT_EQ(lookUp(*table, 99), kNotFound);
}

TEST(CodeTableBlocks, begin_at_the_first_key_that_none_covers) {
  auto table = loadedTable();
  EXPECT_TRUE(tableInsert(*table, 0x8140, 1, kBlock));
  EXPECT_EQ(table->coverage.blockCount(), 1u);
  EXPECT_TRUE(tableInsert(*table, 0x8140 + 4096, 2, kBlock));
  EXPECT_EQ(table->coverage.blockCount(), 2u);
  EXPECT_TRUE(tableInsert(*table, 0x8140 + 100, 3, kBlock));
  EXPECT_TRUE(tableInsert(*table, 0x8140 + 4095, 4, kBlock));
  EXPECT_TRUE(tableInsert(*table, 0x8140 + 8191, 5, kBlock));
  EXPECT_EQ(table->coverage.blockCount(), 2u);
  EXPECT_TRUE(tableInsert(*table, 0x8140 + 8192, 6, kBlock));
  EXPECT_TRUE(tableInsert(*table, 0x8140 - 1, 7, kBlock));
  EXPECT_EQ(table->coverage.blockCount(), 4u);
  const Pairs stored = {{0x8140, 1},        {0x8140 + 4096, 2}, {0x8140 + 100, 3},
                        {0x8140 + 4095, 4}, {0x8140 + 8191, 5}, {0x8140 + 8192, 6},
                        {0x8140 - 1, 7}};
  EXPECT_TRUE(mapsAll(*table, stored));
}

TEST(CodeTableBlocks, of_an_earlier_key_overlap_a_later_block_without_hiding_it) {
  auto table = loadedTable();
  EXPECT_TRUE(tableInsert(*table, 5000, 1, kBlock));  // 5000 to 9095
  EXPECT_TRUE(tableInsert(*table, 6000, 2, kBlock));
  EXPECT_TRUE(tableInsert(*table, 4000, 3, kBlock));  // 4000 to 8095
  EXPECT_TRUE(tableInsert(*table, 6001, 4, kBlock));
  EXPECT_EQ(table->coverage.blockCount(), 2u);
  EXPECT_TRUE(mapsAll(*table, {{5000, 1}, {6000, 2}, {4000, 3}, {6001, 4}}));
}

TEST(CodeTableBlocks, whose_end_passes_the_32_bits_hold_nothing) {
  auto table = loadedTable();
  const uint32_t first = 0xFFFFF800;
  EXPECT_TRUE(tableInsert(*table, first, 1, kBlock));  // its end is 0x800
  EXPECT_EQ(lookUp(*table, first), kNotFound);
  EXPECT_FALSE(table->coverage.covers(first));
  EXPECT_EQ(table->low, first);
  EXPECT_EQ(table->high, first);
  EXPECT_TRUE(tableInsert(*table, first, 2, kBlock));
  EXPECT_EQ(table->coverage.blockCount(), 2u) << "each insertion makes another";
  EXPECT_TRUE(tableInsert(*table, 0xFFFFF000, 3, kBlock));  // its end is 0
  EXPECT_EQ(lookUp(*table, 0xFFFFF000), kNotFound);
  EXPECT_TRUE(tableInsert(*table, 0xFFFFEFFF, 4, kBlock));  // up to 0xFFFFFFFE
  EXPECT_EQ(lookUp(*table, 0xFFFFEFFF), (Answer{true, 4}));
  EXPECT_EQ(lookUp(*table, first), kNotFound) << "it was not stored there";
  EXPECT_TRUE(tableInsert(*table, first, 5, kBlock));
  EXPECT_EQ(lookUp(*table, first), (Answer{true, 5}));
  EXPECT_TRUE(tableInsert(*table, 0xFFFFFFFF, 6, kBlock));
  EXPECT_EQ(lookUp(*table, 0xFFFFFFFF), kNotFound);
  EXPECT_EQ(table->high, 0xFFFFFFFFu);
}

TEST(CodeTableBlocks, of_one_entry_reach_the_last_but_one_key) {
  auto table = loadedTable();
  EXPECT_TRUE(tableInsert(*table, 0xFFFFFFFE, 1, 1));
  EXPECT_TRUE(tableInsert(*table, 0xFFFFFFFF, 2, 1));  // its end is 0
  EXPECT_EQ(lookUp(*table, 0xFFFFFFFE), (Answer{true, 1}));
  EXPECT_EQ(lookUp(*table, 0xFFFFFFFF), kNotFound);
}

TEST(CodeTableBlocks, number_65535_at_most) {
  auto table = loadedTable();
  for (uint32_t i = 0; i < 65535; ++i) ASSERT_TRUE(tableInsert(*table, 2 * i + 1, 7, 1)) << i;
  EXPECT_EQ(table->coverage.blockCount(), 65535u);
  EXPECT_FALSE(tableInsert(*table, 2 * 65535 + 1, 7, 1));
  EXPECT_EQ(table->high, 2u * 65534 + 1) << "the bounds stay";
  EXPECT_EQ(lookUp(*table, 2 * 65535 + 1), kNotFound);
  EXPECT_TRUE(tableInsert(*table, 3, 9, 1)) << "a covered key needs no block";
  EXPECT_EQ(lookUp(*table, 3), (Answer{true, 9}));
  EXPECT_EQ(lookUp(*table, 2 * 65534 + 1), (Answer{true, 7}));
}

TEST(CodeTableBlocks, of_changing_size_keep_the_size_they_were_made_with) {
  auto table = loadedTable();
  EXPECT_TRUE(tableInsert(*table, 100, 1, 256));
  EXPECT_TRUE(tableInsert(*table, 355, 2, 16));
  EXPECT_EQ(table->coverage.blockCount(), 1u);
  EXPECT_TRUE(tableInsert(*table, 356, 3, 16));
  EXPECT_TRUE(tableInsert(*table, 372, 4, 65535));
  EXPECT_EQ(table->coverage.blockCount(), 3u);
  EXPECT_TRUE(mapsAll(*table, {{100, 1}, {355, 2}, {356, 3}, {372, 4}}));
}

TEST(CodeTableValues, keep_as_many_low_bytes_as_the_table_stores) {
  const Answer answers[] = {kNotFound,         {true, 0x44},       {true, 0x3344},
                            {true, 0x223344},  {true, 0x11223344}, {true, 0x11223344},
                            {true, 0x11223344}};
  for (uint16_t bytes = 0; bytes < std::size(answers); ++bytes) {
    auto table = loadedTable(bytes);
    EXPECT_TRUE(tableInsert(*table, 1, 0x11223344, kBlock));
    EXPECT_EQ(lookUp(*table, 1), answers[bytes]) << bytes;
  }
  auto huge = loadedTable(65535);
  EXPECT_TRUE(tableInsert(*huge, 1, 0xFFFFFFFF, kBlock));
  EXPECT_EQ(lookUp(*huge, 1), (Answer{true, 0xFFFFFFFF}));
}

TEST(CodeTableValues, that_lose_all_their_bits_are_no_mapping) {
  auto table = loadedTable(1);
  EXPECT_TRUE(tableInsert(*table, 1, 0x3000, kBlock));
  EXPECT_EQ(lookUp(*table, 1), kNotFound);
}

TEST(CodeTableValues, without_bytes_are_found_for_key_0_only) {
  auto table = loadedTable(0);
  EXPECT_TRUE(tableInsert(*table, 0, 7, kBlock));
  EXPECT_TRUE(tableInsert(*table, 1, 7, kBlock));
  EXPECT_EQ(lookUp(*table, 0), (Answer{true, 0}));
  EXPECT_EQ(lookUp(*table, 1), kNotFound);
}

TEST(CodeTableValues, of_the_last_insertion_win) {
  auto table = loadedTable();
  for (const uint32_t value : {1u, 0u, 5u}) EXPECT_TRUE(tableInsert(*table, 8, value, kBlock));
  EXPECT_EQ(lookUp(*table, 8), (Answer{true, 5}));
  EXPECT_TRUE(tableInsert(*table, 8, 0, kBlock));
  EXPECT_EQ(lookUp(*table, 8), kNotFound);
}

class TableLists : public RuleBaseTest {
 protected:
  void add(const std::string& file, uint16_t valueBytes) {
    list_.append(tableOf(file, kUtf16Little, CodeTable::kSecondColumn, valueBytes));
  }
  // The value and the bytes of its table, or nothing.
  std::string lookUp(uint32_t key) {
    uint32_t value = kUntouched;
    uint16_t bytes = 77;
    if (!tableListLookup(list_, key, value, bytes)) {
      EXPECT_EQ(value, kUntouched);
      EXPECT_EQ(bytes, 77);
      return "nothing";
    }
    char answer[32];
    std::snprintf(answer, sizeof answer, "%X in %d", value, bytes);
    return answer;
  }

  TableList list_;
};

TEST_F(TableLists, without_tables_have_no_answer) { EXPECT_EQ(lookUp(1), "nothing"); }

TEST_F(TableLists, give_the_answer_of_the_first_table_that_has_one) {
  directory_.writeTable("a.txt", "8140 10\r\n8141 11");
  directory_.writeTable("b.txt", "9140 10\r\n9142 12\r\n12345678 13");
  add("a.txt", 2);
  add("b.txt", 3);
  EXPECT_EQ(lookUp(0x10), "8140 in 2");
  EXPECT_EQ(lookUp(0x11), "8141 in 2");
  EXPECT_EQ(lookUp(0x12), "9142 in 3");
  EXPECT_EQ(lookUp(0x13), "345678 in 3");
  EXPECT_EQ(lookUp(0x14), "nothing");
  EXPECT_EQ(lookUp(0x09), "nothing");
}

TEST_F(TableLists, load_their_tables_on_the_first_look_up) {
  directory_.writeTable("a.txt", "8140 10\r\n8141 11");
  add("a.txt", 2);
  EXPECT_FALSE(list_[0]->isLoaded());
  EXPECT_EQ(lookUp(0x10), "8140 in 2");
  EXPECT_TRUE(list_[0]->isLoaded());
  EXPECT_TRUE(directory_.has("a.cmp"));
}

TEST_F(TableLists, do_not_load_the_tables_behind_the_answer) {
  directory_.writeTable("a.txt", "8140 10\r\n8141 11");
  directory_.writeTable("b.txt", "9140 10\r\n9141 12");
  add("a.txt", 2);
  add("b.txt", 2);
  EXPECT_EQ(lookUp(0x10), "8140 in 2");
  EXPECT_FALSE(list_[1]->isLoaded());
  EXPECT_EQ(lookUp(0x12), "9141 in 2");
  EXPECT_TRUE(list_[1]->isLoaded());
}

TEST_F(TableLists, skip_tables_without_a_file_and_tables_that_cannot_be_loaded) {
  directory_.writeTable("b.txt", "9140 10\r\n9141 12");
  add("", 2);
  add("missing.txt", 2);
  add("b.txt", 2);
  EXPECT_EQ(lookUp(0x10), "9140 in 2");
  EXPECT_FALSE(list_[0]->isLoaded());
  EXPECT_EQ(list_[0]->reading, CodeTable::Reading::kNotRead);
  EXPECT_FALSE(list_[1]->isLoaded());
  EXPECT_EQ(lookUp(0x12), "9141 in 2");
  EXPECT_TRUE(list_[1]->isLoaded()) << "the second attempt marks it";
  EXPECT_EQ(lookUp(0x10), "9140 in 2");
}

TEST_F(TableLists, pass_on_from_a_stored_0_and_never_answer_for_it) {
  directory_.writeTable("a.txt", "0 10\r\n0 0\r\n8141 11");
  directory_.writeTable("b.txt", "9140 10\r\n0 0\r\n9141 11");
  add("a.txt", 2);
  add("b.txt", 2);
  EXPECT_EQ(lookUp(0x10), "9140 in 2");
  EXPECT_EQ(lookUp(0x11), "8141 in 2");
  EXPECT_EQ(lookUp(0), "nothing") << "key 0 is no exception here";
}

TEST_F(TableLists, answer_for_key_0_with_a_value) {
  directory_.writeTable("a.txt", "5 0\r\n6 1");
  add("a.txt", 2);
  EXPECT_EQ(lookUp(0), "5 in 2");
}

class TableLoading : public RuleBaseTest {};

TEST_F(TableLoading, of_no_table_fails) { EXPECT_FALSE(ensureTableLoaded(nullptr)); }

TEST_F(TableLoading, of_a_loaded_table_does_nothing) {
  auto table = tableOf("missing.txt");
  table->state = CodeTable::State::kLoaded;
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(table->reading, CodeTable::Reading::kNotRead);
  EXPECT_FALSE(directory_.has("missing.cmp"));
}

TEST_F(TableLoading, counts_its_attempts_and_gives_up_at_the_second) {
  auto table = tableOf("missing.txt");
  EXPECT_EQ(table->reading, CodeTable::Reading::kNotRead);
  EXPECT_FALSE(ensureTableLoaded(table.get()));
  EXPECT_EQ(table->reading, CodeTable::Reading::kAskedFor);
  EXPECT_EQ(lookUp(*table, 7), (Answer{true, 7}));
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(table->reading, CodeTable::Reading::kAskedForAgain);
  EXPECT_EQ(lookUp(*table, 7), kNotFound);
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(table->reading, CodeTable::Reading::kAskedForAgain);
}

// What a thread that is cancelled leaves behind, or another process that is forked meanwhile.
TEST_F(TableLoading, that_is_broken_off_has_been_an_attempt) {
  struct BrokenOff {};
  directory_.writeTable("a.txt", "8140 10\r\n8141 11");
  auto table = tableOf("a.txt");
  publicationPauseForTests = [](PublicationStep step) {
    if (step == PublicationStep::kFilling) throw BrokenOff();
  };
  EXPECT_THROW(ensureTableLoaded(table.get()), BrokenOff);
  publicationPauseForTests = nullptr;
  EXPECT_NE(unlockMutex(), 0) << "it died as the holder";
  EXPECT_EQ(table->reading, CodeTable::Reading::kAskedFor);
  EXPECT_FALSE(table->isLoaded());
  EXPECT_TRUE(ensureTableLoaded(table.get())) << "with what had been read by then";
  EXPECT_EQ(table->reading, CodeTable::Reading::kAskedForAgain);
  EXPECT_EQ(lookUp(*table, 0x8140), kNotFound);
}

TEST_F(TableLoading, notes_answers_that_a_later_load_may_change) {
  directory_.writeTable("a.txt", "8140 10\r\n8141 11");
  auto table = tableOf("a.txt");
  ProvisionalAnswers outer;
  {
    ProvisionalAnswers inner;
    uint32_t value = 0;
    EXPECT_TRUE(tableLookup(*table, 5, value));
    EXPECT_TRUE(inner.any());
  }
  EXPECT_TRUE(outer.any()) << "scopes nest";
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  {
    ProvisionalAnswers inner;
    uint32_t value = 0;
    EXPECT_FALSE(inner.any());
    EXPECT_TRUE(tableLookup(*table, 0x8140, value));
    CodeTable withoutFile(CodeTable::kFirstColumn, 4);
    EXPECT_TRUE(tableLookup(withoutFile, 0x8140, value));
    EXPECT_FALSE(inner.any()) << "neither will change";
  }
}

}  // namespace
}  // namespace ksv::test
