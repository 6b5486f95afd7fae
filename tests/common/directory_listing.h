// What the tests of directory listings have in common.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "ksv_path.h"
#include "tests/common/support.h"

namespace ksv::test {

using Names = std::vector<std::string>;

// The names that a listing of pattern gives, all in UTF-8.
inline Names list(const std::string& pattern) {
  Names names;
  KsvDirectoryListing listing;
  std::memset(&listing, 0xEE, sizeof listing);
  if (KSV_ASC_opendir(toAnsi(pattern)->c_str(), &listing) == 0) {
    EXPECT_EQ(KSV_ASC_closedir(&listing), -1);
    return names;
  }
  KsvDirectoryEntry entry;
  while (KSV_ASC_readdir(&listing, &entry) == 1) names.push_back(fromAnsi(entry.name));
  EXPECT_EQ(KSV_ASC_readdir(&listing, &entry), 0);
  EXPECT_EQ(KSV_ASC_closedir(&listing), 0);
  EXPECT_EQ(KSV_ASC_closedir(&listing), -1);
  return names;
}

class Directory : public testing::Test {
 protected:
  void SetUp() override {
    for (const std::string& name :
         {std::string("b.xml"), std::string("a.xml"), std::string(".hidden"), word_ + ".xml",
          letter_, std::string("a"), std::string("[x]")}) {
      writeFile(name, "12345");
    }
    std::filesystem::create_directory("sub");
    writeFile("sub/inner.txt", "");
  }

  const std::string word_ = ansiWord();
  const std::string letter_ = ansiLetter();
  TempDirectory directory_;
};

}  // namespace ksv::test
