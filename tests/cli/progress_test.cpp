// Progress shows on a terminal only. The tests of each system make one; here is
// what needs none.

#include "cli/system/console.h"
#include "cli/system/name_characters.h"
#include "cli/system/progress_line.h"
#include "command.h"

namespace ksv_cli_tests {
namespace {

class ShownProgress : public CommandTest {};

TEST_F(ShownProgress, is_not_shown_where_standard_error_is_no_terminal) {
  write("a", "a");
  write("b", "b");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "a", "b"}).err, "");
}

using ksv_cli::columnsOf;
using ksv_cli::fittedInto;
using ksv_cli::Progress;
using ksv_cli::progressLine;

TEST(ProgressLine, tells_files_bytes_rate_and_what_is_left) {
  const Progress progress = {3, 10, 1'500'000, 6'000'000, 0.5, "dir/a.txt"};
  EXPECT_EQ(progressLine(progress, 79),
            "3/10 files, 1.5 of 6.0 MB, 3.0 MB/s, 0:02 left  dir/a.txt");
}

TEST(ProgressLine, leaves_out_what_is_not_known) {
  EXPECT_EQ(progressLine({0, 2, 3, 10, 0.0, ""}, 79), "0/2 files, 0.0 of 0.0 MB");
  EXPECT_EQ(progressLine({0, 1, 100'000'000, 0, 10.0, "standard input"}, 79),
            "100.0 MB, 10.0 MB/s  standard input");
  EXPECT_EQ(progressLine({1, 2, 9'000'000, 8'000'000, 3.0, ""}, 79), "1/2 files, 9.0 MB, 3.0 MB/s")
      << "there was more than was known";
}

TEST(ProgressLine, tells_hours) {
  EXPECT_EQ(progressLine({0, 1, 1'000'000, 3'724'000'000, 1.0, ""}, 79),
            "1.0 of 3724.0 MB, 1.0 MB/s, 1:02:03 left");
  EXPECT_EQ(progressLine({0, 1, 1'000'000, UINT64_MAX, 100.0, ""}, 79),
            "1.0 of 18446744073709.6 MB, 0.0 MB/s, 100:00:00 left");
}

TEST(ProgressLine, fits_into_every_width) {
  std::string name = "ディレクトリ/";
  for (int i = 0; i < 20; ++i) name += "吾輩は猫である";
  const Progress progress = {3, 10, 1'500'000, 6'000'000, 0.5, name};
  for (size_t columns = 0; columns < 300; ++columns)
    EXPECT_LE(columnsOf(progressLine(progress, columns)), columns);
  EXPECT_EQ(progressLine(progress, 11), "3/10 files");
  EXPECT_EQ(progressLine(progress, 70),
            "3/10 files, 1.5 of 6.0 MB, 3.0 MB/s, 0:02 left  ディレク...は猫である");
}

TEST(Columns, are_two_of_a_wide_character_and_none_of_a_mark_over_another) {
  EXPECT_EQ(columnsOf("abc"), 3u);
  EXPECT_EQ(columnsOf("\u732B\uFF21\uAC00\U0001F408\U00020BB7"), 10u);
  EXPECT_EQ(columnsOf("\uFF76\uFF9E"), 2u) << "half-width katakana";
  EXPECT_EQ(columnsOf("\u304B\u3099e\u0301"), 3u);
  EXPECT_EQ(columnsOf("\xFF\xE3\x81"), 3u);
}

TEST(FittedName, is_cut_in_its_middle_between_characters) {
  EXPECT_EQ(fittedInto(9, "directory"), "directory");
  EXPECT_EQ(fittedInto(8, "directory"), "di...ory");
  EXPECT_EQ(fittedInto(3, "directory"), "...");
  EXPECT_EQ(fittedInto(0, "directory"), "");
  EXPECT_EQ(fittedInto(8, "\u5409\u5409\u5409\u5409\u5409"), "\u5409...\u5409");
  EXPECT_EQ(fittedInto(9,
                       "a\xFF"
                       "b"),
            "a?b")
      << "a terminal may take a lone byte for anything";
}

TEST(LineChange, wipes_what_is_longer_than_the_new_line) {
  EXPECT_EQ(ksv_cli::lineChange(5, "abc", true), "\rabc\x1B[K");
  EXPECT_EQ(ksv_cli::lineChange(5, "abc", false), "\rabc  \b\b");
  EXPECT_EQ(ksv_cli::lineChange(2, "abc", false), "\rabc");
  EXPECT_EQ(ksv_cli::lineChange(3, "", false), "\r   \b\b\b");
  EXPECT_EQ(ksv_cli::lineChange(5, "\u732B", false), "\r\u732B   \b\b\b") << "two columns";
}

}  // namespace
}  // namespace ksv_cli_tests
