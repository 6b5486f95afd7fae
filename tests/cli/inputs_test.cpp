// Which files a job works on that takes several.
#include <algorithm>
#include <filesystem>
#include <sstream>

#include "command.h"
#include "tests/common/support.h"
#include "tests/ole/property_set_writer.h"

namespace ksv_cli_tests {
namespace {

using ksv::test::pathOf;
using Names = std::vector<std::string>;

class JobInputs : public CommandTest {
 protected:
  void writeTree(const Names& names) const {
    for (const std::string& name : names) {
      std::filesystem::create_directories(pathOf(path(name)).parent_path());
      write(name, "plain\n");
    }
  }

  // The names in front of the lines that check writes, with '/' between their components.
  static Names namesIn(const std::string& out) {
    Names names;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) {
      std::string name = line.substr(0, line.find('\t'));
      std::replace(name.begin(), name.end(), '\\', '/');
      names.push_back(name);
    }
    return names;
  }

  Names found(Names arguments) const {
    arguments.insert(arguments.begin(), "check");
    const Outcome outcome = ksv(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return namesIn(outcome.out);
  }
};

TEST_F(JobInputs, below_a_directory_come_in_the_order_of_their_bytes_directory_by_directory) {
  writeTree({"d/b/z", "d/b/a", "d/a.txt", "d/C", "d/b.txt", "d/.hidden", "e"});
  const Names expected = {"d/.hidden", "d/C", "d/a.txt", "d/b/a", "d/b/z", "d/b.txt", "e"};
  EXPECT_EQ(found({"-r", "d", "e"}), expected);
  EXPECT_EQ(found({"--recursive", "d/", "e", "-j", "4"}), expected);
  EXPECT_EQ(found({"-r", "d/b", "d/C"}), (Names{"d/b/a", "d/b/z", "d/C"}));
}

TEST_F(JobInputs, are_none_below_an_empty_directory) {
  std::filesystem::create_directory(pathOf(path("empty")));
  const Outcome outcome = ksv({"check", "-r", "empty"}, "standard input is not read");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out + outcome.err, "");
}

TEST_F(JobInputs, are_no_directories_unless_they_are_asked_for) {
  writeTree({"d/a"});
  const Outcome outcome = ksv({"check", "d"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: d: Is a directory\n");
}

TEST_F(JobInputs, below_directories_are_those_that_are_included_and_not_excluded) {
  writeTree({"d/a.txt", "d/a.c", "d/x/b.txt", "d/x/b.c", "d/y/b.txt", "d/y/z/b.txt"});
  EXPECT_EQ(found({"-r", "d", "--include", "*.c"}), (Names{"d/a.c", "d/x/b.c"}));
  EXPECT_EQ(found({"-r", "d", "--include", "*.c", "--include=a.*"}),
            (Names{"d/a.c", "d/a.txt", "d/x/b.c"}));
  EXPECT_EQ(found({"-r", "d", "--include", "*.txt", "--exclude", "y/*.txt"}),
            (Names{"d/a.txt", "d/x/b.txt", "d/y/z/b.txt"}));
  EXPECT_EQ(found({"-r", "d", "--exclude", "*.txt", "--include", "*.txt"}), Names());
  EXPECT_EQ(found({"-r", "d", "--exclude", "x", "--exclude", "y/z"}),
            (Names{"d/a.c", "d/a.txt", "d/y/b.txt"}));
  EXPECT_EQ(found({"-r", "d", "--exclude", "[xy]/"}), (Names{"d/a.c", "d/a.txt"}));
  EXPECT_EQ(found({"-r", "d/x", "--include", "*.txt", "--exclude", "d/**", "d/a.c"}),
            (Names{"d/x/b.txt", "d/a.c"}))
      << "a pattern is matched below the directory, and what is named itself is taken";
}

TEST_F(JobInputs, are_named_by_lists_of_which_directories_are_entered_as_well) {
  writeTree({"d/a", "d/b", "c"});
  write("list", "d\r\n\nc\n");
  write("nuls", std::string("d\0c", 3));
  EXPECT_EQ(found({"-r", "--files-from", "list"}), (Names{"d/a", "d/b", "c"}));
  EXPECT_EQ(found({"--files-from", "nuls", "--null", "-r", "c"}), (Names{"c", "d/a", "d/b", "c"}));
  EXPECT_EQ(ksv({"check", "--files-from", "list"}).err, "ksv: d: Is a directory\n");
}

TEST_F(JobInputs, are_no_files_with_passing_names) {
  writeTree({"d/.ksv-0123456789ab", "d/.ksv-0123456789a", "d/.ksv-0123456789aZ", "d/.ksv-file"});
  EXPECT_EQ(found({"-r", "d"}),
            (Names{"d/.ksv-0123456789a", "d/.ksv-0123456789aZ", "d/.ksv-file"}));
}

TEST_F(JobInputs, of_every_job_that_takes_several_are_found_alike) {
  writeTree({"d/a", "d/x/b"});
  write("list", "d\n");
  const Names options = {"-r", "--files-from", "list", "--exclude", "x"};
  for (Names job : {Names{"detect"}, {"check"}, {"convert", "-f", "utf8", "-t", "utf8"}}) {
    job.insert(job.end(), options.begin(), options.end());
    const Outcome outcome = ksv(job);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1) << outcome.out;
  }
  const std::string document =
      ksv::test::document(ksv::test::summary({ksv::test::text(2, "Title")}));
  write("d/a", document);
  Names job = {"summary", "--json"};
  job.insert(job.end(), options.begin(), options.end());
  const std::string out = ksv(job).out;
  EXPECT_NE(out.find("\"title\":\"Title\""), std::string::npos) << out;
}

TEST_F(JobInputs, that_are_sought_by_patterns_need_directories) {
  for (const std::string option : {"--include", "--exclude"}) {
    const Outcome outcome = ksv({"check", option, "*"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("--include and --exclude are for -r only"), std::string::npos)
        << outcome.err;
  }
}

TEST_F(JobInputs, are_not_those_in_the_directory_of_the_results) {
  writeTree({"a", "x/b"});
  const Names call = {"convert", "-f", "utf8",         "-t",      "utf8",
                      "-r",      ".",  "--output-dir", "./x/out", "--keep-tree"};
  for (int round = 0; round < 2; ++round) {
    const Outcome outcome = ksv(call);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(files("x/out"), (Names{"a", "x"}));
    EXPECT_EQ(files("x/out/x"), (Names{"b"}));
  }
}

TEST_F(JobInputs, of_a_tree_of_many_files_are_all_there) {
  constexpr int kDirectories = 20;
  constexpr int kFiles = 100;
  Names expected;
  for (int directory = 10; directory < 10 + kDirectories; ++directory) {
    const std::string name = "d/" + std::to_string(directory);
    std::filesystem::create_directories(pathOf(path(name)));
    for (int file = 100; file < 100 + kFiles; ++file) {
      write(name + "/" + std::to_string(file), "a");
      expected.push_back(name + "/" + std::to_string(file));
    }
  }
  EXPECT_EQ(found({"-r", "d", "-j", "3"}), expected);
}

}  // namespace
}  // namespace ksv_cli_tests
