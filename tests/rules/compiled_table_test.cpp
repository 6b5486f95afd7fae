// Compiled tables: their bytes, when they are read and written, and when a table
// counts as loaded.
#include "ksv_cconv.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

std::string bytesOf(std::initializer_list<int> bytes) {
  std::string text;
  for (const int byte : bytes) text.push_back(static_cast<char>(byte));
  return text;
}

constexpr CodeTable::KeyColumn kFirst = CodeTable::kFirstColumn;
constexpr CodeTable::KeyColumn kSecond = CodeTable::kSecondColumn;

class CompiledTable : public RuleBaseTest {
 protected:
  // "not loaded", "not found" or the value.
  static std::string lookUp(const CodeTable& table, uint32_t key) {
    uint32_t value = 0;
    if (!table.isLoaded()) return "not loaded";
    if (!tableLookup(table, key, value)) return "not found";
    char text[16];
    std::snprintf(text, sizeof text, "%X", value);
    return text;
  }

  // Whether a table of this compiled file counts as loaded after the first attempt.
  bool loadsFirst(const std::string& compiled) {
    directory_.write("t.cmp", compiled);
    return ensureTableLoaded(tableOf("t.txt").get());
  }
};

TEST_F(CompiledTable, of_two_lines_has_sixteen_bytes) {
  directory_.write("t.txt", encode(kUcs2Little, "8140 3000\r\n8141 3001\r\n"));
  auto table = tableOf("t.txt", kUcs2Little);
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(directory_.read("t.cmp"),
            bytesOf({0x40, 0x81, 0, 0, 0x00, 0x30, 0, 0, 0x41, 0x81, 0, 0, 0x01, 0x30, 0, 0}));
  EXPECT_EQ(lookUp(*table, 0x8140), "3000");
  EXPECT_EQ(lookUp(*table, 0x8141), "3001");
  EXPECT_EQ(lookUp(*table, 0x8142), "not found");
}

TEST_F(CompiledTable, is_the_same_from_every_encoding_and_byte_order) {
  for (const TextForm& form : kAllForms) {
    std::filesystem::remove(directory_.path("t.cmp"));
    directory_.writeTable("t.txt", "<x> 8140 3000\r\n8141 3001", form);
    EXPECT_TRUE(ensureTableLoaded(tableOf("t.txt", form).get())) << form.label;
    EXPECT_EQ(directory_.read("t.cmp"), compiledBytes({{0x8140, 0x3000}, {0x8141, 0x3001}}));
  }
}

TEST_F(CompiledTable, keeps_the_order_and_the_repetitions_of_the_text) {
  directory_.writeTable("t.txt", "5 6\r\n1 2\r\n5 7\r\n12345678 9ABCDEF0\r\n0 0");
  auto table = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(directory_.read("t.cmp"),
            compiledBytes({{5, 6}, {1, 2}, {5, 7}, {0x12345678, 0x9ABCDEF0}, {0, 0}}));
  EXPECT_EQ(directory_.read("t.cmp").substr(24, 8),
            bytesOf({0x78, 0x56, 0x34, 0x12, 0xF0, 0xDE, 0xBC, 0x9A}));
  EXPECT_EQ(lookUp(*table, 5), "7") << "the last one wins";
}

TEST_F(CompiledTable, leaves_out_a_number_without_a_second) {
  directory_.writeTable("t.txt", "1 2\r\n3");
  auto table = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(directory_.read("t.cmp"), compiledBytes({{1, 2}}));
}

TEST_F(CompiledTable, lacks_the_last_pair_of_a_text_without_a_last_line_end) {
  directory_.write("t.txt", encode(kUtf16Little, "1 2\r\n3 4"));
  auto table = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(directory_.read("t.cmp"), compiledBytes({{1, 2}}));
  EXPECT_EQ(lookUp(*table, 3), "not found");
}

TEST_F(CompiledTable, serves_both_directions) {
  directory_.writeTable("t.txt", "8140 3000\r\n8141 3001");
  auto forward = tableOf("t.txt", kUtf16Little, kFirst, 4);
  auto backward = tableOf("t.txt", kUtf16Little, kSecond, 2);
  EXPECT_TRUE(ensureTableLoaded(forward.get()));
  const std::string compiled = directory_.read("t.cmp");
  std::filesystem::remove(directory_.path("t.txt"));
  EXPECT_TRUE(ensureTableLoaded(backward.get()));
  EXPECT_EQ(lookUp(*forward, 0x8141), "3001");
  EXPECT_EQ(lookUp(*backward, 0x3001), "8141");
  EXPECT_EQ(directory_.read("t.cmp"), compiled);
}

TEST_F(CompiledTable, is_read_instead_of_the_text) {
  directory_.writeTable("t.txt", "1 2\r\n3 4");
  directory_.write("t.cmp", compiledBytes({{1, 7}, {5, 6}}));
  auto table = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(lookUp(*table, 1), "7");
  EXPECT_EQ(lookUp(*table, 3), "not found");
  EXPECT_EQ(lookUp(*table, 5), "6");
}

TEST_F(CompiledTable, is_made_again_when_it_was_removed) {
  directory_.writeTable("t.txt", "1 2\r\n3 4");
  EXPECT_TRUE(ensureTableLoaded(tableOf("t.txt").get()));
  std::filesystem::remove(directory_.path("t.cmp"));
  EXPECT_TRUE(ensureTableLoaded(tableOf("t.txt").get()));
  EXPECT_EQ(directory_.read("t.cmp"), compiledBytes({{1, 2}, {3, 4}}));
}

TEST_F(CompiledTable, of_twenty_bytes_has_two_pairs) {
  directory_.write("t.cmp", compiledBytes({{1, 2}, {3, 4}}) + "\x05\x06\x07\x08");
  auto table = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(lookUp(*table, 1), "2");
  EXPECT_EQ(lookUp(*table, 3), "4");
  EXPECT_EQ(table->high, 3u);
  EXPECT_EQ(directory_.read("t.cmp").size(), 20u);
}

TEST_F(CompiledTable, that_is_empty_or_too_short_hides_the_text) {
  for (const char* compiled : {"", "1234567"}) {
    directory_.writeTable("t.txt", "1 2\r\n3 4");
    directory_.write("t.cmp", compiled);
    auto table = tableOf("t.txt");
    EXPECT_FALSE(ensureTableLoaded(table.get()));
    uint32_t value = 0;
    EXPECT_TRUE(tableLookup(*table, 1, value));
    EXPECT_EQ(value, 1u) << "codes pass through";
    EXPECT_TRUE(ensureTableLoaded(table.get())) << "the second attempt";
    EXPECT_EQ(lookUp(*table, 1), "not found");
    EXPECT_EQ(directory_.read("t.cmp"), compiled);
  }
}

TEST_F(CompiledTable, that_is_a_directory_is_none_and_stays) {
  directory_.writeTable("t.txt", "1 2\r\n3 4");
  std::filesystem::create_directory(directory_.path("t.cmp"));
  auto table = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(lookUp(*table, 3), "4");
  EXPECT_TRUE(std::filesystem::is_directory(directory_.path("t.cmp")));
  EXPECT_FALSE(directory_.has("t.cmp.tmp"));
}

TEST_F(CompiledTable, is_not_written_where_its_temporary_name_is_taken) {
  directory_.writeTable("t.txt", "1 2\r\n3 4");
  std::filesystem::create_directory(directory_.path("t.cmp.tmp"));
  auto table = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(lookUp(*table, 3), "4");
  EXPECT_FALSE(directory_.has("t.cmp"));
  EXPECT_TRUE(std::filesystem::is_directory(directory_.path("t.cmp.tmp")));
}

TEST_F(CompiledTable, lies_beside_its_text_under_the_lower_cased_name) {
  directory_.writeTable("jis0208.txt", "1 2\r\n3 4");
  EXPECT_TRUE(ensureTableLoaded(tableOf("JIS0208.TXT").get()));
  EXPECT_EQ(directory_.names(), (std::set<std::string>{"jis0208.cmp", "jis0208.txt"}));
  EXPECT_EQ(directory_.read("jis0208.cmp"), compiledBytes({{1, 2}, {3, 4}}));
}

TEST_F(CompiledTable, replaces_the_extension_from_the_last_dot) {
  directory_.writeTable("a.b.txt", "1 2\r\n3 4");
  directory_.writeTable("plain", "1 2\r\n3 4");
  EXPECT_TRUE(ensureTableLoaded(tableOf("a.b.txt").get()));
  EXPECT_TRUE(ensureTableLoaded(tableOf("plain").get()));
  EXPECT_TRUE(directory_.has("a.b.cmp"));
  EXPECT_TRUE(directory_.has("plain.cmp"));
}

TEST_F(CompiledTable, keeps_the_directory_of_the_declared_name) {
  std::filesystem::create_directory(directory_.path("Sub"));
  directory_.writeTable("Sub/t.txt", "1 2\r\n3 4");
  auto table = tableOf("Sub/T.TXT");
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_TRUE(directory_.has("Sub/t.cmp"));
  EXPECT_EQ(lookUp(*table, 3), "4");
}

TEST_F(CompiledTable, without_a_text_is_there_and_empty) {
  auto table = tableOf("missing.txt");
  EXPECT_FALSE(ensureTableLoaded(table.get()));
  EXPECT_TRUE(directory_.has("missing.cmp"));
  EXPECT_EQ(directory_.read("missing.cmp"), "");
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(lookUp(*table, 1), "not found");
}

TEST_F(CompiledTable, of_an_unreadable_encoding_is_empty) {
  directory_.writeTable("t.txt", "1 2\r\n3 4");
  auto table = tableOf("t.txt");
  table->sourceEncoding = TextEncodingKind::kUtf8;
  EXPECT_FALSE(ensureTableLoaded(table.get()));
  EXPECT_EQ(directory_.read("t.cmp"), "");
}

TEST_F(CompiledTable, counts_as_loaded_with_two_keys_or_one_that_is_neither_0_nor_huge) {
  EXPECT_TRUE(loadsFirst(compiledBytes({{1, 2}})));
  EXPECT_TRUE(loadsFirst(compiledBytes({{0xFFFFFFF, 2}})));
  EXPECT_FALSE(loadsFirst(compiledBytes({{0x10000000, 2}})));
  EXPECT_FALSE(loadsFirst(compiledBytes({{0xFFFFFFFF, 2}})));
  EXPECT_FALSE(loadsFirst(compiledBytes({{0, 2}})));
  EXPECT_FALSE(loadsFirst(""));
  EXPECT_TRUE(loadsFirst(compiledBytes({{0, 2}, {1, 2}})));
  EXPECT_TRUE(loadsFirst(compiledBytes({{0x10000000, 2}, {0x10000001, 2}})));
  EXPECT_TRUE(loadsFirst(compiledBytes({{1, 0}}))) << "the value does not matter";
}

TEST_F(CompiledTable, left_unloaded_for_its_lone_key_answers_after_the_next_attempt) {
  directory_.write("t.cmp", compiledBytes({{0, 2}}));
  auto table = tableOf("t.txt");
  EXPECT_FALSE(ensureTableLoaded(table.get()));
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(lookUp(*table, 0), "2");
}

TEST_F(CompiledTable, stops_where_no_block_can_be_made) {
  setBlockSize(1);
  Pairs pairs;
  for (uint32_t i = 0; i < 65535 + 10; ++i) pairs.emplace_back(2 * i + 1, 7);
  directory_.write("t.cmp", compiledBytes(pairs));
  auto table = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_EQ(table->high, 2u * 65534 + 1);
  EXPECT_EQ(lookUp(*table, 2 * 65534 + 1), "7");
  EXPECT_EQ(lookUp(*table, 2 * 65535 + 1), "not found");
}

}  // namespace
}  // namespace ksv::test
