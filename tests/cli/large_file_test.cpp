// Memory does not grow with the text.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "command.h"
#include "tests/common/support.h"
#include "tests/system/system.h"

namespace ksv_cli_tests {
namespace {

constexpr long kMostKilobytes = 32 * 1024;

// The peak of a process begins with that of the one that starts it, and the tests that
// ran here before may have needed much: so another process, a new one, starts the command.
// Its arguments: a directory, files for standard error and the outcome, and the command's.
int startCommandAnew(const ksv::test::Arguments& arguments) {
  const Stream null = openNullDevice();
  const Stream err = openForAppending(arguments[1]);
  const Outcome outcome = finishCommand(
      startCommand(arguments[0], {arguments.begin() + 3, arguments.end()}, {null, null, err}));
  closeStreams({null, err});
  std::ofstream(ksv::test::pathOf(arguments[2])) << outcome.status << " " << outcome.peakKilobytes;
  return 0;
}
const ksv::test::ChildBody kStartAnew("start the command anew", startCommandAnew);

class LargeFile : public CommandTest {
 protected:
  void writeRepeated(const std::string& name, const std::string& line, size_t size) const {
    std::string block;
    while (block.size() < 1024 * 1024) block += line;
    std::ofstream file(path(name), std::ios::binary);
    for (size_t written = 0; written < size; written += block.size()) file << block;
  }

  Outcome ksvAnew(const std::vector<std::string>& arguments) const {
    const ksv::test::ScopedVariable charsets("Charsetpath", charsetDirectory());
    ksv::test::Arguments all = {path("."), path("err"), path("outcome")};
    all.insert(all.end(), arguments.begin(), arguments.end());
    write("err", "");
    EXPECT_EQ(ksv::test::ChildProcess::run(kStartAnew.name, all), 0);
    Outcome outcome;
    std::istringstream(read("outcome")) >> outcome.status >> outcome.peakKilobytes;
    outcome.err = read("err");
    return outcome;
  }

  static void expectLittleMemory(const Outcome& outcome) {
    EXPECT_GT(outcome.peakKilobytes, 0);
    EXPECT_LT(outcome.peakKilobytes, kMostKilobytes);
  }

  bool haveSameContent(const std::string& one, const std::string& other) const {
    std::ifstream first(path(one), std::ios::binary);
    std::ifstream second(path(other), std::ios::binary);
    return std::filesystem::file_size(path(one)) == std::filesystem::file_size(path(other)) &&
           std::equal(std::istreambuf_iterator<char>(first), {},
                      std::istreambuf_iterator<char>(second));
  }
};

TEST_F(LargeFile, converts_in_little_memory) {
  if (KSV_UNDER_SANITIZERS) GTEST_SKIP() << "the sanitizers keep memory of their own";
  // As after many tests in one process.
  const std::vector<char> much(4 * kMostKilobytes * 1024, 'x');
  const std::string line =
      bytes({0x93, 0xFA, 0x96, 0x7B, 0x8C, 0xEA, 0x82, 0xCC, ' ', 't', 'e', 'x', 't', 13, 10});
  writeRepeated("large", line, 64u << 20);
  const Outcome there = ksvAnew({"convert", "-f", "cp932", "-t", "utf8", "-o", "utf8", "large"});
  EXPECT_EQ(there.status, 0) << there.err;
  expectLittleMemory(there);
  const Outcome back = ksvAnew({"convert", "-f", "utf8", "-t", "cp932", "-o", "back", "utf8"});
  EXPECT_EQ(back.status, 0) << back.err;
  expectLittleMemory(back);
  EXPECT_TRUE(haveSameContent("large", "back"));
  EXPECT_EQ(much.back(), 'x');
}

TEST_F(LargeFile, of_mail_converts_in_little_memory) {
  if (KSV_UNDER_SANITIZERS) GTEST_SKIP() << "the sanitizers keep memory of their own";
  const std::pair<std::string, std::string> mails[] = {
      {"utf-7", "+ZeVnLIqe- and text\r\n"},
      {"iso-2022-jp", "\x1B$BF|K\\8l\x1B(B and text\r\n"},
  };
  const std::string line = bytes({0x93, 0xFA, 0x96, 0x7B, 0x8C, 0xEA}) + " and text\r\n";
  for (const auto& [charset, mail] : mails) {
    writeRepeated(charset, mail, 24u << 20);
    const Outcome outcome = ksvAnew({"convert", "-f", charset, "-t", "sjis", "-o", "out", charset});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    expectLittleMemory(outcome);
    const std::string head = ksv({"cut", "-c", "sjis", "-n", "1600", "out"}).out;
    for (size_t at = 0; at < head.size(); at += line.size())
      ASSERT_EQ(head.substr(at, line.size()), line.substr(0, head.size() - at)) << charset;
    EXPECT_EQ(std::filesystem::file_size(path("out")) / line.size(),
              std::filesystem::file_size(path(charset)) / mail.size());
  }
}

TEST_F(LargeFile, of_bad_bytes_only_is_skipped_in_little_memory) {
  if (KSV_UNDER_SANITIZERS) GTEST_SKIP() << "the sanitizers keep memory of their own";
  writeRepeated("bad",
                "\xFF"
                "a\xE3",
                16u << 20);
  const Outcome outcome =
      ksvAnew({"convert", "-f", "utf8", "-t", "utf8", "--invalid", "skip", "-o", "out", "bad"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  expectLittleMemory(outcome);
  writeRepeated("good", "a", std::filesystem::file_size(path("bad")) / 3);
  std::filesystem::resize_file(path("good"), std::filesystem::file_size(path("bad")) / 3);
  EXPECT_TRUE(haveSameContent("good", "out"));
}

TEST_F(LargeFile, names_an_offset_far_behind_the_beginning) {
  writeRepeated("large", "0123456789abcdef", 8u << 20);
  std::ofstream(path("large"), std::ios::binary | std::ios::app) << "\x81\x7F";
  const Outcome outcome = ksv({"convert", "-f", "sjis", "-t", "utf8", "-o", "out", "large"});
  EXPECT_EQ(outcome.err, "ksv: large: invalid Shift_JIS (0x81) at byte offset 8388608\n");
}

}  // namespace
}  // namespace ksv_cli_tests
