// Bound to POSIX: the rights to a directory by its mode and its user, and a limit on
// the size of files.
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "ksv_cconv.h"
#include "tests/rules/support.h"
#include "tests/system/fork_posix.h"

namespace ksv::test {
namespace {

// Runs body as a user who may not write into the charset directory.
int runWithoutWriteAccess(const std::string& directory, const std::function<int()>& body) {
  chmod(directory.c_str(), 0555);
  const int result = runInChild([&] {
    constexpr uid_t kNobody = 65534;
    if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) return 100;
    return body();
  });
  chmod(directory.c_str(), 0755);
  return result;
}

using CompiledTableWithoutStart = CharsetDirectoryTest;
using CompiledTableOfALimitedSize = RuleBaseTest;
using CompiledTableBesideAPipe = RuleBaseTest;

TEST_F(CompiledTableWithoutStart, is_not_written_where_nobody_may_write) {
  const Pairs pairs = manyPairs(1000);
  directory_.writeTable("t.txt", tableLines(pairs));
  EXPECT_EQ(runWithoutWriteAccess(directory_.path(""),
                                  [&] {
                                    if (startProcess() != 1) return 1;
                                    auto table = tableOf("t.txt");
                                    if (!ensureTableLoaded(table.get())) return 2;
                                    if (!mapsAll(*table, pairs)) return 3;
                                    endProcess();
                                    return 0;
                                  }),
            0);
  EXPECT_FALSE(directory_.has("t.cmp"));
  EXPECT_FALSE(directory_.has("t.cmp.tmp"));
}

TEST_F(CompiledTableWithoutStart, that_is_there_is_read_where_nobody_may_write) {
  directory_.write("t.cmp", compiledBytes({{1, 2}, {3, 4}}));
  EXPECT_EQ(runWithoutWriteAccess(directory_.path(""),
                                  [&] {
                                    if (startProcess() != 1) return 1;
                                    auto table = tableOf("t.txt");
                                    ensureTableLoaded(table.get());
                                    return mapsAll(*table, {{1, 2}, {3, 4}}) ? 0 : 2;
                                  }),
            0);
}

// Whoever opened it would wait for a writer, with the lock held that everyone else waits for.
TEST_F(CompiledTableBesideAPipe, that_is_the_pipe_is_passed_over_and_left_alone) {
  const Pairs pairs = manyPairs(100);
  directory_.writeTable("t.txt", tableLines(pairs));
  ASSERT_EQ(mkfifo(directory_.path("t.cmp").c_str(), 0600), 0);
  auto table = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  EXPECT_TRUE(mapsAll(*table, pairs));
  EXPECT_TRUE(std::filesystem::is_fifo(directory_.path("t.cmp")));
}

TEST_F(CompiledTableBesideAPipe, has_no_text_where_that_is_a_pipe) {
  ASSERT_EQ(mkfifo(directory_.path("t.txt").c_str(), 0600), 0);
  auto table = tableOf("t.txt");
  EXPECT_FALSE(ensureTableLoaded(table.get()));
  EXPECT_EQ(directory_.read("t.cmp"), "") << "as without a text";
}

TEST_F(CompiledTableBesideAPipe, is_not_waited_for_where_the_pipe_is_a_rule_file) {
  ASSERT_EQ(mkfifo(directory_.path("pipe.xml").c_str(), 0600), 0);
  EXPECT_EQ(cconvLoadRule(), 0) << "nothing could be loaded";
}

TEST_F(CompiledTableOfALimitedSize, is_dropped_when_its_bytes_cannot_be_stored) {
  for (const uint32_t count : {100u, 20000u}) {  // refused at its end, and on the way
    SCOPED_TRACE(count);
    const Pairs pairs = manyPairs(count);
    directory_.writeTable("t.txt", tableLines(pairs));
    const int result = runInChild([&] {
      signal(SIGXFSZ, SIG_IGN);
      const rlimit limit = {count * 8 / 2, count * 8 / 2};
      if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return 1;
      auto table = tableOf("t.txt");
      return ensureTableLoaded(table.get()) && mapsAll(*table, pairs) ? 0 : 2;
    });
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(directory_.has("t.cmp"));
    EXPECT_FALSE(directory_.has("t.cmp.tmp"));
  }
}

}  // namespace
}  // namespace ksv::test
