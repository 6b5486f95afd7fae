#include "tests/system/test_program.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace ksv::test {
namespace {

constexpr char kResultsOption[] = "--results=";

const char* outcome(const testing::TestResult& result) {
  if (result.Failed()) return "failed";
  return result.Skipped() ? "skipped" : "passed";
}

// The file is open only while a line is written: tests count descriptors, and start programs
// that would inherit it.
class ResultFile : public testing::EmptyTestEventListener {
 public:
  explicit ResultFile(std::string path) : path_(std::move(path)) {}

  void OnTestStart(const testing::TestInfo& test) override { add("began", test); }
  void OnTestEnd(const testing::TestInfo& test) override { add(outcome(*test.result()), test); }

 private:
  void add(const char* event, const testing::TestInfo& test) const {
    std::ofstream(path_, std::ios::app | std::ios::binary)
        << event << ' ' << test.test_suite_name() << '.' << test.name() << '\n';
  }

  const std::string path_;
};

// GoogleTest leaves what it does not know.
std::optional<std::string> resultFile(int argc, char** argv) {
  const std::string option = kResultsOption;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument.starts_with(option)) return argument.substr(option.size());
  }
  return std::nullopt;
}

}  // namespace

int runTests(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (auto path = resultFile(argc, argv)) {
    auto listener = std::make_unique<ResultFile>(*std::move(path));
    testing::UnitTest::GetInstance()->listeners().Append(listener.release());
  }
  return RUN_ALL_TESTS();
}

}  // namespace ksv::test
