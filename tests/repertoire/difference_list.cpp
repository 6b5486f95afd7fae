#include "tests/repertoire/difference_list.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <set>
#include <sstream>
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

std::vector<std::string> wordsOf(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

// A line of a whole class: a word that ends in a star stands for all that begin so, and the
// words with something before their star end alike.
struct ClassLine {
  std::string text;
  std::vector<std::string> words;  // direction, code, ours, theirs
  bool isUsed = false;

  bool holds(const std::vector<std::string>& found) const {
    std::optional<std::string> commonEnd;
    for (size_t i = 0; i < words.size(); ++i) {
      if (!words[i].ends_with('*')) {
        if (words[i] != found[i]) return false;
        continue;
      }
      const std::string begin = words[i].substr(0, words[i].size() - 1);
      if (!found[i].starts_with(begin)) return false;
      if (begin.empty()) continue;
      const std::string end = found[i].substr(begin.size());
      if (commonEnd.value_or(end) != end) return false;
      commonEnd = end;
    }
    return true;
  }
};

struct Listed {
  Differences lines;
  std::vector<ClassLine> classes;
  std::vector<std::string> withoutReason;
};

void readLine(const std::string& line, Listed& listed) {
  constexpr size_t kWordsBeforeReason = 4;
  std::vector<std::string> words = wordsOf(line);
  if (words.size() <= kWordsBeforeReason) {
    listed.withoutReason.push_back(line);
    return;
  }
  words.resize(kWordsBeforeReason);
  if (std::any_of(words.begin(), words.end(),
                  [](const auto& word) { return word.ends_with('*'); })) {
    listed.classes.push_back({line, words});
    return;
  }
  const auto [place, isNew] =
      listed.lines.emplace(words[0] + ' ' + words[1], words[2] + ' ' + words[3]);
  if (!isNew) listed.withoutReason.push_back(line);
}

Listed readList(const std::filesystem::path& path) {
  Listed listed;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line[0] != '#') readLine(line, listed);
  }
  return listed;
}

// What no class holds; marks those that hold something.
Differences withoutClasses(const Differences& found, Listed& listed) {
  Differences left;
  for (const auto& [key, value] : found) {
    const std::vector<std::string> words = wordsOf(key + ' ' + value);
    const auto holding =
        listed.lines.contains(key)
            ? listed.classes.end()
            : std::find_if(listed.classes.begin(), listed.classes.end(),
                           [&](const ClassLine& line) { return line.holds(words); });
    if (holding == listed.classes.end()) {
      left.emplace(key, value);
    } else {
      holding->isUsed = true;
    }
  }
  return left;
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
  Listed listed = readList(REPERTOIRE_SOURCE_DIRECTORY / list);
  const Differences single = withoutClasses(found, listed);
  const std::string unlisted = describeMissing(single, listed.lines);
  std::string gone = describeMissing(listed.lines, single);
  for (const ClassLine& line : listed.classes) {
    if (!line.isUsed) gone += "  " + line.text + '\n';
  }
  if (unlisted.empty() && gone.empty() && listed.withoutReason.empty()) {
    return testing::AssertionSuccess();
  }
  const std::filesystem::path written = REPERTOIRE_BINARY_DIRECTORY / list;
  writeList(written, single);
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
