// Charset directories of the tests' own.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ksv_cconv.h"
#include "tests/rules/support.h"

namespace ksv_test {

struct Group {
  std::string name;
  int width = 1;
  std::string table = "";             // lines; empty: no table
  std::string destinationTable = "";  // lines of a destination table; empty: none
  std::string destinationBytes = "2";
  int userStart = 0;  // with a count: a user-defined group
  int userCount = 0;
};

struct Charset {
  std::string name;
  std::string codec;
  std::vector<Group> groups;
  std::string decoder = "";  // the name of its entry; empty: that of the codec
};

// A directory of such charsets, loaded for the life of the test.
class OwnDirectory : public testing::Test {
 protected:
  OwnDirectory() { EXPECT_EQ(startProcess(), 1); }
  ~OwnDirectory() override { endProcess(); }

  void load(const std::vector<Charset>& charsets) {
    for (const Charset& entry : charsets) write(entry);
    EXPECT_EQ(cconvLoadRule(), 1);
  }

 private:
  void write(const Charset& entry);
  void writeGroup(const Group& group, std::string& declarations, std::string& content);

  ksv::test::CharsetDirectory directory_;
};

}  // namespace ksv_test
