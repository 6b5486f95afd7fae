// Runs the built command in a process of its own, in a directory of its own.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "process.h"

namespace ksv_cli_tests {

std::string bytes(std::initializer_list<int> values);

// Of the build tree, absolute, so that it can be named from any directory.
std::string charsetDirectory();

class CommandTest : public testing::Test {
 protected:
  CommandTest();
  ~CommandTest() override;

  // Runs ksv in the test's directory with the input on standard input.
  Outcome ksv(const std::vector<std::string>& arguments, const std::string& input = "") const;

  // The same with its process at hand: starts it, for finishCommand() to wait for.
  Process start(const std::vector<std::string>& arguments, const StandardStreams& streams) const;

  std::string path(const std::string& name) const { return directory_ + "/" + name; }
  void write(const std::string& name, const std::string& content) const;
  std::string read(const std::string& name) const;
  bool exists(const std::string& name) const;
  // The names in the test's directory, sorted, those with a leading dot included.
  std::vector<std::string> files(const std::string& below = ".") const;
  void setEnvironment(const std::string& name, const std::string& value);
  // Makes a charset directory of the files that have a charset's name in theirs, and has the
  // command take it. Looking through the whole one takes long.
  void useCharsetDirectoryOf(const std::string& charset);

 private:
  std::string directory_;
  std::string streams_;
  std::map<std::string, std::string> environment_;
};

}  // namespace ksv_cli_tests
