// Filling of code tables.
//
// The source of a table is a text file of hexadecimal pairs. The first process
// that needs it writes a compiled copy beside it: no header, one record of two
// little-endian 32-bit numbers for each pair, in the order of the text. Every
// later process reads that copy. The copy appears complete or not at all, so
// whoever is killed while writing it leaves nothing that could be read. Tables of the
// directory that came with the library may stand packed in one file, and are used from there.
#include "cconv/rules/table_loader.h"

#include <cstring>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

#include "cconv/limits.h"
#include "cconv/rules/publication.h"
#include "cconv/rules/rule_base.h"
#include "cconv/rules/rule_path.h"
#include "cconv/rules/table_reader.h"
#include "cconv/rules/text_units.h"
#include "common/faults.h"
#include "common/platform.h"
#include "ksv_cconv.h"

namespace ksv {
namespace {

using Reading = CodeTable::Reading;

constexpr size_t kRecordSize = 8;
// A table whose only key is 0 or above this stays unloaded, as an empty one does.
constexpr uint32_t kHighestLoneKey = 0xFFFFFFF;

struct TablePaths {
  std::string text;
  std::string compiled;
};

// A directory in the declared name is kept; name and extension are lower-cased.
TablePaths pathsOf(const CodeTable& table) {
  PathParts parts = splitPath(ruleBase.path() + table.fileName);
  lowerFileName(parts);
  TablePaths paths;
  paths.text = joinPath(parts);
  parts.extension = ".cmp";
  paths.compiled = joinPath(parts);
  return paths;
}

// A fill that a system error has ended, which must not look like the end of the data.
void cutShort(CodeTable& table, const std::string& path, platform::SystemError error) {
  table.isCutShort = true;
  noteFault(FaultSubject::kCodeTable, path, error);
}

void insertRecords(CodeTable& table, platform::InputFile& file) {
  if (file.size() == 0 || file.size() > limits::kLargestFile) return;
  const size_t bytes = static_cast<size_t>(file.size());
  const auto records = std::make_unique_for_overwrite<uint8_t[]>(bytes);
  if (file.read(records.get(), bytes) != bytes) return;
  // A last partial record is no record.
  for (size_t at = 0; at + kRecordSize <= bytes; at += kRecordSize) {
    const uint8_t* record = records.get() + at;
    if (!insertPair(table, readUnit(record, 4, false), readUnit(record + 4, 4, false),
                    ruleBase.entriesPerBlock()))
      break;
  }
}

// An empty or unreadable one gives an empty table. False when there is none, or it cannot
// even be opened: it is made from its text then, and the error is of interest only where
// there is no text either.
bool loadCompiled(CodeTable& table, const std::string& path, platform::SystemError& error) {
  platform::InputFile file(path.c_str(), platform::InputFile::Takes::kRegularFile);
  error = file.error();
  if (file.size() < 0) return false;
  insertRecords(table, file);
  if (file.error() != 0) cutShort(table, path, file.error());
  return true;
}

bool writeRecord(platform::ReplacementFile& file, uint32_t first, uint32_t second) {
  uint8_t record[kRecordSize];
  writeUnit32LittleEndian(record, first);
  writeUnit32LittleEndian(record + 4, second);
  return file.write(record, sizeof record);
}

// Inserts the pairs of a text, and writes them into the compiled copy as long as that goes.
void insertText(CodeTable& table, TableReader& reader,
                std::unique_ptr<platform::ReplacementFile>& compiled) {
  for (;;) {
    const auto first = reader.nextNumber();
    const auto second = first ? reader.nextNumber() : std::nullopt;
    if (!second) break;
    if (!insertPair(table, *first, *second, ruleBase.entriesPerBlock())) break;
    if (compiled && !writeRecord(*compiled, *first, *second)) {
      noteUnwrittenTable(platform::lastError());
      compiled.reset();
    }
  }
}

// Fills the table from its text and writes the compiled copy on the way. Where
// that cannot be written, the table is filled all the same. Without a text the
// copy is there and empty.
void compile(CodeTable& table, const TablePaths& paths, platform::SystemError refused) {
  auto compiled = platform::ReplacementFile::create(paths.compiled.c_str());
  if (!compiled) noteUnwrittenTable(platform::lastError());
  pauseForTests(PublicationStep::kFilling);
  platform::SystemError error = 0;
  const auto reader =
      TableReader::open(paths.text, table.sourceEncoding, table.sourceBigEndian, &error);
  if (reader) {
    insertText(table, *reader, compiled);
    error = reader->error();
  } else if (error == 0 && refused != 0) {
    cutShort(table, paths.compiled, refused);
  }
  // An empty copy would go before a packed table that can be used again one day.
  if (!reader && ruleBase.packed() != nullptr) compiled.reset();
  if (error != 0) cutShort(table, paths.text, error);
  if (compiled && !table.isCutShort && !compiled->commit())
    noteUnwrittenTable(platform::lastError());
}

bool isFilled(const CodeTable& table) {
  return table.low != table.high || (table.low != 0 && table.low <= kHighestLoneKey);
}

void forgetValues(CodeTable& table) {
  table.values = CodeStore();
  table.coverage = BlockCoverage();
  table.low = table.high = 0;
  table.hasEntries = false;
  table.isCutShort = false;
}

bool readPacked(CodeTable& table) {
  const PackedCharsets* const packed = ruleBase.packed();
  if (packed == nullptr) return false;
  if (packed->fill(table, ruleBase.entriesPerBlock())) return true;
  forgetValues(table);
  return false;
}

void read(CodeTable& table) {
  if (readPacked(table)) return;
  const TablePaths paths = pathsOf(table);
  platform::SystemError refused = 0;
  if (!loadCompiled(table, paths.compiled, refused)) compile(table, paths, refused);
}

// Reads the table, once, and again where a system error has cut it short. How far it has come
// says so before it is read: whoever finds it half read, in a forked process, leaves it alone.
void fill(CodeTable& table, Reading reached) try {
  const Reading before = std::exchange(table.reading, reached);
  if (before != Reading::kNotRead) {
    if (!table.isCutShort) return;
    forgetValues(table);
  }
  read(table);
} catch (const std::bad_alloc&) {
  table.isCutShort = true;
  noteNoMemory(table.fileName);
}

void setLoaded(CodeTable& table) {
  pauseForTests(PublicationStep::kMade);
  table.setState(table.isCutShort ? CodeTable::State::kLoadedCutShort : CodeTable::State::kLoaded);
}

// False when it still has to be asked for.
bool load(CodeTable& table) {
  if (table.isWhole()) return true;
  // At the second attempt an empty table answers nothing any more, instead of passing
  // every code through.
  const bool isFirst = table.reading < Reading::kAskedFor;
  fill(table, isFirst ? Reading::kAskedFor : Reading::kAskedForAgain);
  if (!isFirst || isFilled(table)) {
    setLoaded(table);
  } else if (table.isCutShort) {
    table.setState(CodeTable::State::kUnread);
  }
  return table.isLoaded();
}

// What the first attempt does, if it is enough. A table that asks for a second one is read
// and counts as not asked for yet.
void loadAhead(CodeTable& table) {
  if (table.isLoaded() || table.reading >= Reading::kAskedFor) return;
  fill(table, Reading::kReadAhead);
  if (!isFilled(table)) return;
  table.reading = Reading::kAskedFor;
  setLoaded(table);
}

// An empty one is passed over now, and has nothing to answer with later.
bool isFinal(CodeTable& table) {
  loadAhead(table);
  return !table.isCutShort && (table.isLoaded() || !table.hasEntries);
}

// Keeps the threads of this process apart where there is no named lock. Not taken
// beside that one: a process forked while a thread holds it could never take it.
std::mutex& processMutex() {
  static std::mutex mutex;
  return mutex;
}

// change does not throw.
bool locked(CodeTable& table, bool (*change)(CodeTable&)) {
  platform::NamedMutex* mutex = ruleBase.tableMutex;
  // A lock whose last holder died is held as well: compiled files are never half
  // written, so there is nothing to mend.
  if (mutex == nullptr || mutex->lock() == platform::NamedMutex::LockResult::kFailed) {
    const std::lock_guard<std::mutex> guard(processMutex());
    return change(table);
  }
  // Not in a destructor: a thread that is cancelled here dies as the holder, which whoever
  // comes next is told.
  const bool result = change(table);
  mutex->unlock();
  return result;
}

}  // namespace

bool ensureTableLoaded(CodeTable* table) {
  if (table == nullptr) return false;
  if (table->isLoaded()) return true;
  if (table->fileName.empty()) return false;
  return locked(*table, load);
}

bool mendTable(CodeTable& table) {
  if (table.waitsForSystem()) locked(table, load);
  return !table.waitsForSystem();
}

bool answersAreFinal(CodeTable& table) {
  if (table.fileName.empty() || table.isWhole()) return true;
  return locked(table, isFinal);
}

bool tableListLookup(const TableList& tables, uint32_t key, uint32_t& value, uint16_t& bytes) {
  for (const auto& table : tables) {
    ensureTableLoaded(table.get());
    if (table->answers() != CodeTable::Answers::kStored) continue;
    if (const uint32_t found = table->find(key); found != 0) {
      value = found;
      bytes = table->valueBytes;
      return true;
    }
  }
  return false;
}

}  // namespace ksv
