#include "cconv/rules/packed_catalog.h"

#include <algorithm>
#include <utility>

#include "cconv/limits.h"

namespace ksv {
namespace {

using Bytes = PackedCatalog::Bytes;

constexpr uint32_t kMostBytesPerCode = 4;

// Reads what there is, and leaves the stream unsound where a number points nowhere.
class CatalogReader {
 public:
  CatalogReader(Bytes stream, Bytes data) : stream_(stream), data_(data) {}

  std::optional<PackedCatalog> read() {
    readItems(catalog_.ruleFiles, [&] { return ruleFile(); });
    readItems(catalog_.tableFiles, [&] { return tableFile(); });
    readItems(catalog_.groups, [&] { return group(); });
    readItems(catalog_.charsets, [&] { return charset(); });
    if (!isSound() || !stream_.isAtEnd()) return std::nullopt;
    return std::move(catalog_);
  }

 private:
  bool isSound() const { return isSound_ && stream_.isSound(); }

  template <class Item, class Read>
  void readItems(std::vector<Item>& items, Read readOne) {
    const uint32_t count = stream_.number();
    if (count > limits::kMostItems) isSound_ = false;
    // However many it says there are, each takes a byte at least.
    if (isSound() && items.empty()) items.reserve(std::min<size_t>(count, stream_.bytesLeft()));
    for (uint32_t i = 0; i < count && isSound(); ++i) items.push_back(readOne());
  }

  // Those of one thing of many, behind those of the things before.
  template <class Item, class Read>
  PackedCatalog::Range readRange(std::vector<Item>& items, Read readOne) {
    const size_t first = items.size();
    readItems(items, readOne);
    return {static_cast<uint32_t>(first), static_cast<uint32_t>(items.size() - first)};
  }

  std::string_view name() {
    const std::string_view text = stream_.text();
    if (text.size() >= limits::kNameSize || text.find('\0') != text.npos) isSound_ = false;
    return text;
  }

  uint32_t below(size_t bound) {
    const uint32_t number = stream_.number();
    if (number >= bound) isSound_ = false;
    return number;
  }

  uint16_t bytesPerCode() { return static_cast<uint16_t>(below(kMostBytesPerCode + 1)); }

  Bytes dataBytes() {
    const uint32_t place = stream_.number();
    const uint32_t count = stream_.number();
    if (place <= data_.size() && count <= data_.size() - place) return data_.subspan(place, count);
    isSound_ = false;
    return {};
  }

  PackedCatalog::RuleFile ruleFile() {
    const std::string_view fileName = name();
    return {fileName, dataBytes()};
  }

  PackedCatalog::TableFile tableFile() {
    PackedCatalog::TableFile file;
    file.name = name();
    file.textSize = stream_.number();
    file.lineCount = below(limits::kMostPackedLines + 1);
    file.linesInFront = below(size_t{file.lineCount} + 1);
    file.derivedLines = below(size_t{file.lineCount} - file.linesInFront + 1);
    file.records = dataBytes();
    return file;
  }

  PackedCatalog::Group group() {
    PackedCatalog::Group group;
    group.name = name();
    group.language = stream_.text();
    group.bytesPerCode = bytesPerCode();
    if (const uint32_t table = below(catalog_.tableFiles.size() + 1); table != 0)
      group.table = table - 1;
    return group;
  }

  PackedCatalog::DestTable destTable() {
    const uint32_t table = below(catalog_.tableFiles.size());
    return {table, bytesPerCode()};
  }

  PackedCatalog::Member member() {
    PackedCatalog::Member member;
    member.group = below(catalog_.groups.size());
    member.destTables = readRange(catalog_.destTables, [&] { return destTable(); });
    return member;
  }

  PackedCatalog::Charset charset() {
    PackedCatalog::Charset charset;
    charset.name = name();
    charset.codec = stream_.text();
    charset.members = readRange(catalog_.members, [&] { return member(); });
    return charset;
  }

  PackedStream stream_;
  Bytes data_;
  PackedCatalog catalog_;
  bool isSound_ = true;
};

}  // namespace

std::optional<PackedCatalog> PackedCatalog::read(Bytes stream, Bytes data) {
  return CatalogReader(stream, data).read();
}

const PackedCatalog::RuleFile* PackedCatalog::findRuleFile(std::string_view name) const {
  const auto found = std::ranges::lower_bound(ruleFiles, name, {}, &RuleFile::name);
  return found != ruleFiles.end() && found->name == name ? &*found : nullptr;
}

std::optional<uint32_t> PackedCatalog::findTableFile(std::string_view name) const {
  const auto found = std::ranges::find(tableFiles, name, &TableFile::name);
  if (found == tableFiles.end()) return std::nullopt;
  return static_cast<uint32_t>(found - tableFiles.begin());
}

}  // namespace ksv
