// summary and ole open what detect opens. Bound to POSIX: pipes, and names that are no
// UTF-8 or longer than the library takes.

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "command.h"
#include "tests/ole/property_set_writer.h"

namespace ksv_cli_tests {
namespace {

using namespace ksv::test;  // what makes the documents

class DocumentPaths : public CommandTest {
 protected:
  const std::string document_ = document(summary({text(2, "Title")}));
  const std::string line_ = "  Title                Title\n";

  void expectOpens(const std::string& name, const std::string& shown) const {
    EXPECT_EQ(ksv({"summary", name}).out, shown + "\n" + line_);
    EXPECT_EQ(ksv({"ole", "list", name}).out.substr(0, shown.size() + 1), shown + "\n");
    EXPECT_EQ(ksv({"ole", "cat", name, "\\x05SummaryInformation"}).status, 0);
  }
};

TEST_F(DocumentPaths, may_be_no_utf8) {
  const std::string name = bytes({0x93, 0xFA, 0x96, 0x7B});
  write(name, document_);
  expectOpens(name, name);
  EXPECT_EQ(ksv({"summary", "-t", "ISO-8859-1", name}).out, "???{\n" + line_);
}

TEST_F(DocumentPaths, may_be_longer_than_the_library_takes) {
  std::string name;
  for (int depth = 0; depth < 6; ++depth) {
    name += std::string(200, static_cast<char>('a' + depth)) + "/";
    std::filesystem::create_directory(path(name));
  }
  name += "document";
  write(name, document_);
  expectOpens(name, name);
}

TEST_F(DocumentPaths, may_be_standard_input_by_its_file) {
  if (!std::filesystem::exists("/dev/stdin")) GTEST_SKIP() << "no /dev/stdin";
  EXPECT_EQ(ksv({"summary", "/dev/stdin"}, document_).out, "/dev/stdin\n" + line_);
  const Pipe pipe = makePipe();
  const Stream null = openNullDevice();
  const Stream out = openForAppending(path("out"));
  const Process process = start({"summary", "/dev/stdin"}, {pipe.reading, out, null});
  writeTo(pipe.writing, document_);
  closeStreams({pipe.writing});
  EXPECT_EQ(finishCommand(process).status, 0);
  closeStreams({pipe.reading, null, out});
  EXPECT_EQ(read("out"), "/dev/stdin\n" + line_);
}

// As a shell hands on what it substitutes for a process.
TEST_F(DocumentPaths, may_be_pipes) {
  ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"summary", "pipe"}, {"ole", "list", "pipe"}}) {
    std::thread writer([this] { std::ofstream(path("pipe"), std::ios::binary) << document_; });
    const Outcome outcome = ksv(arguments);
    writer.join();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out.substr(0, 5), "pipe\n");
  }
  EXPECT_EQ(files(), (std::vector<std::string>{"pipe"}));
}

}  // namespace
}  // namespace ksv_cli_tests
