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
std::map<std::string, std::string> declaredFunctions(const Library& library) {
  constexpr char kNameCharacters[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
  const std::string word = "KSV_API ";
  std::map<std::string, std::string> functions;
  for (const auto& entry : std::filesystem::directory_iterator(KSV_INCLUDE_DIRECTORY)) {
    const std::string header = entry.path().filename().string();
    if (entry.path().extension() != ".h" || !isHeaderOf(library, header)) continue;
    const std::string text = declarationsOf(readFile(entry.path().string()));
    for (size_t at = text.find(word); at != text.npos; at = text.find(word, at + 1)) {
      const size_t end = text.find('(', at);
      const size_t start = text.find_last_not_of(kNameCharacters, end - 1) + 1;
      const std::string name = text.substr(start, end - start);
      EXPECT_TRUE(functions.emplace(name, header).second) << name << " is declared twice";
    }
  }
  return functions;
}

std::set<std::string> listedNames(const Library& library) {
  std::set<std::string> names;
  for (const Export& e : exportList(library)) names.insert(e.name);
  return names;
}

TEST(Exports, are_exactly_the_symbols_of_the_library) {
  for (const Library& library : kLibraries) {
    std::set<std::string> found;
    for (const auto& [name, address] : readLibraryImage(library.file).symbols) found.insert(name);
    EXPECT_GT(found.size(), 0u);
    EXPECT_EQ(found, listedNames(library)) << library.file;
  }
}

TEST(Exports, are_exactly_the_functions_of_the_headers) {
  for (const Library& library : kLibraries) {
    std::set<std::string> declared;
    for (const auto& [name, header] : declaredFunctions(library)) declared.insert(name);
    EXPECT_EQ(declared, listedNames(library)) << library.file;
  }
}

// Those of the list that do not stand under the comment that names their header.
std::set<std::string> misplaced(const Library& library) {
  const auto functions = declaredFunctions(library);
  std::istringstream lines(readFile(std::string(KSV_INCLUDE_DIRECTORY "/") + library.list));
  std::set<std::string> names;
  std::string header;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("# ") && line.ends_with(".h")) header = line.substr(2);
    if (line.empty() || line[0] == '#') continue;
    const std::string name = line.substr(line.find(' ') + 1);
    const auto function = functions.find(name);
    if (function == functions.end() || function->second != header) names.insert(name);
  }
  return names;
}

TEST(Exports, stand_under_the_header_that_declares_them) {
  for (const Library& library : kLibraries)
    EXPECT_EQ(misplaced(library), std::set<std::string>()) << library.file;
}

TEST(Exports, have_names_and_ordinals_of_their_own) {
  std::set<std::string> names;
  for (const Library& library : kLibraries) {
    std::set<int> ordinals;
    for (const Export& e : exportList(library)) {
      EXPECT_TRUE(names.insert(e.name).second) << e.name;
      EXPECT_TRUE(ordinals.insert(e.ordinal).second) << e.ordinal;
      EXPECT_GE(e.ordinal, 1);
      EXPECT_LE(e.ordinal, 65535);
    }
  }
}

TEST(Exports, have_the_ordinals_that_callers_link_by) {
  std::map<std::string, int> ordinals;
  for (const Export& e : exportList(kComm)) ordinals[e.name] = e.ordinal;
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
