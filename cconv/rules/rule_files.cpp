#include "cconv/rules/rule_files.h"

#include <utility>
#include <vector>

#include "cconv/limits.h"
#include "cconv/rules/rule_base.h"
#include "cconv/rules/rule_path.h"
#include "cconv/rules/rule_reader.h"
#include "common/faults.h"
#include "common/platform.h"

namespace ksv {
namespace {

// None where there is no such file.
std::optional<std::vector<uint8_t>> readWholeFile(const std::string& path) {
  std::vector<uint8_t> bytes;
  platform::InputFile file(path.c_str(), platform::InputFile::Takes::kRegularFile);
  if (file.size() < 0 && file.error() == 0) return std::nullopt;
  if (file.size() > 0 && file.size() <= limits::kLargestFile) {
    bytes.resize(static_cast<size_t>(file.size()));
    if (file.read(bytes.data(), bytes.size()) != bytes.size()) bytes.clear();
  }
  noteFault(FaultSubject::kRuleFile, path, file.error());
  return bytes;
}

// What is packed under that name, as the file was.
std::vector<uint8_t> packedFile(const std::string& name) {
  const PackedCharsets* const packed = ruleBase.packed();
  const auto* const file = packed == nullptr ? nullptr : packed->catalog().findRuleFile(name);
  if (file == nullptr) return {};
  return {file->content.begin(), file->content.end()};
}

// The name that a path's file has in the charset directory.
std::string ruleFileName(const std::string& path) {
  PathParts parts = splitPath(path);
  lowerFileName(parts);
  return std::move(parts.fileName) + parts.extension;
}

bool readNamedText(const std::string& fileName, TextEncodingKind defaultEncoding,
                   bool defaultBigEndian, RuleText& text) {
  text = RuleText();
  auto bytes = readWholeFile(ruleBase.path() + fileName);
  text.bytes = bytes ? std::move(*bytes) : packedFile(fileName);
  if (text.bytes.empty()) return false;
  if (!detectEncoding(text)) {
    text.encoding = defaultEncoding;
    text.bigEndian = defaultBigEndian;
  }
  if (!decodeToUcs4(text)) {
    text = RuleText();
    return false;
  }
  cleanText(text);
  return true;
}

size_t commonLength(const RuleText& text, size_t index, std::string_view name) {
  size_t length = 0;
  while (length < name.size() && text.chars[index + length] == static_cast<uint8_t>(name[length]))
    ++length;
  return length;
}

// As findString, and counted: thousands of entities that are looked for in all of a long text
// must not take the square of its length.
std::optional<size_t> findEntityName(const RuleText& text, size_t from, std::string_view name) {
  if (name.empty() || name.size() > limits::kLongestPattern) return std::nullopt;
  const uint64_t most = limits::entityComparisons(text.chars.size());
  uint64_t& comparisons = text.entities.comparisons;
  for (size_t i = from; i + name.size() < text.chars.size() && comparisons <= most; ++i) {
    const size_t length = commonLength(text, i, name);
    comparisons += length + 1;
    if (length == name.size()) return i + length;
  }
  return std::nullopt;
}

std::optional<std::string> findEntityFile(const RuleText& text, std::string_view name) {
  size_t from = 0;
  while (const auto found = findEntityName(text, from, name)) {
    from = *found;
    RuleReader reader(text, from);
    if (!reader.isAt(' ')) continue;
    if (!reader.passString("SYSTEM ") || !reader.isAt('"')) return std::nullopt;
    return reader.findQuoted();
  }
  return std::nullopt;
}

}  // namespace

bool readRuleText(const std::string& path, TextEncodingKind defaultEncoding, bool defaultBigEndian,
                  RuleText& text) {
  return readNamedText(ruleFileName(path), defaultEncoding, defaultBigEndian, text);
}

const RuleText* RuleFiles::find(const std::string& path, TextEncodingKind defaultEncoding,
                                bool defaultBigEndian) const {
  const auto found = texts_.find({ruleFileName(path), defaultEncoding, defaultBigEndian});
  return found == texts_.end() ? nullptr : &found->second;
}

const RuleText* RuleFiles::read(const std::string& path, TextEncodingKind defaultEncoding,
                                bool defaultBigEndian) {
  Key key = {ruleFileName(path), defaultEncoding, defaultBigEndian};
  const auto found = texts_.find(key);
  if (found != texts_.end()) return &found->second;
  RuleText text;
  if (!readNamedText(std::get<0>(key), defaultEncoding, defaultBigEndian, text)) return nullptr;
  return &texts_.emplace(std::move(key), std::move(text)).first->second;
}

std::optional<std::string> entityFile(const RuleText& text, std::string_view name) {
  const auto known = text.entities.known.find(name);
  if (known != text.entities.known.end()) return known->second;
  std::optional<std::string> file = findEntityFile(text, name);
  text.entities.known.emplace(name, file);
  return file;
}

}  // namespace ksv
