// Runs with a manifest over trees of files.
#include <filesystem>

#include "command.h"
#include "tests/common/support.h"

namespace ksv_cli_tests {
namespace {

using Names = std::vector<std::string>;

class TreeRun : public CommandTest {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(ksv::test::pathOf(path("in/sub")));
    write("in/a", bytes({0x82, 0xA0}));
    write("in/sub/b", bytes({0x82, 0xA0, 0x82, 0xA2}));
    write("in/valid", "あ");
  }

  Outcome run(const Names& further) const {
    Names call = {"convert",      "-f",        "sjis",       "-t", "utf8",    "-r",
                  "--skip-valid", "--verbose", "--manifest", "m",  "--resume"};
    call.insert(call.end(), further.begin(), further.end());
    return ksv(call);
  }

  static bool tells(const Outcome& outcome, const std::string& words) {
    return outcome.err.find(words) != std::string::npos;
  }
};

TEST_F(TreeRun, goes_on_with_a_tree_of_results) {
  const Names call = {"--output-dir", "out", "--keep-tree", "in"};
  EXPECT_TRUE(tells(run(call), "3 files: 2 converted, 0 unchanged, 1 skipped, 0 failed"));
  std::filesystem::remove(ksv::test::pathOf(path("out/sub/b")));
  std::filesystem::remove(ksv::test::pathOf(path("out/valid")));
  const Outcome again = run(call);
  EXPECT_EQ(again.status, 0) << again.err;
  EXPECT_TRUE(tells(again, "3 files: 2 converted, 0 unchanged, 1 skipped, 0 failed"));
  EXPECT_EQ(read("out/sub/b"), "あい") << "what is missing is made again";
  EXPECT_EQ(read("out/valid"), "あ");
}

TEST_F(TreeRun, leaves_its_manifest_and_originals_out_of_the_tree) {
  for (int round = 0; round < 3; ++round) {
    const Outcome outcome = run({"--in-place=.bak", "."});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_TRUE(tells(outcome, "3 files: 2 converted, 0 unchanged, 1 skipped, 0 failed"))
        << outcome.err;
  }
  EXPECT_EQ(read("in/a"), "あ");
  EXPECT_EQ(files("in"), (Names{"a", "a.bak", "sub", "valid"}));
  EXPECT_EQ(ksv({"convert", "--undo", "m"}).status, 0);
  EXPECT_EQ(read("in/a"), bytes({0x82, 0xA0}));
  EXPECT_EQ(read("in/valid"), "あ");
}

TEST_F(TreeRun, tells_a_text_that_was_skipped_and_has_changed_since) {
  EXPECT_EQ(run({"--in-place", "in"}).status, 0);
  write("in/valid", "い");
  const Outcome outcome = run({"--in-place", "in"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(tells(outcome, "valid: it has been changed")) << outcome.err;
  EXPECT_EQ(read("in/valid"), "い");
}

TEST_F(TreeRun, is_gone_on_with_by_the_options_that_decide_what_comes_out) {
  const Names call = {"--output-dir", "out", "--keep-tree", "in"};
  EXPECT_EQ(run(call).status, 0);
  const Outcome flat = run({"--output-dir", "out", "in"});
  EXPECT_EQ(flat.status, 2);
  EXPECT_TRUE(tells(flat, "--keep-tree")) << flat.err;
  Names fixing = call;
  fixing.insert(fixing.begin(), "--fix-declaration");
  EXPECT_TRUE(tells(run(fixing), "--fix-declaration"));
}

TEST_F(TreeRun, has_a_record_of_each_text_that_was_left_as_it_is) {
  const Outcome outcome = ksv({"convert", "-f", "sjis", "-t", "utf8", "--skip-valid", "--json",
                               "--in-place", "-r", "in/valid", "in/none"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.out.find("\"found\":\"it is valid UTF-8 already\",\"target\":\"UTF-8\","
                             "\"result\":\"skipped\""),
            std::string::npos)
      << outcome.out;
  EXPECT_NE(outcome.out.find("{\"path\":\"in/none\","), std::string::npos);
}

}  // namespace
}  // namespace ksv_cli_tests
