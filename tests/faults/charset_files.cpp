#include "tests/faults/charset_files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>

#include "ksv_cconv.h"
#include "tests/system/system.h"

namespace ksv::test {
namespace {

namespace fs = std::filesystem;

// Found before a job moves to another drive.
const fs::path kBuilt = fs::absolute(KSV_TEST_CHARSET_DIRECTORY);

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path.string() + " cannot be read");
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// What a rule file declares with SYSTEM "...". Its units are two bytes wide, one of them 0.
std::vector<std::string> filesNamedIn(const fs::path& rules) {
  std::string text = contentOf(rules);
  std::erase(text, '\0');
  constexpr std::string_view kWord = "SYSTEM \"";
  std::vector<std::string> names;
  for (size_t at = text.find(kWord); at != text.npos; at = text.find(kWord, at)) {
    at += kWord.size();
    names.push_back(text.substr(at, text.find('"', at) - at));
  }
  return names;
}

void copyToOwn(const std::string& name) {
  const fs::path from = kBuilt / name;
  if (fs::exists(from))
    fs::copy_file(from, kCharsetDirectory + name, fs::copy_options::skip_existing);
}

void copyWithAllItNames(const std::string& rules) {
  copyToOwn(rules);
  for (std::string name : filesNamedIn(kBuilt / rules)) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    copyToOwn(name);
    copyToOwn(fs::path(name).replace_extension(".cmp").string());
  }
}

// Of the build tree, each read once.
const std::string& rightTable(const std::string& name) {
  static std::map<std::string, std::string> known;
  const auto [place, isNew] = known.try_emplace(name);
  if (isNew) place->second = contentOf(kBuilt / name);
  return place->second;
}

template <class Do>
void forCompiledTables(Do action) {
  if (!fs::exists(kCharsetDirectory)) return;
  for (const auto& entry : fs::directory_iterator(kCharsetDirectory)) {
    if (entry.path().extension() == ".cmp") action(entry.path());
  }
}

}  // namespace

void installCharsets(const std::vector<std::string>& charsets) {
  fs::create_directory(kCharsetDirectory);
  for (const std::string& charset : charsets) copyWithAllItNames(charset + ".xml");
  setCharsetPath();
}

void setCharsetPath() {
  setVariable("Charsetpath", fs::absolute(kCharsetDirectory).generic_string());
}

bool startLoaded(Answer& answer) {
  if (!answer.needs(startProcess() == 1, "startProcess")) return false;
  if (answer.needs(cconvLoadRule() == 1, "cconvLoadRule")) return true;
  endProcess();
  return false;
}

void removeCompiledTables() {
  std::vector<fs::path> tables;
  forCompiledTables([&](const fs::path& table) { tables.push_back(table); });
  for (const fs::path& table : tables) fs::remove(table);
}

std::vector<std::string> wrongCompiledTables() {
  std::vector<std::string> wrong;
  forCompiledTables([&](const fs::path& table) {
    const std::string name = table.filename().string();
    if (contentOf(table) != rightTable(name)) wrong.push_back(name);
  });
  return wrong;
}

}  // namespace ksv::test
