// Where the results of ksv convert go.

#include <filesystem>

#include "command.h"

namespace ksv_cli_tests {
namespace {

class ConvertOutput : public CommandTest {};

const std::string kA = bytes({0x82, 0xA0});

TEST_F(ConvertOutput, goes_to_the_file_named) {
  write("in", "あ");
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "out", "in"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(read("out"), kA);
  EXPECT_EQ(files(), (std::vector<std::string>{"in", "out"}));
}

TEST_F(ConvertOutput, goes_to_standard_output_for_a_hyphen) {
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "-"}, "あ").out, kA);
  EXPECT_TRUE(files().empty());
}

TEST_F(ConvertOutput, goes_into_a_directory_under_the_names_of_the_inputs) {
  std::filesystem::create_directories(path("from/deep"));
  write("from/a", "あ");
  write("from/deep/b", "い");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--output-dir", "to/new", "from/a",
                 "from/deep/b"})
                .status,
            0);
  EXPECT_EQ(files("to/new"), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(read("to/new/a"), kA);
}

TEST_F(ConvertOutput, replaces_its_input_in_place) {
  write("a", "あ");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place", "a"}).status, 0);
  EXPECT_EQ(read("a"), kA);
  EXPECT_EQ(files(), (std::vector<std::string>{"a"}));
}

TEST_F(ConvertOutput, keeps_the_original_under_the_suffix) {
  write("a", "あ");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place=.orig", "a"}).status, 0);
  EXPECT_EQ(read("a"), kA);
  EXPECT_EQ(read("a.orig"), "あ");
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "a.orig"}));
}

TEST_F(ConvertOutput, overwrites_no_backup_and_leaves_its_file) {
  write("a", "あ");
  write("a.orig", "an older backup");
  write("b", "あ");
  const Outcome outcome =
      ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place=.orig", "a", "b"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: a: cannot write a: the backup a.orig exists already\n");
  EXPECT_EQ(read("a"), "あ");
  EXPECT_EQ(read("a.orig"), "an older backup");
  EXPECT_EQ(read("b"), kA);
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "a.orig", "b", "b.orig"}));
}

TEST_F(ConvertOutput, keeps_no_original_of_a_file_that_stays_the_same) {
  write("a", "plain\n");
  write("a.orig", "an older backup");
  write("b", "plain\n");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place=.orig", "a", "b"}).status, 0);
  EXPECT_EQ(read("a.orig"), "an older backup");
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "a.orig", "b"}));
}

TEST_F(ConvertOutput, in_place_does_not_take_a_file_for_the_suffix) {
  write("a", "あ");
  write("b", "あ");
  EXPECT_EQ(ksv({"convert", "--in-place", "a", "-f", "utf8", "-t", "sjis", "b"}).status, 0);
  EXPECT_EQ(read("a"), kA);
  EXPECT_EQ(read("b"), kA);
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "b"}));
}

TEST_F(ConvertOutput, refuses_to_read_what_it_writes_to) {
  write("a", "あ");
  const StandardStreams streams = {openNullDevice(), openForAppending(path("a")),
                                   openForAppending(path("err"))};
  EXPECT_EQ(finishCommand(start({"convert", "-f", "utf8", "-t", "utf8", "a"}, streams)).status, 1);
  closeStreams({streams.in, streams.out, streams.err});
  EXPECT_EQ(read("a"), "あ");
  EXPECT_EQ(read("err"), "ksv: a: is standard output as well\n");
}

TEST_F(ConvertOutput, says_nothing_about_a_reader_that_has_gone) {
  write("a", std::string(1000000, 'a'));
  const Pipe pipe = makePipe();
  closeStreams({pipe.reading});
  const StandardStreams streams = {openNullDevice(), pipe.writing, openForAppending(path("err"))};
  const Outcome outcome = finishCommand(
      start({"convert", "-f", "utf8", "-t", "utf8", "-j", "2", "a", "a", "a"}, streams));
  closeStreams({streams.in, streams.out, streams.err});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(read("err"), "");
}

// A pipe hands out what there is, in pieces of any size.
TEST_F(ConvertOutput, follows_a_pipe_to_its_end) {
  const Pipe pipe = makePipe();
  const StandardStreams streams = {pipe.reading, openForAppending(path("out")),
                                   openForAppending(path("err"))};
  const Process process = start({"convert", "-f", "utf8", "-t", "sjis"}, streams);
  for (const std::string piece : {"a", "\xE3", "\x81\x82", "b"}) writeTo(pipe.writing, piece);
  closeStreams({pipe.writing});
  EXPECT_EQ(finishCommand(process).status, 0);
  closeStreams({streams.in, streams.out, streams.err});
  EXPECT_EQ(read("out"), "a" + kA + "b");
  EXPECT_EQ(read("err"), "");
}

}  // namespace
}  // namespace ksv_cli_tests
