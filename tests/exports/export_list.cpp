#include "tests/exports/export_list.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/exports/library_image.h"

namespace ksv_exports {

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

bool isHeaderOf(const Library& library, const std::string& header) {
  return library.onlyHeader != nullptr ? header == library.onlyHeader : header != kKit.onlyHeader;
}

std::vector<Export> exportList(const Library& library) {
  std::vector<Export> exports;
  std::istringstream lines(readFile(std::string(KSV_INCLUDE_DIRECTORY "/") + library.list));
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    Export entry = {};
    words >> entry.ordinal >> entry.name;
    EXPECT_EQ(std::to_string(entry.ordinal) + " " + entry.name, line);
    exports.push_back(entry);
  }
  return exports;
}

}  // namespace ksv_exports
