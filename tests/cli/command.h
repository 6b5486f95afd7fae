// Runs the built command in a process of its own, in a directory of its own.
#ifndef KSV_TESTS_CLI_COMMAND_H
#define KSV_TESTS_CLI_COMMAND_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ksv_cli_tests {

struct Outcome {
  int status = -1;  // exit status, or -1 when a signal ended it
  int signal = 0;
  std::string out;
  std::string err;
  long peakKilobytes = 0;
};

std::string bytes(std::initializer_list<int> values);

class CommandTest : public testing::Test {
 protected:
  CommandTest();
  ~CommandTest() override;

  // Runs ksv in the test's directory with the input on standard input.
  Outcome ksv(const std::vector<std::string>& arguments, const std::string& input = "") const;

  // The same with its process id at hand: starts it, and waits for its end.
  int start(const std::vector<std::string>& arguments, int standardInput, int standardOutput,
            int standardError) const;
  static Outcome finish(int process);

  std::string path(const std::string& name) const { return directory_ + "/" + name; }
  void write(const std::string& name, const std::string& content) const;
  std::string read(const std::string& name) const;
  bool exists(const std::string& name) const;
  // The names in the test's directory, sorted, those with a leading dot included.
  std::vector<std::string> files(const std::string& below = ".") const;
  void setEnvironment(const std::string& name, const std::string& value);

 private:
  std::string directory_;
  std::string streams_;
  std::vector<std::string> environment_;
};

}  // namespace ksv_cli_tests

#endif
