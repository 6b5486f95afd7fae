// Results that stand below --output-dir as their inputs do in their tree.
#include "cli/jobs/kept_tree.h"

#include <filesystem>

#include "cli/system/failure.h"
#include "cli/system/paths.h"
#include "command.h"
#include "tests/common/support.h"

namespace ksv_cli_tests {
namespace {

using ksv::test::pathOf;
using Names = std::vector<std::string>;

const std::string kConvertedA = bytes({0x82, 0xA0});

class KeptTree : public CommandTest {
 protected:
  void writeDeep(const std::string& name, const std::string& content) const {
    std::filesystem::create_directories(pathOf(path(name)).parent_path());
    write(name, content);
  }

  Outcome convert(Names arguments) const {
    const Names before = {"convert", "-f",           "utf8", "-t",
                          "sjis",    "--output-dir", "to",   "--keep-tree"};
    arguments.insert(arguments.begin(), before.begin(), before.end());
    return ksv(arguments);
  }
};

TEST_F(KeptTree, is_that_below_a_directory_that_is_named) {
  writeDeep("from/a", "あ");
  writeDeep("from/x/y/a", "ああ");
  EXPECT_EQ(convert({"-r", "from", "-j", "4"}).err, "");
  EXPECT_EQ(files("to"), (Names{"a", "x"}));
  EXPECT_EQ(read("to/a"), kConvertedA);
  EXPECT_EQ(read("to/x/y/a"), kConvertedA + kConvertedA);
  EXPECT_EQ(convert({"-r", "./from/x/"}).err, "");
  EXPECT_EQ(read("to/y/a"), kConvertedA + kConvertedA);
}

TEST_F(KeptTree, is_the_path_of_a_file_that_is_named) {
  writeDeep("x/y/a", "あ");
  writeDeep("b", "あ");
  EXPECT_EQ(convert({"x/y/a", "./x/.././b"}).err, "");
  EXPECT_EQ(files("to"), (Names{"b", "x"}));
  EXPECT_EQ(read("to/x/y/a"), kConvertedA);
  EXPECT_EQ(read("to/b"), kConvertedA);
}

TEST_F(KeptTree, of_an_absolute_path_begins_behind_its_root) {
  writeDeep("x/a", "あ");
  EXPECT_EQ(convert({path("x/a")}).err, "");
  const std::string place = ksv_cli::platform::withoutRoot(path("x/a"));
  EXPECT_EQ(read("to/" + place), kConvertedA);
  EXPECT_EQ(convert({"-r", path("x")}).err, "");
  EXPECT_EQ(read("to/a"), kConvertedA) << "of what is below a directory only that counts";
}

TEST_F(KeptTree, is_never_left) {
  writeDeep("d/a", "あ");
  writeDeep("b", "あ");
  for (const Names& names : {Names{"d/../../b"}, {"b", "../b"}, {"d/a/../../../x/b"}}) {
    const Outcome outcome = convert(names);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find(names.back() + " leads out of the directory of the results"),
              std::string::npos)
        << outcome.err;
    EXPECT_FALSE(exists("to"));
  }
}

TEST(PlaceInTree, takes_names_of_dots_and_blanks_for_what_the_system_does) {
  const bool areLeftOut = ksv_cli::platform::backslashSeparates();
  for (const std::string path : {".. /a", "... /a", "x/.. ./../a"}) {
    if (areLeftOut) {
      EXPECT_THROW(ksv_cli::placeInTree(path, 0), ksv_cli::UsageError) << path;
    } else {
      EXPECT_NO_THROW(ksv_cli::placeInTree(path, 0)) << path;
    }
  }
  EXPECT_EQ(ksv_cli::placeInTree("./a", 0), "a");
  EXPECT_EQ(ksv_cli::placeInTree("b/..", 0), "") << "it is no file";
}

TEST_F(KeptTree, has_one_result_in_a_place) {
  writeDeep("x/a", "あ");
  writeDeep("y/a", "あ");
  const Outcome outcome = convert({"-r", "x", "y"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_NE(outcome.err.find("a would be written twice"), std::string::npos) << outcome.err;
  EXPECT_FALSE(exists("to"));
  EXPECT_EQ(convert({"x/a", "y/a"}).status, 0);
  EXPECT_EQ(files("to"), (Names{"x", "y"}));
}

TEST_F(KeptTree, makes_no_directory_for_what_cannot_be_read) {
  EXPECT_EQ(convert({"x/none"}).status, 1);
  EXPECT_EQ(files("to"), Names());
}

TEST_F(KeptTree, needs_a_directory_where_a_file_stands) {
  writeDeep("to/x", "a file");
  writeDeep("x/a", "あ");
  writeDeep("y/a", "あ");
  const Outcome outcome = convert({"x/a", "y/a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.err.starts_with("ksv: x/a: the directory to")) << outcome.err;
  EXPECT_TRUE(outcome.err.ends_with("x cannot be made: Not a directory\n")) << outcome.err;
  EXPECT_EQ(read("to/x"), "a file");
  EXPECT_EQ(read("to/y/a"), kConvertedA) << "the others are done";
}

TEST_F(KeptTree, is_for_a_directory_of_results_only) {
  write("a", "あ");
  for (const Names& place : {Names{}, {"-o", "b"}, {"--in-place"}}) {
    Names call = {"convert", "-f", "utf8", "-t", "sjis", "--keep-tree", "a"};
    call.insert(call.end(), place.begin(), place.end());
    const Outcome outcome = ksv(call);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("--keep-tree is for --output-dir only"), std::string::npos);
  }
}

TEST_F(KeptTree, does_not_go_through_links) {
  writeDeep("x/a", "あ");
  writeDeep("elsewhere/b", "b");
  std::filesystem::create_directory(pathOf(path("to")));
  std::error_code error;
  std::filesystem::create_directory_symlink("../elsewhere", pathOf(path("to/x")), error);
  if (error) GTEST_SKIP() << "this system makes no links: " << error.message();
  const Outcome outcome = convert({"x/a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.err.ends_with("x cannot be made: a symbolic link has its name\n"))
      << outcome.err;
  EXPECT_EQ(files("elsewhere"), (Names{"b"}));
}

TEST_F(KeptTree, may_begin_at_a_link_that_is_named) {
  writeDeep("x/a", "あ");
  writeDeep("elsewhere/b", "b");
  std::error_code error;
  std::filesystem::create_directory_symlink("elsewhere", pathOf(path("to")), error);
  if (error) GTEST_SKIP() << "this system makes no links: " << error.message();
  EXPECT_EQ(convert({"x/a"}).err, "");
  EXPECT_EQ(read("elsewhere/x/a"), kConvertedA);
}

}  // namespace
}  // namespace ksv_cli_tests
