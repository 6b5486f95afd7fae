// Bound to POSIX: files that the system refuses to open, which must not be taken for absent,
// and what is found about that in the list of faults.
#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <thread>

#include "common/faults.h"
#include "ksv_cconv.h"
#include "tests/rules/support.h"
#include "tests/system/fork_posix.h"

namespace ksv::test {
namespace {

class SystemErrors : public RuleBaseTest {
 protected:
  // In a process of its own, as somebody whom file modes bind.
  static int asNobody(const std::function<int()>& body) {
    return runInChild([&] {
      constexpr uid_t kNobody = 65534;
      if (geteuid() == 0 &&
          (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0)) {
        return 100;
      }
      return body();
    });
  }
  void openToAll() { chmod(directory_.path("").c_str(), 0777); }
  void shut(const std::string& name) { chmod(directory_.path(name).c_str(), 0); }

  // Whether the only new fault is this one.
  bool isNoted(FaultSubject subject, const std::string& name, int error) const {
    if (faultCount() != before_ + 1) return false;
    const Fault fault = faultBehind(before_);
    return fault.subject == subject && fault.path == directory_.path(name) && fault.error == error;
  }
  bool nothingIsNoted() const { return faultCount() == before_; }

 private:
  const uint64_t before_ = faultCount();
};

// Takes all descriptors that are left, behind a table that is loaded once: to look at an
// object of a type for the first time takes the sanitizers descriptors as well.
class NoDescriptors {
 public:
  explicit NoDescriptors(const CharsetDirectory& directory) {
    directory.writeTable("before.txt", "1 2\r\n3 4");
    EXPECT_TRUE(ensureTableLoaded(tableOf("before.txt").get()));
    for (int file = open("/dev/null", O_RDONLY); file >= 0; file = open("/dev/null", O_RDONLY))
      taken_.push_back(file);
  }
  ~NoDescriptors() {
    for (const int file : taken_) close(file);
  }

 private:
  std::vector<int> taken_;
};

TEST_F(SystemErrors, absent_files_are_none) {
  auto table = tableOf("missing.txt");
  EXPECT_FALSE(ensureTableLoaded(table.get()));
  EXPECT_EQ(cconvLoadRule(), 0) << "no rule file";
  EXPECT_TRUE(nothingIsNoted());
  EXPECT_TRUE(directory_.has("missing.cmp")) << "compiled to nothing, once and for all";
}

TEST_F(SystemErrors, a_table_that_finds_no_descriptor_is_noted_and_not_compiled) {
  const Pairs pairs = manyPairs(100);
  directory_.writeTable("t.txt", tableLines(pairs));
  {
    auto table = tableOf("t.txt");
    const NoDescriptors none(directory_);
    EXPECT_FALSE(ensureTableLoaded(table.get()));
  }
  EXPECT_TRUE(isNoted(FaultSubject::kCodeTable, "t.txt", EMFILE));
  EXPECT_FALSE(directory_.has("t.cmp"));
  auto again = tableOf("t.txt");
  EXPECT_TRUE(ensureTableLoaded(again.get()));
  EXPECT_TRUE(mapsAll(*again, pairs));
}

TEST_F(SystemErrors, answers_of_a_table_that_could_not_be_read_are_not_remembered) {
  directory_.writeTable("t.txt", "1 2\r\n3 4");
  auto table = tableOf("t.txt");
  {
    const NoDescriptors none(directory_);
    ensureTableLoaded(table.get());
    ensureTableLoaded(table.get());
  }
  ASSERT_TRUE(table->isLoaded()) << "by the second attempt, as an empty one";
  const ProvisionalAnswers provisional;
  uint32_t value = 0;
  EXPECT_FALSE(tableLookup(*table, 1, value));
  EXPECT_TRUE(provisional.any());
}

TEST_F(SystemErrors, a_table_that_could_not_be_read_is_read_when_the_error_is_over) {
  directory_.writeTable("t.txt", "1 2\r\n3 4");
  for (const int attempts : {1, 2, 3}) {
    auto table = tableOf("t.txt");
    std::filesystem::remove(directory_.path("t.cmp"));
    {
      const NoDescriptors none(directory_);
      for (int attempt = 0; attempt < attempts; ++attempt) ensureTableLoaded(table.get());
      EXPECT_FALSE(mendTable(*table)) << attempts;
      EXPECT_TRUE(anyTableWaits());
    }
    EXPECT_TRUE(mendTable(*table)) << attempts;
    EXPECT_TRUE(table->isWhole()) << attempts;
    EXPECT_TRUE(mapsAll(*table, {{1, 2}, {3, 4}})) << attempts;
    EXPECT_FALSE(anyTableWaits());
    EXPECT_EQ(directory_.read("t.cmp"), compiledBytes({{1, 2}, {3, 4}}));
  }
}

TEST_F(SystemErrors, a_text_that_may_not_be_read_is_noted_and_not_compiled) {
  openToAll();
  directory_.writeTable("t.txt", "1 2\r\n3 4");
  shut("t.txt");
  EXPECT_EQ(asNobody([&] {
              auto table = tableOf("t.txt");
              if (ensureTableLoaded(table.get())) return 1;
              return isNoted(FaultSubject::kCodeTable, "t.txt", EACCES) ? 0 : 2;
            }),
            0);
  EXPECT_FALSE(directory_.has("t.cmp"));
}

TEST_F(SystemErrors, a_compiled_file_that_may_not_be_read_is_noted_only_where_there_is_no_text) {
  openToAll();
  directory_.writeTable("t.txt", "1 2\r\n3 4");
  for (const char* name : {"t.cmp", "alone.cmp"}) {
    directory_.write(name, compiledBytes({{1, 2}, {3, 4}}));
    shut(name);
  }
  EXPECT_EQ(asNobody([&] {
              auto table = tableOf("t.txt");
              if (!ensureTableLoaded(table.get()) || !mapsAll(*table, {{1, 2}, {3, 4}})) return 1;
              if (!nothingIsNoted()) return 2;
              auto alone = tableOf("alone.txt");
              if (ensureTableLoaded(alone.get())) return 3;
              return isNoted(FaultSubject::kCodeTable, "alone.cmp", EACCES) ? 0 : 4;
            }),
            0);
}

TEST_F(SystemErrors, a_rule_file_that_may_not_be_read_is_noted_and_left_out) {
  openToAll();
  directory_.writeRule("a.xml", charset("", "<name>a</name>"));
  directory_.writeRule("b.xml", charset("", "<name>b</name>"));
  shut("b.xml");
  EXPECT_EQ(asNobody([&] {
              if (cconvLoadRule() != 1) return 1;
              return isNoted(FaultSubject::kRuleFile, "b.xml", EACCES) ? 0 : 2;
            }),
            0);
}

TEST_F(SystemErrors, a_directory_that_may_not_be_listed_is_noted) {
  shut("");
  EXPECT_EQ(asNobody([&] {
              if (cconvLoadRule() != 0) return 1;
              return isNoted(FaultSubject::kCharsetDirectory, "", EACCES) ? 0 : 2;
            }),
            0);
  chmod(directory_.path("").c_str(), 0755);
}

TEST_F(SystemErrors, are_told_one_after_the_other_and_the_latest_64_of_many) {
  const uint64_t before = faultCount();
  for (int i = 0; i < 3; ++i)
    noteFault(FaultSubject::kRuleFile, std::string(static_cast<size_t>(i), 'r'), EIO);
  EXPECT_EQ(faultBehind(before).path, "");
  EXPECT_EQ(faultBehind(before + 2).path, "rr");
  EXPECT_EQ(faultBehind(before + 2).error, EIO);
  noteFault(FaultSubject::kRuleFile, "none", 0);
  EXPECT_EQ(faultCount(), before + 3) << "0 is no error";
  for (int i = 3; i < 100; ++i) noteFault(FaultSubject::kRuleFile, std::to_string(i), EIO);
  EXPECT_EQ(faultCount(), before + 100);
  EXPECT_EQ(faultBehind(before).path, "36");
  EXPECT_EQ(faultBehind(before + 99).path, "99");
  noteFault(FaultSubject::kRuleFile, std::string(1000, 'n'), EIO);
  EXPECT_EQ(faultBehind(before + 100).path, std::string(511, 'n'));
}

TEST_F(SystemErrors, may_be_noted_by_threads_at_once) {
  const uint64_t before = faultCount();
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < 1000; ++i)
        noteFault(FaultSubject::kRuleFile, std::string(100, static_cast<char>('a' + t)), EIO);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(faultCount(), before + 4000);
  for (uint64_t i = 0; i < 64; ++i) {
    const std::string path = faultBehind(faultCount() - 64 + i).path;
    EXPECT_EQ(path, std::string(100, path[0]));
  }
}

}  // namespace
}  // namespace ksv::test
