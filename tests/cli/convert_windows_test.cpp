// Bound to Windows: names without regard to case, read-only files, files that
// another program keeps to itself, wild cards that no shell has expanded, devices
// with names of their own, and paths above the usual limit.

#include <windows.h>

#include <filesystem>

#include "command.h"
#include "tests/common/support.h"
#include "tests/system/wide_windows.h"

namespace ksv_cli_tests {
namespace {

using ksv::test::pathOf;

class ConvertOnWindows : public CommandTest {
 protected:
  std::wstring widePath(const std::string& name) const { return ksv::test::wide(path(name)); }

  void setAttributes(const std::string& name, DWORD attributes) const {
    EXPECT_TRUE(::SetFileAttributesW(widePath(name).c_str(), attributes));
  }
  DWORD attributes(const std::string& name) const {
    return ::GetFileAttributesW(widePath(name).c_str());
  }
};

TEST_F(ConvertOnWindows, leaves_a_read_only_file_as_it_is) {
  write("out", "older");
  setAttributes("out", FILE_ATTRIBUTE_READONLY);
  const Outcome onto = ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "out"}, "a");
  EXPECT_EQ(onto.status, 1);
  EXPECT_EQ(onto.err, "ksv: standard input: cannot write out: Permission denied\n");
  const Outcome inPlace = ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place=.bak", "out"});
  EXPECT_EQ(inPlace.status, 1);
  EXPECT_EQ(inPlace.err, "ksv: out: cannot write out: Permission denied\n");
  EXPECT_EQ(read("out"), "older");
  EXPECT_EQ(files(), (std::vector<std::string>{"out"}));
  setAttributes("out", FILE_ATTRIBUTE_NORMAL);
}

TEST_F(ConvertOnWindows, leaves_a_file_that_another_program_keeps_to_itself) {
  write("used", "older");
  const HANDLE user = ::CreateFileW(widePath("used").c_str(), GENERIC_READ, 0, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(user, INVALID_HANDLE_VALUE);
  const Outcome from = ksv({"convert", "-f", "utf8", "-t", "sjis", "used"});
  EXPECT_EQ(from.status, 1);
  EXPECT_EQ(from.err, "ksv: used: Device or resource busy\n");
  const Outcome onto = ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "used"}, "a");
  EXPECT_EQ(onto.status, 1);
  EXPECT_EQ(onto.err, "ksv: standard input: cannot write used: Device or resource busy\n");
  ::CloseHandle(user);
  EXPECT_EQ(read("used"), "older");
  EXPECT_EQ(files(), (std::vector<std::string>{"used"}));
}

TEST_F(ConvertOnWindows, keeps_the_attributes_of_the_file_it_replaces) {
  write("out", "older");
  setAttributes("out", FILE_ATTRIBUTE_HIDDEN);
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "out"}, "a").status, 0);
  EXPECT_EQ(read("out"), "a");
  EXPECT_NE(attributes("out") & FILE_ATTRIBUTE_HIDDEN, 0u);
}

TEST_F(ConvertOnWindows, reads_and_writes_the_null_device) {
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "NUL"}, "a").status, 0);
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "NUL"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "");
  EXPECT_TRUE(files().empty());
}

TEST_F(ConvertOnWindows, does_not_change_the_null_device_in_place) {
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place", "NUL"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: NUL: is not a regular file\n");
}

TEST_F(ConvertOnWindows, expands_wild_cards_of_the_last_component) {
  std::filesystem::create_directories(pathOf(path("中/一.txt.d")));
  for (const std::string name : {"中/二.TXT", "中/一.txt", "中/三.doc"}) write(name, name);
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8", "中/*.txt"}).out, "中/一.txt中/二.TXT");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8", "中\\三.d?c"}).out, "中/三.doc");
  const Outcome none = ksv({"convert", "-f", "utf8", "-t", "utf8", "中/*.c"});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.err, "ksv: 中/*.c: No such file or directory\n");
}

TEST_F(ConvertOnWindows, sees_that_names_differ_in_case_and_separators_only) {
  std::filesystem::create_directory(pathOf(path("dir")));
  write("Ä", "a");
  write("dir/ä", "b");
  const Outcome twice =
      ksv({"convert", "-f", "utf8", "-t", "utf8", "--output-dir", "x", "Ä", "dir\\ä"});
  EXPECT_EQ(twice.status, 2);
  EXPECT_NE(twice.err.find("would be written twice"), std::string::npos) << twice.err;
  const Outcome itself = ksv({"convert", "-f", "utf8", "-t", "utf8", "-o", "DIR/.\\Ä", "dir/ä"});
  EXPECT_EQ(itself.status, 2);
  EXPECT_NE(itself.err.find("is an input as well"), std::string::npos) << itself.err;
}

TEST_F(ConvertOnWindows, joins_paths_with_a_backslash) {
  write("a", "a");
  std::filesystem::create_directories(pathOf(path("to/a")));
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8", "--output-dir", "to", "a"}).err,
            "ksv: a: cannot write to\\a: Is a directory\n");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8", "--output-dir", "to/", "a"}).err,
            "ksv: a: cannot write to/a: Is a directory\n");
}

TEST_F(ConvertOnWindows, follows_paths_above_the_usual_limit) {
  std::string directory;
  for (int depth = 0; depth < 6; ++depth)
    directory += (depth == 0 ? "" : "/") + std::string(60, static_cast<char>('a' + depth));
  write("in", "あ");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--output-dir", directory, "in"}).err, "");
  const std::string there = directory + "/in";
  EXPECT_EQ(ksv({"convert", "-f", "sjis", "-t", "utf8", "--in-place=.bak", there}).err, "");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8", there}).out, "あ");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8", there + ".bak"}).status, 1);
  // The usual form of a path cannot name what is to be removed.
  for (const std::string& file : {there, there + ".bak"}) {
    const std::wstring name = L"\\\\?\\" + pathOf(path(file)).make_preferred().wstring();
    EXPECT_TRUE(::DeleteFileW(name.c_str()));
  }
  for (std::string left = directory; !left.empty();
       left.resize(left.find_last_of('/') == std::string::npos ? 0 : left.find_last_of('/'))) {
    const std::wstring name = L"\\\\?\\" + pathOf(path(left)).make_preferred().wstring();
    EXPECT_TRUE(::RemoveDirectoryW(name.c_str()));
  }
}

TEST_F(ConvertOnWindows, reads_a_named_pipe_once) {
  const std::string name = "\\\\.\\pipe\\ksv-" + std::to_string(::GetCurrentProcessId());
  const HANDLE server = ::CreateNamedPipeW(ksv::test::wide(name).c_str(),
                                           PIPE_ACCESS_OUTBOUND | FILE_FLAG_FIRST_PIPE_INSTANCE,
                                           PIPE_TYPE_BYTE | PIPE_NOWAIT, 1, 4096, 4096, 0, nullptr);
  ASSERT_NE(server, INVALID_HANDLE_VALUE);
  const StandardStreams streams = {openNullDevice(), openForAppending(path("out")),
                                   openForAppending(path("err"))};
  const Process process = start({"convert", "-f", "utf8", "-t", "sjis", name}, streams);
  EXPECT_TRUE(ksv::test::waitUntil([server] {
    return ::ConnectNamedPipe(server, nullptr) || ::GetLastError() == ERROR_PIPE_CONNECTED;
  }));
  writeTo(reinterpret_cast<Stream>(server), "あ");
  ::FlushFileBuffers(server);
  ::CloseHandle(server);
  EXPECT_EQ(finishCommand(process).status, 0);
  closeStreams({streams.in, streams.out, streams.err});
  EXPECT_EQ(read("out"), bytes({0x82, 0xA0}));
  EXPECT_EQ(read("err"), "");
}

}  // namespace
}  // namespace ksv_cli_tests
