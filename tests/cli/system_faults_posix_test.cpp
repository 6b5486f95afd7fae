// Bound to POSIX: system errors behind the library's calls. Whatever fails, the command says so,
// and no text is replaced by what came of it.
#include <cstdlib>
#include <filesystem>

#include "command.h"

namespace ksv_cli_tests {
namespace {

namespace fs = std::filesystem;

class SystemFaults : public CommandTest {
 protected:
  // あいabc in Shift_JIS.
  const std::string text_ = bytes({0x82, 0xA0, 0x82, 0xA2, 'a', 'b', 'c', '\n'});

  // A charset directory that is the shipped one but for these files, which cannot be opened: links
  // that lead to themselves.
  void useDirectoryWithout(const std::vector<std::string>& names) {
    fs::create_directory(path("charset"));
    for (const auto& entry : fs::directory_iterator(charsetDirectory()))
      fs::create_symlink(entry.path(), placeOf(entry.path().filename()));
    for (const std::string& name : names) {
      fs::remove(placeOf(name));
      fs::create_symlink(name, placeOf(name));
    }
    setEnvironment("Charsetpath", path("charset"));
  }
  fs::path placeOf(const fs::path& name) const { return fs::path(path("charset")) / name; }

  static void expectTold(const Outcome& outcome, const std::string& subject) {
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.err.find(subject), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find(" cannot be read: Too many levels of symbolic links\n"),
              std::string::npos)
        << outcome.err;
  }
};

TEST_F(SystemFaults, of_a_code_table_leave_the_text_as_it_was) {
  useDirectoryWithout({"jis_x0208-1990.txt", "jis_x0208-1990.cmp"});
  const std::string told = "the code table " + placeOf("jis_x0208-1990.txt").string();
  write("a.txt", text_);
  expectTold(ksv({"convert", "-f", "sjis", "-t", "utf8", "--in-place", "a.txt"}),
             "ksv: a.txt: " + told);
  EXPECT_EQ(read("a.txt"), text_);
  expectTold(ksv({"convert", "-f", "sjis", "-t", "utf8"}, text_), told);
  expectTold(ksv({"convert", "-t", "utf8", "-o", "b.txt", "a.txt"}), told);
  EXPECT_EQ(files(), (std::vector<std::string>{"a.txt", "charset"}));
  // What does not rest on it is done.
  EXPECT_EQ(ksv({"convert", "-f", "latin1", "-t", "utf8"}, "a\xE9").out, "aé");
}

TEST_F(SystemFaults, of_a_compiled_table_do_not_matter_where_its_text_is_there) {
  useDirectoryWithout({"jis_x0208-1990.cmp"});
  EXPECT_EQ(ksv({"convert", "-f", "sjis", "-t", "utf8"}, text_).out, "あいabc\n");
}

TEST_F(SystemFaults, of_a_rule_file_are_told_instead_of_an_unknown_charset) {
  useDirectoryWithout({"shift_jis.xml"});
  expectTold(ksv({"convert", "-f", "sjis", "-t", "utf8"}, text_),
             "the rule file " + placeOf("shift_jis.xml").string());
}

// With one descriptor more each time, until all goes well.
TEST_F(SystemFaults, for_want_of_descriptors_leave_the_text_or_its_conversion) {
  if (KSV_UNDER_SANITIZERS) GTEST_SKIP() << "they need descriptors of their own";
  bool isDone = false;
  for (int descriptors = 4; descriptors < 20 && !isDone; ++descriptors) {
    write("a.txt", text_);
    const std::string command =
        "cd '" + path("") + "' && exec 2>err.txt && ulimit -n " + std::to_string(descriptors) +
        " && exec '" KSV_COMMAND "' convert -f sjis -t UTF-8 --in-place a.txt";
    const int status = std::system(command.c_str());
    isDone = status == 0;
    EXPECT_EQ(read("a.txt"), isDone ? "あいabc\n" : text_) << descriptors;
    EXPECT_EQ(read("err.txt").empty(), isDone) << descriptors << ": " << read("err.txt");
    EXPECT_EQ(files(), (std::vector<std::string>{"a.txt", "err.txt"})) << descriptors;
  }
  EXPECT_TRUE(isDone);
}

}  // namespace
}  // namespace ksv_cli_tests
