#include "cconv/rules/packed_charsets.h"

#include <algorithm>
#include <utility>

#include "cconv/limits.h"
#include "cconv/rules/rule_path.h"
#include "common/faults.h"

namespace ksv {
namespace {

constexpr uint32_t kMagic = 0x5056534B;
constexpr uint32_t kVersion = 1;

struct Header {
  uint32_t magic;
  uint32_t version;
  uint32_t fileSize;
  uint32_t catalog;
  uint32_t catalogSize;
  uint32_t tables;
  uint32_t tableCount;
  uint32_t blocks;
  uint32_t blockCount;
  uint32_t pages;
  uint32_t pageCount;
  uint32_t templates;
  uint32_t templateCount;
  uint32_t data;
  uint32_t dataSize;
  uint32_t reserved;
};

// Parts of a file by their place in it, as long as none lies outside or across its alignment.
class Parts {
 public:
  explicit Parts(PackedCatalog::Bytes file) : file_(file) {}

  // Nothing where such a part cannot be.
  template <class Item>
  std::span<const Item> at(uint32_t place, uint64_t count) {
    if (place % alignof(Item) != 0 || place > file_.size() ||
        count > (file_.size() - place) / sizeof(Item)) {
      areSound_ = false;
      return {};
    }
    return {reinterpret_cast<const Item*>(file_.data() + place), static_cast<size_t>(count)};
  }
  bool areSound() const { return areSound_; }

 private:
  PackedCatalog::Bytes file_;
  bool areSound_ = true;
};

std::string compiledName(std::string_view textName) {
  PathParts parts = splitPath(std::string(textName));
  parts.extension = ".cmp";
  return joinPath(parts);
}

}  // namespace

std::unique_ptr<const PackedCharsets> PackedCharsets::open(const std::string& directory) {
  std::unique_ptr<PackedCharsets> packed(new PackedCharsets);
  packed->directory_ = directory;
  if (!packed->read(directory + kFileName)) return nullptr;
  return packed;
}

bool PackedCharsets::read(const std::string& path) {
  platform::InputFile file(path.c_str(), platform::InputFile::Takes::kRegularFile);
  mapping_ = file.map();
  noteFault(FaultSubject::kCharsetDirectory, path, file.error());
  platform::FileStatus status;
  if (!mapping_ || !platform::fileStatus(path.c_str(), status)) return false;
  writeTime_ = status.writeTime;
  return readSections();
}

bool PackedCharsets::readSections() {
  const PackedCatalog::Bytes bytes(mapping_.bytes(), mapping_.size());
  Parts parts(bytes);
  const std::span<const Header> headers = parts.at<Header>(0, 1);
  if (headers.empty()) return false;
  const Header& header = headers.front();
  if (header.magic != kMagic || header.version != kVersion || header.fileSize != bytes.size())
    return false;
  tables_ = parts.at<TableEntry>(header.tables, header.tableCount);
  blocks_ =
      parts.at<uint32_t>(header.blocks, uint64_t{header.blockCount} * PackedTable::kPagesABlock);
  pages_ = parts.at<PackedTable::Page>(header.pages, header.pageCount);
  templates_ = parts.at<uint32_t>(header.templates,
                                  uint64_t{header.templateCount} * PackedTable::kKeysAPage);
  data_ = parts.at<uint8_t>(header.data, header.dataSize);
  const PackedCatalog::Bytes stream = parts.at<uint8_t>(header.catalog, header.catalogSize);
  if (!parts.areSound() || header.data % alignof(uint32_t) != 0) return false;
  if (!isSoundPage(0)) return false;
  auto catalog = PackedCatalog::read(stream, data_);
  if (catalog) catalog_ = std::move(*catalog);
  return catalog.has_value();
}

bool PackedCharsets::goesBefore(const std::string& name, uint64_t packedSize) const {
  platform::FileStatus status;
  if (!platform::fileStatus((directory_ + name).c_str(), status)) return false;
  return static_cast<uint64_t>(status.size) != packedSize || status.writeTime > writeTime_;
}

bool PackedCharsets::isOverridden(const PackedCatalog::RuleFile& file) const {
  return goesBefore(std::string(file.name), file.content.size());
}

bool PackedCharsets::isOverridden(const PackedCatalog::TableFile& file) const {
  constexpr uint64_t kRecordSize = 8;
  return goesBefore(compiledName(file.name), kRecordSize * file.lineCount) ||
         goesBefore(std::string(file.name), file.textSize);
}

bool PackedCharsets::fill(CodeTable& table, uint32_t entriesPerBlock) const {
  const std::optional<uint32_t> number = catalog_.findTableFile(table.fileName);
  if (!number) return false;
  const PackedCatalog::TableFile& file = catalog_.tableFiles[*number];
  if (isOverridden(file)) return false;
  // With fewer lines than blocks may be made, it makes no difference how large these are.
  const TableEntry* const entry =
      entriesPerBlock == kDefaultBlockSize || file.lineCount <= limits::kMostBlocks
          ? findTable(*number, table)
          : nullptr;
  if (entry == nullptr)
    return takeRecords(file, [&](uint32_t first, uint32_t second) {
      return insertPair(table, first, second, entriesPerBlock);
    });
  const std::optional<PackedTable> packed = tableOf(*entry);
  if (!packed) return false;
  table.values = CodeStore(*packed);
  table.low = entry->low;
  table.high = entry->high;
  table.hasEntries = true;
  if (entry->coversZero != 0) table.coverage.addBlock(0, entriesPerBlock);
  return true;
}

const PackedCharsets::TableEntry* PackedCharsets::findTable(uint32_t file,
                                                            const CodeTable& table) const {
  const uint32_t form = table.keyColumn | uint32_t{table.valueBytes} << 8;
  const auto found = std::ranges::find_if(
      tables_, [&](const TableEntry& entry) { return entry.file == file && entry.form == form; });
  return found == tables_.end() ? nullptr : &*found;
}

std::optional<PackedTable> PackedCharsets::tableOf(const TableEntry& entry) const {
  Parts parts(data_);
  const Words directory = parts.at<uint32_t>(entry.directory, entry.directoryLength);
  const auto runs = parts.at<PackedTable::Run>(entry.runs, entry.runCount);
  if (!parts.areSound()) return std::nullopt;
  PackedTable table;
  table.directory = directory.data();
  table.directoryLength = entry.directoryLength;
  table.runs = runs.data();
  table.runCount = entry.runCount;
  table.blocks = blocks_.data();
  table.pages = pages_.data();
  table.templates = templates_.data();
  return isSound(table) ? std::optional(table) : std::nullopt;
}

// Whatever is asked for, nothing outside the file is read.
bool PackedCharsets::isSound(const PackedTable& table) const {
  const Words directory(table.directory, table.directoryLength);
  if (!std::ranges::all_of(directory, [&](uint32_t block) { return isSoundBlock(block); }))
    return false;
  const std::span<const PackedTable::Run> runs(table.runs, table.runCount);
  return std::ranges::is_sorted(runs, {}, &PackedTable::Run::firstPrefix) &&
         std::ranges::all_of(runs, [&](const PackedTable::Run& run) { return isSoundRun(run); });
}

bool PackedCharsets::isSoundRun(const PackedTable::Run& run) const {
  if (run.distance == 0 || run.count > pages_.size() || run.firstPage > pages_.size() - run.count)
    return false;
  for (uint32_t i = 0; i < run.count; ++i)
    if (!isSoundPage(run.firstPage + i)) return false;
  return true;
}

bool PackedCharsets::isSoundBlock(uint32_t block) const {
  if (block >= blocks_.size() / PackedTable::kPagesABlock) return false;
  const Words pages =
      blocks_.subspan(size_t{block} * PackedTable::kPagesABlock, PackedTable::kPagesABlock);
  return std::ranges::all_of(pages, [&](uint32_t page) { return isSoundPage(page); });
}

bool PackedCharsets::isSoundPage(uint32_t page) const {
  return page < pages_.size() && pages_[page].steps < templates_.size() / PackedTable::kKeysAPage;
}

}  // namespace ksv
