// Bound to POSIX: processes without compiled tables on a disk that takes nothing more.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "tests/common/temporary_directory.h"
#include "tests/convert/converter.h"
#include "tests/system/small_disk_posix.h"

namespace ksv_test {
namespace {

namespace fs = std::filesystem;

constexpr int kProcesses = 64;
const Bytes kText = "\x88\x9F\x82\xA0\x83\x41 abc\r\n";  // 亜あア abc
const Bytes kInUtf8 = "亜あア abc\r\n";

// The shipped rule files and table texts, as links: without a compiled table.
void linkCharsets(const fs::path& directory) {
  for (const auto& entry : fs::directory_iterator(KSV_TEST_CHARSET_DIRECTORY)) {
    if (entry.path().extension() != ".cmp")
      fs::create_symlink(entry.path(), directory / entry.path().filename());
  }
}

void fillUp(const fs::path& directory) {
  std::ofstream filler(directory / "filler", std::ios::binary);
  const std::string page(4096, 'x');
  while (filler.write(page.data(), 4096).flush()) {
  }
}

// In a process of its own: 0 when all is as it should be.
int convertColdly(const std::string& directory) {
  const CharsetPath path(directory + "/");
  if (startProcess() != 1 || cconvLoadRule() != 1) return 1;
  if (convertWhole({"WINDOWS31J", "UTF-8"}, kText).output != kInUtf8) return 2;
  if (convertWhole({"UTF-8", "WINDOWS31J"}, kInUtf8).output != kText) return 3;
  endProcess();
  return testing::Test::HasFailure() ? 4 : 0;
}

void expectColdConversions(const std::string& directory) {
  std::vector<pid_t> children;
  for (int i = 0; i < kProcesses; ++i)
    children.push_back(ksv::test::startForked([&] { return convertColdly(directory); }));
  for (const pid_t child : children) EXPECT_EQ(ksv::test::resultOf(child), 0);
}

size_t filesThatAreNoLinks(const fs::path& directory) {
  size_t count = 0;
  for (const auto& entry : fs::directory_iterator(directory)) count += !entry.is_symlink();
  return count;
}

// With room they are made, by whichever process.
void expectCompiledTablesAsShipped(const fs::path& directory) {
  int count = 0;
  for (const auto& entry : fs::directory_iterator(directory)) {
    if (entry.is_symlink()) continue;
    const fs::path name = entry.path().filename();
    EXPECT_EQ(name.extension(), ".cmp") << name;
    EXPECT_EQ(ksv::test::readFile(entry.path()),
              ksv::test::readFile(fs::path(KSV_TEST_CHARSET_DIRECTORY) / name))
        << name;
    ++count;
  }
  EXPECT_GT(count, 0);
}

TEST(FullDisk, gives_64_processes_without_compiled_tables_the_right_answers) {
  const ksv::test::TemporaryDirectory directory("ksv_full_disk");
  const std::string place = directory.path().string();
  ksv::test::onSmallDisk(place, "size=16m,nr_inodes=1000", [&] {
    linkCharsets(place);
    fillUp(place);
    expectColdConversions(place);
    EXPECT_EQ(filesThatAreNoLinks(place), 1u) << "the filler: nothing is left half written";
    fs::remove(fs::path(place) / "filler");
    expectColdConversions(place);
    expectCompiledTablesAsShipped(place);
  });
}

}  // namespace
}  // namespace ksv_test
