// The symbols of the built library, the export list and the headers agree.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "tests/exports/export_list.h"
#include "tests/exports/library_image.h"

namespace ksv_exports {
namespace {

// The text without its comments and preprocessor lines.
std::string declarationsOf(const std::string& header) {
  std::string text;
  for (size_t at = 0; at < header.size();) {
    if (header.compare(at, 2, "/*") == 0) {
      at = header.find("*/", at) + 2;
    } else if (header.compare(at, 2, "//") == 0 || header[at] == '#') {
      at = header.find('\n', at);
    } else {
      text.push_back(header[at++]);
    }
  }
  return text;
}

// The functions that the headers declare, each with its header.
std::map<std::string, std::string> declaredFunctions() {
  constexpr char kNameCharacters[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
  const std::string word = "KSV_API ";
  std::map<std::string, std::string> functions;
  for (const auto& entry : std::filesystem::directory_iterator(KSV_INCLUDE_DIRECTORY)) {
    if (entry.path().extension() != ".h") continue;
    const std::string text = declarationsOf(readFile(entry.path().string()));
    for (size_t at = text.find(word); at != text.npos; at = text.find(word, at + 1)) {
      const size_t end = text.find('(', at);
      const size_t start = text.find_last_not_of(kNameCharacters, end - 1) + 1;
      const std::string name = text.substr(start, end - start);
      EXPECT_TRUE(functions.emplace(name, entry.path().filename().string()).second)
          << name << " is declared twice";
    }
  }
  return functions;
}

TEST(Exports, are_exactly_the_symbols_of_the_library) {
  std::set<std::string> listed;
  for (const Export& e : exportList()) listed.insert(e.name);
  std::set<std::string> found;
  for (const auto& [name, address] : readLibraryImage(KSV_LIBRARY).symbols) found.insert(name);
  EXPECT_GT(found.size(), 0u);
  EXPECT_EQ(found, listed);
}

TEST(Exports, are_exactly_the_functions_of_the_headers) {
  std::set<std::string> listed;
  for (const Export& e : exportList()) listed.insert(e.name);
  std::set<std::string> declared;
  for (const auto& [name, header] : declaredFunctions()) declared.insert(name);
  EXPECT_EQ(declared, listed);
}

TEST(Exports, stand_under_the_header_that_declares_them) {
  const auto functions = declaredFunctions();
  std::istringstream lines(readFile(KSV_INCLUDE_DIRECTORY "/exports.list"));
  std::string header;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("# ") && line.ends_with(".h")) header = line.substr(2);
    if (line.empty() || line[0] == '#') continue;
    const std::string name = line.substr(line.find(' ') + 1);
    const auto function = functions.find(name);
    ASSERT_NE(function, functions.end()) << name;
    EXPECT_EQ(function->second, header) << name;
  }
}

TEST(Exports, have_names_and_ordinals_of_their_own) {
  std::set<std::string> names;
  std::set<int> ordinals;
  for (const Export& e : exportList()) {
    EXPECT_TRUE(names.insert(e.name).second) << e.name;
    EXPECT_TRUE(ordinals.insert(e.ordinal).second) << e.ordinal;
    EXPECT_GE(e.ordinal, 1);
    EXPECT_LE(e.ordinal, 65535);
  }
}

TEST(Exports, have_the_ordinals_that_callers_link_by) {
  std::map<std::string, int> ordinals;
  for (const Export& e : exportList()) ordinals[e.name] = e.ordinal;
  const std::pair<const char*, int> fixed[] = {
      {"startProcess", 7000},       {"endProcess", 7001},    {"cconvLoadRule", 7002},
      {"setBlockSize", 7010},       {"lockMutex", 7012},     {"unlockMutex", 7013},
      {"KSV_setCharsetPath", 7014}, {"KSV_Is64bitOS", 5117}, {"KSV_Is64bitFS", 5118}};
  for (const auto& [name, ordinal] : fixed) EXPECT_EQ(ordinals[name], ordinal) << name;
}

TEST(Exports, share_one_entry_point_under_three_names) {
  const auto symbols = readLibraryImage(KSV_LIBRARY).symbols;
  ASSERT_TRUE(symbols.contains("KSV_setCharsetPath"));
  EXPECT_EQ(symbols.at("KSV_Is64bitOS"), symbols.at("KSV_setCharsetPath"));
  EXPECT_EQ(symbols.at("KSV_Is64bitFS"), symbols.at("KSV_setCharsetPath"));
}

}  // namespace
}  // namespace ksv_exports
