#include <array>
#include <cstring>

#include "ksv_memory.h"
#include "tests/common/support.h"

using ksv::test::readText;
using ksv::test::TempDirectory;

namespace {

constexpr char kLog[] = "memdbg_log.txt";
// A size that the compiler does not see through.
volatile int32_t largest = INT32_MAX;

class Tracking : public testing::Test {
 protected:
  void SetUp() override { KSV_start_mem_dbg("title"); }
  void TearDown() override { KSV_end_mem_dbg(); }

  // What was logged behind the title.
  static std::string log() {
    const std::string text = readText(kLog);
    return text.starts_with("title\n") ? text.substr(6) : "no title: " + text;
  }

  static std::string withAddress(const char* text, const void* block) {
    std::array<char, 64> line{};
    std::snprintf(line.data(), line.size(), "%s %x\n", text,
                  static_cast<unsigned>(reinterpret_cast<uintptr_t>(block)));
    return line.data();
  }

  TempDirectory directory_;
};

}  // namespace

TEST(Memory, allocates_grows_and_releases) {
  auto* block = static_cast<char*>(KSV_malloc(3));
  ASSERT_NE(block, nullptr);
  std::memcpy(block, "ab", 3);
  block = static_cast<char*>(KSV_realloc(block, 100000));
  ASSERT_NE(block, nullptr);
  EXPECT_STREQ(block, "ab");
  KSV_free(block);
  KSV_free(nullptr);
  KSV_memend(nullptr);
}

TEST(Memory, acts_as_the_system_on_size_zero_and_null) {
  void* block = KSV_malloc(0);
  EXPECT_NE(block, nullptr);
  KSV_free(block);
  block = KSV_realloc(nullptr, 5);
  EXPECT_NE(block, nullptr);
  KSV_free(block);
}

TEST(Memory, zeroes_what_calloc_gives) {
  auto* block = static_cast<char*>(KSV_calloc(3, 5));
  for (int i = 0; i < 15; ++i) EXPECT_EQ(block[i], 0);
  KSV_free(block);
}

TEST(Memory, fails_on_negative_sizes) {
  EXPECT_EQ(KSV_malloc(-1), nullptr);
  EXPECT_EQ(KSV_malloc(INT32_MIN), nullptr);
  EXPECT_EQ(KSV_calloc(1, -1), nullptr);
  EXPECT_EQ(KSV_calloc(0, -1), nullptr);
  EXPECT_EQ(KSV_calloc(-1, 1), nullptr);
  EXPECT_EQ(KSV_calloc(-1, -1), nullptr);
  auto* block = static_cast<char*>(KSV_malloc(1));
  block[0] = 'x';
  EXPECT_EQ(KSV_realloc(block, -1), nullptr);
  EXPECT_EQ(block[0], 'x');
  KSV_free(block);
}

TEST(Guard, stands_behind_every_block_whether_or_not_tracking_is_on) {
  auto* block = static_cast<char*>(KSV_malloc_dbg(2, "l", 1));
  EXPECT_EQ(std::memcmp(block + 2, "SAMPLE", 7), 0);
  block = static_cast<char*>(KSV_realloc_dbg(block, 5, "l", 1));
  EXPECT_EQ(std::memcmp(block + 5, "SAMPLE", 7), 0);
  KSV_free_dbg(block);
  block = static_cast<char*>(KSV_calloc_dbg(2, 3, "l", 1));
  EXPECT_EQ(std::memcmp(block, "\0\0\0\0\0\0SAMPLE", 13), 0);
  KSV_free(block);
  KSV_free_dbg(nullptr);
}

TEST(Guard, has_an_eighth_byte_that_nobody_writes) {
  for (int32_t size = 0; size < 64; ++size) {
    auto* block = static_cast<char*>(KSV_malloc_dbg(size, "l", 1));
    EXPECT_GE(ksv::test::usableSize(block), static_cast<size_t>(size) + 8) << size;
    block[size + 7] = 'X';
    block = static_cast<char*>(KSV_realloc_dbg(block, size, "l", 1));
    EXPECT_EQ(block[size + 7], 'X') << size;
    EXPECT_GE(ksv::test::usableSize(block), static_cast<size_t>(size) + 8) << size;
    KSV_free_dbg(block);
    block = static_cast<char*>(KSV_calloc_dbg(1, size, "l", 1));
    EXPECT_GE(ksv::test::usableSize(block), static_cast<size_t>(size) + 8) << size;
    KSV_free_dbg(block);
  }
}

TEST(Guard, never_turns_a_negative_size_into_a_small_block) {
  for (int32_t size : {-1, -7, -8, INT32_MIN}) {
    EXPECT_EQ(KSV_malloc_dbg(size, "l", 1), nullptr);
    EXPECT_EQ(KSV_calloc_dbg(1, size, "l", 1), nullptr);
    EXPECT_EQ(KSV_realloc_dbg(nullptr, size, "l", 1), nullptr);
  }
}

TEST(Guard, does_not_wrap_the_largest_size) {
  // The system may or may not have 2 GiB; a small block would be wrong.
  void* block = KSV_malloc_dbg(largest, "l", 1);
  if (block != nullptr) {
    EXPECT_EQ(std::memcmp(static_cast<char*>(block) + largest, "SAMPLE", 7), 0);
  }
  KSV_free_dbg(block);
}

TEST(TrackingOff, writes_no_log) {
  TempDirectory directory;
  KSV_free_dbg(KSV_malloc(1));
  EXPECT_EQ(KSV_malloc_dbg(-1, "l", 1), nullptr);
  KSV_end_mem_dbg();
  EXPECT_FALSE(ksv::test::exists(kLog));
}

TEST_F(Tracking, writes_the_first_title_only) {
  KSV_start_mem_dbg("second");
  EXPECT_EQ(log(), "");
}

TEST_F(Tracking, appends_the_lines_of_successive_runs) {
  KSV_end_mem_dbg();
  KSV_end_mem_dbg();
  KSV_start_mem_dbg(nullptr);
  EXPECT_EQ(log(), "\n");
}

TEST_F(Tracking, logs_nothing_for_blocks_that_are_released) {
  KSV_free_dbg(KSV_malloc_dbg(0, "l", 1));
  KSV_free_dbg(KSV_calloc_dbg(2, 2, "l", 1));
  KSV_free_dbg(KSV_realloc_dbg(KSV_malloc_dbg(1, "l", 1), 9, "l", 1));
  KSV_free_dbg(KSV_realloc_dbg(nullptr, 9, "l", 1));
  KSV_free_dbg(nullptr);
  KSV_end_mem_dbg();
  EXPECT_EQ(log(), "");
}

TEST_F(Tracking, reports_leaks_in_ascending_order_of_address) {
  auto* a = static_cast<char*>(KSV_malloc_dbg(3, "first.c", 10));
  auto* b = static_cast<char*>(KSV_calloc_dbg(2, 4, nullptr, -1));
  KSV_end_mem_dbg();
  const std::string first = "leak 3 first.c 10\n";
  const std::string second = "leak 8  -1\n";
  EXPECT_EQ(log(), a < b ? first + second : second + first);
  std::memset(a, 1, 3);  // leaked blocks stay valid
  KSV_free_dbg(a);
  KSV_free(b);
  EXPECT_EQ(log().size(), first.size() + second.size());
}

TEST_F(Tracking, writes_a_label_of_any_length_whole) {
  const std::string label(100000, 'x');
  void* block = KSV_malloc_dbg(1, label.c_str(), 2);
  KSV_end_mem_dbg();
  EXPECT_EQ(log(), "leak 1 " + label + " 2\n");
  KSV_free(block);
}

TEST_F(Tracking, copies_the_label) {
  char label[] = "abc";
  void* block = KSV_malloc_dbg(1, label, 2);
  label[0] = 'X';
  KSV_end_mem_dbg();
  EXPECT_EQ(log(), "leak 1 abc 2\n");
  KSV_free(block);
}

TEST_F(Tracking, takes_percent_signs_in_titles_and_labels_as_text) {
  KSV_end_mem_dbg();
  KSV_start_mem_dbg("%s%n");
  void* block = KSV_malloc_dbg(1, "%d", 2);
  KSV_end_mem_dbg();
  EXPECT_EQ(log(), "%s%n\nleak 1 %d 2\n");
  KSV_free(block);
}

TEST_F(Tracking, reports_one_overrun_and_releases_the_block) {
  auto* block = static_cast<char*>(KSV_malloc_dbg(4, "l", 1));
  block[4] = 'X';
  KSV_free_dbg(block);
  KSV_end_mem_dbg();
  EXPECT_EQ(log(), "overrun\n");
}

TEST_F(Tracking, sees_an_overrun_of_the_terminator_but_not_of_the_eighth_byte) {
  auto* block = static_cast<char*>(KSV_malloc_dbg(0, "l", 1));
  block[7] = 'X';
  KSV_free_dbg(block);
  EXPECT_EQ(log(), "");
  block = static_cast<char*>(KSV_malloc_dbg(0, "l", 1));
  block[6] = 'X';
  KSV_free_dbg(block);
  EXPECT_EQ(log(), "overrun\n");
}

TEST_F(Tracking, does_not_look_at_the_guard_when_a_block_is_resized) {
  auto* block = static_cast<char*>(KSV_malloc_dbg(4, "l", 1));
  block[4] = 'X';
  KSV_free_dbg(KSV_realloc_dbg(block, 8, "l", 1));
  EXPECT_EQ(log(), "");
}

TEST_F(Tracking, reports_and_releases_a_block_it_does_not_know) {
  void* block = KSV_malloc(1);
  const std::string line = withAddress("unallocated free", block);
  KSV_free_dbg(block);
  EXPECT_EQ(log(), line);
}

TEST_F(Tracking, reports_resizing_a_block_it_does_not_know_and_tracks_it_then) {
  void* block = KSV_malloc(1);
  const std::string line = withAddress("unallocated realloc", block);
  block = KSV_realloc_dbg(block, 20, "l", 3);
  EXPECT_EQ(log(), line);
  KSV_end_mem_dbg();
  EXPECT_EQ(log(), line + "leak 20 l 3\n");
  KSV_free(block);
}

TEST_F(Tracking, logs_failed_allocations) {
  EXPECT_EQ(KSV_malloc_dbg(-1, "l", 1), nullptr);
  EXPECT_EQ(KSV_calloc_dbg(-2, 3, "l", 1), nullptr);
  EXPECT_EQ(KSV_realloc_dbg(nullptr, -1, "l", 1), nullptr);
  EXPECT_EQ(log(), "malloc NULL\ncalloc NULL -2 3\nrealloc NULL\n");
}

TEST_F(Tracking, forgets_a_block_whose_resizing_fails) {
  void* block = KSV_malloc_dbg(1, "l", 1);
  EXPECT_EQ(KSV_realloc_dbg(block, -1, "l", 1), nullptr);
  const std::string line = withAddress("unallocated free", block);
  KSV_free_dbg(block);
  KSV_end_mem_dbg();
  EXPECT_EQ(log(), "realloc NULL\n" + line);
}

TEST_F(Tracking, records_and_zeroes_the_product_that_wraps) {
  // 0x10001 * 0x10004 = 0x1_0005_0004
  auto* block = static_cast<char*>(KSV_calloc_dbg(0x10001, 0x10004, "l", 1));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(std::memcmp(block + 0x50004, "SAMPLE", 7), 0);
  for (int i = 0; i < 0x50004; ++i) ASSERT_EQ(block[i], 0);
  KSV_end_mem_dbg();
  EXPECT_EQ(log(), "leak 327684 l 1\n");
  KSV_free(block);
}

TEST_F(Tracking, takes_the_product_of_two_negative_numbers) {
  void* block = KSV_calloc_dbg(-2, -3, "l", 1);
  ASSERT_NE(block, nullptr);
  KSV_end_mem_dbg();
  EXPECT_EQ(log(), "leak 6 l 1\n");
  KSV_free(block);
}

TEST_F(Tracking, refuses_a_product_that_wraps_to_a_negative_number) {
  EXPECT_EQ(KSV_calloc_dbg(0x10000, 0x8000, "l", 1), nullptr);
  EXPECT_EQ(log(), "calloc NULL 65536 32768\n");
}

TEST_F(Tracking, drops_lines_when_the_log_cannot_be_opened) {
  KSV_end_mem_dbg();
  std::filesystem::remove(kLog);
  std::filesystem::create_directory(kLog);
  KSV_start_mem_dbg("title");
  EXPECT_EQ(KSV_malloc_dbg(-1, "l", 1), nullptr);
  KSV_end_mem_dbg();
  EXPECT_TRUE(std::filesystem::is_empty(kLog));
}
