#include "tests/kit/profiles/profile_tables.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "kit/unicode/utf8_text.h"
#include "tests/kit/profiles/profiled_charset.h"
#include "tests/repertoire/difference_list.h"

namespace ksv_kit {
namespace {

using repertoire::spell;

constexpr std::string_view kNone = "–";
// Of a kind of which there are more, only their number is told.
constexpr size_t kMostShown = 12;

struct TabledCharset {
  std::string_view name;
  Shape shape;
};

constexpr TabledCharset kCharsets[] = {
    {"shift_jis", Shape::kPairs},
    {"windows31j", Shape::kPairs},
    {"euc-jp", Shape::kEuc},
    {"iso-2022-jp", Shape::kEscapes},
    {"iso-2022-jp-kana", Shape::kEscapes},
    {"shift_jis-2004", Shape::kPairs},
    {"euc-jis-2004", Shape::kEuc},
    {"iso-2022-jp-2004", Shape::kEscapes},
};

// A charset without a profile, and with each.
struct Column {
  std::string name;
  Repertoire repertoire;
};

std::vector<Column> columnsOf(const TabledCharset& charset) {
  std::vector<Column> columns = {{"none", libraryRepertoire(charset.name, charset.shape)}};
  for (const std::string_view name : Profile::names()) {
    columns.push_back({std::string(name),
                       profiledRepertoire(*Profile::named(name), charset.name, charset.shape)});
  }
  return columns;
}

std::string row(const std::vector<std::string>& cells) {
  std::string line = "|";
  for (const std::string& cell : cells) line += ' ' + cell + " |";
  return line + '\n';
}

std::string head(std::string first, const std::vector<Column>& columns) {
  std::vector<std::string> cells = {std::move(first)};
  for (const Column& column : columns) cells.push_back(column.name);
  return row(cells) + '|' + [&] {
    std::string rule;
    for (size_t at = 0; at < cells.size(); ++at) rule += "---|";
    return rule;
  }() + '\n';
}

std::string shown(const std::u32string& text) {
  const bool isPrintable = std::all_of(text.begin(), text.end(), [](char32_t character) {
    return character > 0x20 && (character < 0x7F || character > 0x9F) &&
           (character < 0xE000 || character > 0xF8FF);
  });
  const std::string glyph = text == U"|" ? "\\|" : utf8Of(text);
  return isPrintable ? spell(text) + ' ' + glyph : spell(text);
}

std::string shown(const std::string& code) { return spell(code); }

// What the columns have for one key.
template <typename Value>
using Cells = std::vector<std::optional<Value>>;

template <typename Key, typename Value>
std::map<Key, Cells<Value>> cellsOf(const std::vector<Column>& columns,
                                    std::map<Key, Value> Repertoire::*map) {
  std::map<Key, Cells<Value>> all;
  for (size_t at = 0; at < columns.size(); ++at) {
    for (const auto& [key, value] : columns[at].repertoire.*map) {
      Cells<Value>& cells = all[key];
      cells.resize(columns.size());
      cells[at] = value;
    }
  }
  return all;
}

// Which of the columns have the same: 0 for nothing, and a number for each value that there is.
template <typename Value>
std::vector<size_t> patternOf(const Cells<Value>& cells) {
  std::vector<Value> values;
  std::vector<size_t> pattern;
  for (const auto& cell : cells) {
    if (!cell) {
      pattern.push_back(0);
      continue;
    }
    const auto place = std::find(values.begin(), values.end(), *cell);
    pattern.push_back(static_cast<size_t>(place - values.begin()) + 1);
    if (place == values.end()) values.push_back(*cell);
  }
  return pattern;
}

std::string shortName(const std::string& code) { return spell(code); }
std::string shortName(char32_t character) { return spell(std::u32string(1, character)); }

std::string keyName(const std::string& code) { return shown(code); }
std::string keyName(char32_t character) { return shown(std::u32string(1, character)); }

template <typename Value>
std::string rowOf(std::string name, const Cells<Value>& cells) {
  std::vector<std::string> words = {std::move(name)};
  for (const auto& cell : cells) words.push_back(cell ? shown(*cell) : std::string(kNone));
  return row(words);
}

template <typename Key>
std::string numberOf(const std::vector<Key>& keys, std::string_view what) {
  return std::to_string(keys.size()) + ' ' + std::string(what) + " from " +
         shortName(keys.front()) + " to " + shortName(keys.back());
}

// One row for all keys of a pattern: whether there is anything, or what the first has.
template <typename Key, typename Value>
std::string commonRow(const std::vector<size_t>& pattern, const std::vector<Key>& keys,
                      const Cells<Value>& ofFirst, std::string_view what) {
  const std::string name = numberOf(keys, what);
  if (*std::max_element(pattern.begin(), pattern.end()) > 1) {
    return rowOf(name + ", the first:", ofFirst);
  }
  std::vector<std::string> words = {name};
  for (const size_t value : pattern) words.emplace_back(value == 1 ? "yes" : kNone);
  return row(words);
}

// The rows of what the columns have different; nothing if they all agree.
template <typename Key, typename Value>
std::string differingRows(const std::vector<Column>& columns, std::map<Key, Value> Repertoire::*map,
                          std::string_view what) {
  const auto all = cellsOf(columns, map);
  std::map<std::vector<size_t>, std::vector<Key>> keysOfPattern;
  for (const auto& [key, cells] : all) keysOfPattern[patternOf(cells)].push_back(key);
  keysOfPattern.erase(std::vector<size_t>(columns.size(), 1));
  std::string rows;
  for (const auto& [pattern, keys] : keysOfPattern) {
    if (keys.size() > kMostShown) {
      rows += commonRow(pattern, keys, all.at(keys.front()), what);
    } else {
      for (const Key& key : keys) rows += rowOf(keyName(key), all.at(key));
    }
  }
  return rows;
}

struct RoundTrips {
  size_t same = 0;
  size_t other = 0;
  std::vector<std::string> lost;
};

std::string told(const RoundTrips& trips) {
  std::string lost = std::to_string(trips.lost.size());
  if (!trips.lost.empty() && trips.lost.size() <= kMostShown) {
    lost += ':';
    for (const std::string& name : trips.lost) lost += ' ' + name;
  }
  return std::to_string(trips.same) + " | " + std::to_string(trips.other) + " | " + lost;
}

// Codes that are read and written again. Of a base with a mark, which has no code in one character,
// nothing is said.
RoundTrips codesBack(const Repertoire& repertoire) {
  RoundTrips trips;
  for (const auto& [code, text] : repertoire.decoded) {
    if (text.size() != 1) continue;
    const auto written = repertoire.encoded.find(text[0]);
    if (written == repertoire.encoded.end()) {
      trips.lost.push_back(spell(code));
    } else if (written->second == code) {
      ++trips.same;
    } else {
      ++trips.other;
    }
  }
  return trips;
}

// Characters that are written and read again.
RoundTrips charactersBack(const Repertoire& repertoire) {
  RoundTrips trips;
  for (const auto& [character, code] : repertoire.encoded) {
    const auto read = repertoire.decoded.find(code);
    if (read != repertoire.decoded.end() && read->second == std::u32string(1, character)) {
      ++trips.same;
    } else if (read != repertoire.decoded.end()) {
      ++trips.other;
    } else {
      trips.lost.push_back(spell(std::u32string(1, character)));
    }
  }
  return trips;
}

std::string tablesOf(const TabledCharset& charset) {
  const std::vector<Column> columns = columnsOf(charset);
  std::string text = "### " + std::string(charset.name) + "\n\n";
  const std::string read = differingRows(columns, &Repertoire::decoded, "codes");
  if (!read.empty()) text += head("code, read as", columns) + read + '\n';
  const std::string written = differingRows(columns, &Repertoire::encoded, "characters");
  if (!written.empty()) text += head("character, written as", columns) + written + '\n';
  text +=
      "| there and back | codes the same | another code | refused | characters the same "
      "| another character | refused |\n|---|---|---|---|---|---|---|\n";
  for (const Column& column : columns) {
    text += "| " + column.name + " | " + told(codesBack(column.repertoire)) + " | " +
            told(charactersBack(column.repertoire)) + " |\n";
  }
  return text + '\n';
}

}  // namespace

std::string profileTables() {
  std::string text;
  for (const TabledCharset& charset : kCharsets) text += tablesOf(charset);
  return text;
}

}  // namespace ksv_kit
