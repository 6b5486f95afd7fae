#include "cconv/rules/packed_charsets.h"

#include <algorithm>
#include <utility>

#include "cconv/limits.h"
#include "cconv/rules/rule_path.h"
#include "common/faults.h"

namespace ksv {
namespace {

constexpr uint32_t kMagic = 0x5056534B;
constexpr uint32_t kVersion = 2;

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
  uint32_t narrowTemplates;
  uint32_t narrowTemplateCount;
  uint32_t wideTemplates;
  uint32_t wideTemplateCount;
  uint32_t data;
  uint32_t dataSize;
};

// Of a table: which number of a line is the key, and the bytes of a value.
constexpr uint32_t formOf(uint32_t keyColumn, uint32_t valueBytes) {
  return keyColumn | valueBytes << 8;
}

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
  narrowTemplates_ = parts.at<uint16_t>(
      header.narrowTemplates, uint64_t{header.narrowTemplateCount} * PackedTable::kKeysAPage);
  wideTemplates_ = parts.at<uint32_t>(header.wideTemplates,
                                      uint64_t{header.wideTemplateCount} * PackedTable::kKeysAPage);
  data_ = parts.at<uint8_t>(header.data, header.dataSize);
  const PackedCatalog::Bytes stream = parts.at<uint8_t>(header.catalog, header.catalogSize);
  if (!parts.areSound() || header.data % alignof(uint32_t) != 0) return false;
  if (!isSoundPage(0) || !isSoundTemplate(0)) return false;
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
          ? findTable(*number, formOf(table.keyColumn, table.valueBytes))
          : nullptr;
  if (entry == nullptr)
    return takeLines(*number, [&](uint32_t first, uint32_t second) {
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

// The lines that are kept, and between them those that the table by the first number gives in its
// order, but for the keys that are passed over.
template <class Take>
bool PackedCharsets::takeLines(uint32_t number, Take take) const {
  const PackedCatalog::TableFile& file = catalog_.tableFiles[number];
  const uint32_t behind = file.lineCount - file.linesInFront - file.derivedLines;
  PackedStream stream(file.records);
  bool goesOn = true;
  const auto takeOne = [&](uint32_t first, uint32_t second) {
    return goesOn = take(first, second);
  };
  if (!takeRecords(stream, file.linesInFront, takeOne)) return false;
  if (!goesOn || file.derivedLines == 0) return !goesOn || takeRecords(stream, behind, takeOne);
  PackedStream last = stream;
  const auto pass = [](uint32_t, uint32_t) { return true; };
  if (!takeRecords(stream, behind, pass)) return false;
  if (!takeDerived(number, file.derivedLines, stream, takeOne)) return false;
  return !goesOn || takeRecords(last, behind, takeOne);
}

template <class Take>
bool PackedCharsets::takeDerived(uint32_t number, uint32_t count, PackedStream& passedOver,
                                 Take take) const {
  constexpr uint32_t kWholeCodes = 4;
  const TableEntry* const entry = findTable(number, formOf(CodeTable::kFirstColumn, kWholeCodes));
  const std::optional<PackedTable> table = entry == nullptr ? std::nullopt : tableOf(*entry);
  if (!table) return false;
  uint32_t passes = passedOver.number();
  uint32_t untilNext = passes == 0 ? 0 : passedOver.number();
  bool goesOn = true;
  table->forEach([&](uint32_t first, uint32_t second) {
    if (passes != 0 && untilNext-- == 0) {
      untilNext = --passes == 0 ? 0 : passedOver.number();
      return true;
    }
    --count;
    goesOn = take(first, second);
    return goesOn && count != 0;
  });
  return passedOver.isSound() && (!goesOn || count == 0);
}

std::optional<std::vector<std::pair<uint32_t, uint32_t>>> PackedCharsets::lines(
    uint32_t file) const {
  std::vector<std::pair<uint32_t, uint32_t>> lines;
  const bool areAll = takeLines(file, [&](uint32_t first, uint32_t second) {
    lines.emplace_back(first, second);
    return true;
  });
  return areAll ? std::optional(std::move(lines)) : std::nullopt;
}

const PackedCharsets::TableEntry* PackedCharsets::findTable(uint32_t file, uint32_t form) const {
  const auto found = std::ranges::find_if(
      tables_, [&](const TableEntry& entry) { return entry.file == file && entry.form == form; });
  return found == tables_.end() ? nullptr : &*found;
}

std::optional<PackedTable> PackedCharsets::tableOf(const TableEntry& entry) const {
  Parts parts(data_);
  const Words directory = parts.at<uint32_t>(entry.directory, entry.directoryLength);
  const auto runs = parts.at<PackedTable::Run>(entry.runs, entry.runCount);
  constexpr uint32_t kLongestDirectory =
      kDirectPageKeys / (PackedTable::kKeysAPage * PackedTable::kPagesABlock);
  if (!parts.areSound() || entry.directoryLength > kLongestDirectory) return std::nullopt;
  PackedTable table;
  table.directory = directory.data();
  table.directoryLength = entry.directoryLength;
  table.runs = runs.data();
  table.runCount = entry.runCount;
  table.blocks = blocks_.data();
  table.pages = pages_.data();
  table.narrowTemplates = narrowTemplates_.data();
  table.narrowCount = static_cast<uint32_t>(narrowTemplates_.size() / PackedTable::kKeysAPage);
  table.wideTemplates = wideTemplates_.data();
  return isSound(table) ? std::optional(table) : std::nullopt;
}

// Whatever is asked for, nothing outside the file is read.
bool PackedCharsets::isSound(const PackedTable& table) const {
  const Words directory(table.directory, table.directoryLength);
  if (!std::ranges::all_of(directory, [&](uint32_t block) { return isSoundBlock(block); }))
    return false;
  const std::span<const PackedTable::Run> runs(table.runs, table.runCount);
  uint64_t pages = 0;  // each of which has a line at least
  for (const PackedTable::Run& run : runs) {
    pages += run.count;
    if (!isSoundRun(run) || pages > limits::kMostPackedLines) return false;
  }
  return std::ranges::is_sorted(runs, {}, &PackedTable::Run::firstPrefix);
}

bool PackedCharsets::isSoundRun(const PackedTable::Run& run) const {
  return run.distance != 0 && run.count <= limits::kMostPackedLines && isSoundTemplate(run.steps);
}

bool PackedCharsets::isSoundBlock(uint32_t block) const {
  if (block >= blocks_.size() / PackedTable::kPagesABlock) return false;
  const Words pages =
      blocks_.subspan(size_t{block} * PackedTable::kPagesABlock, PackedTable::kPagesABlock);
  return std::ranges::all_of(pages, [&](uint32_t page) { return isSoundPage(page); });
}

bool PackedCharsets::isSoundPage(uint32_t page) const {
  return page < pages_.size() && isSoundTemplate(pages_[page].steps);
}

bool PackedCharsets::isSoundTemplate(uint32_t steps) const {
  return steps < (narrowTemplates_.size() + wideTemplates_.size()) / PackedTable::kKeysAPage;
}

}  // namespace ksv
