#include "tests/repertoire/difference_list.h"

#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace repertoire {

namespace {

template <typename Value>
const Value& valueOrEmpty(const auto& map, const auto& key) {
  static const Value kEmpty;
  const auto found = map.find(key);
  return found == map.end() ? kEmpty : found->second;
}

template <typename Key, typename Value>
void compareMaps(const std::map<Key, Value>& ours, const std::map<Key, Value>& theirs,
                 const auto& describeKey, Differences& differences) {
  std::set<Key> keys;
  for (const auto* map : {&ours, &theirs}) {
    for (const auto& [key, value] : *map) {
      keys.insert(key);
    }
  }
  for (const Key& key : keys) {
    const Value& ourValue = valueOrEmpty<Value>(ours, key);
    const Value& theirValue = valueOrEmpty<Value>(theirs, key);
    if (ourValue != theirValue) {
      differences[describeKey(key)] = spell(ourValue) + ' ' + spell(theirValue);
    }
  }
}

struct Listed {
  Differences lines;
  std::vector<std::string> withoutReason;
};

Listed readList(const std::filesystem::path& path) {
  Listed listed;
  std::ifstream file(path);
  std::string line;
  while (std::getline(file, line)) {
    if (line.empty() || line[0] == '#') {
      continue;
    }
    std::istringstream words(line);
    std::string direction;
    std::string code;
    std::string ours;
    std::string theirs;
    std::string reason;
    words >> direction >> code >> ours >> theirs >> reason;
    const auto [place, isNew] = listed.lines.emplace(direction + ' ' + code, ours + ' ' + theirs);
    if (!isNew || reason.empty()) {
      listed.withoutReason.push_back(line);
    }
  }
  return listed;
}

void writeList(const std::filesystem::path& path, const Differences& found) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream file(path);
  for (const auto& [key, value] : found) {
    file << key << ' ' << value << '\n';
  }
}

// Describes the entries of one map that the other does not have, the first few of them.
std::string describeMissing(const Differences& from, const Differences& in) {
  constexpr size_t kShown = 20;
  size_t count = 0;
  std::string text;
  for (const auto& [key, value] : from) {
    const auto other = in.find(key);
    if (other != in.end() && other->second == value) {
      continue;
    }
    if (++count <= kShown) {
      text += "  " + key + ' ' + value + '\n';
    }
  }
  return count > kShown ? text + "  and " + std::to_string(count - kShown) + " more\n" : text;
}

}  // namespace

Differences compare(const Repertoire& ours, const Repertoire& theirs) {
  Differences differences;
  compareMaps(
      ours.decoded, theirs.decoded, [](const Bytes& code) { return "decode " + spell(code); },
      differences);
  compareMaps(
      ours.encoded, theirs.encoded,
      [](char32_t character) { return "encode " + spell(Text(1, character)); }, differences);
  return differences;
}

Differences findOneWay(const Repertoire& ours) {
  Differences differences;
  for (const auto& [code, text] : ours.decoded) {
    if (text.size() != 1) {
      continue;  // a pair has no code of its own in one character; tested apart
    }
    const Bytes& written = valueOrEmpty<Bytes>(ours.encoded, text[0]);
    if (written != code) {
      differences["roundtrip " + spell(code)] = spell(written) + ' ' + spell(text);
    }
  }
  for (const auto& [character, code] : ours.encoded) {
    const Text& read = valueOrEmpty<Text>(ours.decoded, code);
    if (read != Text(1, character)) {
      differences["oneway " + spell(Text(1, character))] = spell(code) + ' ' + spell(read);
    }
  }
  return differences;
}

testing::AssertionResult isListed(const Differences& found, const std::filesystem::path& list) {
  const Listed listed = readList(REPERTOIRE_SOURCE_DIRECTORY / list);
  const std::string unlisted = describeMissing(found, listed.lines);
  const std::string gone = describeMissing(listed.lines, found);
  if (unlisted.empty() && gone.empty() && listed.withoutReason.empty()) {
    return testing::AssertionSuccess();
  }
  const std::filesystem::path written = REPERTOIRE_BINARY_DIRECTORY / list;
  writeList(written, found);
  testing::AssertionResult failure = testing::AssertionFailure();
  failure << "what was found is in " << written << '\n';
  if (!unlisted.empty()) {
    failure << "found but not listed:\n" << unlisted;
  }
  if (!gone.empty()) {
    failure << "listed but not found:\n" << gone;
  }
  for (const std::string& line : listed.withoutReason) {
    failure << "twice, or without a reason: " << line << '\n';
  }
  return failure;
}

}  // namespace repertoire
