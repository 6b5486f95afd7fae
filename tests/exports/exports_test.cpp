// The symbols of the built library, the export list and the headers agree.
#include <elf.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

// The dynamic symbols of the library, and its initialisers.
class Library {
 public:
  explicit Library(const std::string& path) : bytes_(readFile(path)) {
    const auto header = at<Elf64_Ehdr>(0);
    EXPECT_EQ(std::memcmp(header.e_ident, ELFMAG, SELFMAG), 0);
    for (size_t i = 0; i < header.e_shnum; ++i) {
      const auto section = at<Elf64_Shdr>(header.e_shoff + i * header.e_shentsize);
      if (section.sh_type == SHT_DYNSYM) {
        readSymbols(section, at<Elf64_Shdr>(header.e_shoff + section.sh_link * header.e_shentsize));
      }
      if (section.sh_type == SHT_INIT_ARRAY) initialisers_ += section.sh_size / sizeof(uint64_t);
    }
  }

  // Name and address of every symbol that others can link to.
  const std::map<std::string, uint64_t>& symbols() const { return symbols_; }
  size_t initialisers() const { return initialisers_; }

 private:
  template <typename Record>
  Record at(uint64_t offset) const {
    Record record = {};
    EXPECT_LE(offset + sizeof record, bytes_.size());
    if (offset + sizeof record <= bytes_.size()) {
      std::memcpy(&record, bytes_.data() + offset, sizeof record);
    }
    return record;
  }

  void readSymbols(const Elf64_Shdr& table, const Elf64_Shdr& strings) {
    for (uint64_t i = 0; i < table.sh_size / sizeof(Elf64_Sym); ++i) {
      const auto symbol = at<Elf64_Sym>(table.sh_offset + i * sizeof(Elf64_Sym));
      if (symbol.st_shndx == SHN_UNDEF || ELF64_ST_BIND(symbol.st_info) == STB_LOCAL) continue;
      symbols_[bytes_.data() + strings.sh_offset + symbol.st_name] = symbol.st_value;
    }
  }

  std::string bytes_;
  std::map<std::string, uint64_t> symbols_;
  size_t initialisers_ = 0;
};

struct Export {
  int ordinal;
  std::string name;
};

std::vector<Export> exportList() {
  std::vector<Export> exports;
  std::istringstream lines(readFile(std::filesystem::path(KSV_INCLUDE_DIRECTORY) / "exports.list"));
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
    const std::string text = declarationsOf(readFile(entry.path()));
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
  const Library library(KSV_LIBRARY);
  for (const auto& [name, address] : library.symbols()) found.insert(name);
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
  std::istringstream lines(readFile(std::filesystem::path(KSV_INCLUDE_DIRECTORY) / "exports.list"));
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
  const Library library(KSV_LIBRARY);
  const auto& symbols = library.symbols();
  ASSERT_TRUE(symbols.contains("KSV_setCharsetPath"));
  EXPECT_EQ(symbols.at("KSV_Is64bitOS"), symbols.at("KSV_setCharsetPath"));
  EXPECT_EQ(symbols.at("KSV_Is64bitFS"), symbols.at("KSV_setCharsetPath"));
}

TEST(Exports, come_from_a_library_without_static_initialisers) {
  if (KSV_UNDER_SANITIZERS) GTEST_SKIP() << "the sanitizers add their own";
  // The one is the compiler's, for registering frames.
  EXPECT_LE(Library(KSV_LIBRARY).initialisers(), 1u);
}

}  // namespace
