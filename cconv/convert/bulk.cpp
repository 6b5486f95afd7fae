#include "cconv/convert/bulk.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "cconv/convert/composition.h"
#include "cconv/convert/converter.h"
#include "cconv/convert/driver.h"
#include "cconv/convert/language_tag.h"
#include "cconv/rules/text_units.h"

namespace ksv {
namespace {

constinit std::atomic<bool> bulkPathEnabled = true;

// Fewer bytes of input than this are not worth a table.
constexpr int32_t kLeastInput = 1024;
// Bytes that a character is read from at most, and that storing an entry touches.
constexpr ptrdiff_t kLongestInput = 4;
constexpr ptrdiff_t kEntryBytes = 8;
// All tables of a process together: pages of 2 KB, 16 MB.
constexpr uint32_t kMostPages = 8192;
constinit std::atomic<uint32_t> pagesInUse = 0;

// --- Entries of a direct table. ---
//
// Bytes 0 to 5 of an entry in memory are the output; its length and the units that
// it counts for stand in the 16 bits above.

using Entry = uint64_t;
constexpr Entry kNoEntry = 0;
constexpr int32_t kLongestOutput = 6;

Entry makeEntry(const uint8_t* output, int32_t length, int32_t units) {
  Entry entry = 0;
  for (int32_t i = 0; i < length; ++i) entry |= Entry{output[i]} << (8 * i);
  return entry | static_cast<Entry>(length) << 48 | static_cast<Entry>(units) << 52;
}
constexpr uint32_t outputLength(Entry entry) { return entry >> 48 & 0xF; }
constexpr uint32_t unitCount(Entry entry) { return static_cast<uint32_t>(entry >> 52); }

void storeBytes(uint8_t* output, Entry entry) {
  // Compiles to one store on a little-endian machine.
  uint8_t bytes[8];
  for (int i = 0; i < 8; ++i) bytes[i] = static_cast<uint8_t>(entry >> (8 * i));
  std::memcpy(output, bytes, sizeof bytes);
}

// --- Direct tables. ---

// What the output of a character depends on besides its own bytes.
struct TableKey {
  const CharsetDef* source;
  const CharsetDef* target;
  bool inputBigEndian;
  bool outputBigEndian;
  bool convertNewlines;

  bool operator==(const TableKey&) const = default;
};

TableKey keyOf(const ConverterRecord& record) {
  return {sourceCharset(record), targetCharset(record), record.inputBigEndian != 0,
          record.options.outputBigEndian != 0, record.options.convertNewlines != 0};
}

bool isLineEnd(const ConverterRecord& record) {
  return record.rawCode == '\r' || record.rawCode == '\n' || record.unicodeCode == 0x2028 ||
         record.unicodeCode == 0x2029;
}

// Lets the step-by-step engine convert one character in a record of its own, with
// nothing pending.
Entry askEngine(const ConverterRecord& record, const uint8_t* input, int32_t length) {
  uint8_t output[16];
  ConverterRecord scratch = record;
  scratch.input = input;
  scratch.inputPosition = 0;
  scratch.inputLength = length;
  scratch.output = output;
  scratch.outputPosition = 0;
  scratch.outputCapacity = sizeof output;
  scratch.charactersRead = 0;
  scratch.unitsWritten = 0;
  scratch.skipInvalid = 0;
  scratch.options.replaceUnmappable = 0;
  scratch.options.convertNewlines = 0;
  scratch.defaultLanguage[0] = '\0';
  scratch.status = KSV_STATUS_WRITTEN;
  const ProvisionalAnswers provisional;
  convertByCharacters(scratch, 1);
  if (provisional.any()) return kNoEntry;
  const bool oneCharacterWritten = scratch.status == KSV_STATUS_WRITTEN &&
                                   scratch.inputPosition == length && scratch.charactersRead == 1;
  if (!oneCharacterWritten || scratch.outputPosition > kLongestOutput) return kNoEntry;
  if (record.options.convertNewlines != 0 && isLineEnd(scratch)) return kNoEntry;
  return makeEntry(output, scratch.outputPosition, scratch.unitsWritten);
}

// Pages of 256 entries, each made when it is first needed.
class DirectTable {
 public:
  using Page = std::array<Entry, 256>;

  explicit DirectTable(size_t pages) : pages_(pages) {}
  ~DirectTable() {
    for (auto& page : pages_) release(page.load(std::memory_order_relaxed));
  }
  DirectTable(const DirectTable&) = delete;
  DirectTable& operator=(const DirectTable&) = delete;

  using Slot = std::atomic<const Page*>;
  const Slot* slots() const { return pages_.data(); }

  // Makes the page that a slot lacks. Null when there is no memory, or the tables
  // are as large as they may get. makeBytes writes the input bytes of an entry and
  // returns their number, 0 for what has no entry.
  template <typename MakeBytes>
  const Page* makePage(const ConverterRecord& record, uint32_t index, MakeBytes makeBytes);

 private:
  static void release(const Page* page) {
    if (page == nullptr) return;
    delete page;
    pagesInUse.fetch_sub(1, std::memory_order_relaxed);
  }

  std::vector<Slot> pages_;
};

template <typename MakeBytes>
const DirectTable::Page* DirectTable::makePage(const ConverterRecord& record, uint32_t index,
                                             MakeBytes makeBytes) {
  if (pagesInUse.fetch_add(1, std::memory_order_relaxed) >= kMostPages) {
    pagesInUse.fetch_sub(1, std::memory_order_relaxed);
    return nullptr;
  }
  Page* made = new (std::nothrow) Page();
  if (made == nullptr) {
    pagesInUse.fetch_sub(1, std::memory_order_relaxed);
    return nullptr;
  }
  for (uint32_t slot = 0; slot < made->size(); ++slot) {
    uint8_t bytes[4];
    const int32_t length = makeBytes(index << 8 | slot, bytes);
    if (length > 0) (*made)[slot] = askEngine(record, bytes, length);
  }
  const Page* published = nullptr;
  if (pages_[index].compare_exchange_strong(published, made, std::memory_order_acq_rel)) {
    return made;
  }
  release(made);
  return published;
}

// The way to a table's entries for one run of the bulk path. It keeps the table's
// place in a variable of its own: the output that is written on the way could, for
// all the compiler knows, be the table itself.
class TableCursor {
 public:
  TableCursor(DirectTable& table, const ConverterRecord& record)
      : slots_(table.slots()), table_(table), record_(record) {}

  // Null when there is no page and none can be made.
  template <typename MakeBytes>
  const DirectTable::Page* page(uint32_t index, MakeBytes makeBytes) const {
    const DirectTable::Page* page = slots_[index].load(std::memory_order_acquire);
    return page != nullptr ? page : table_.makePage(record_, index, makeBytes);
  }

 private:
  const DirectTable::Slot* slots_;
  DirectTable& table_;
  const ConverterRecord& record_;
};

// --- The characters of each source form. ---
//
// next finds the entry of the character at input, or kNoEntry, and how many bytes
// it is read from. At least kLongestInput bytes of input follow. The length comes from
// the input alone, not from the entry: so the processor begins with the next
// character before the tables have answered for this one.

struct Found {
  Entry entry;
  uint32_t length;
};
constexpr Found kNothing = {kNoEntry, 0};

void putUnit(uint8_t* bytes, uint32_t value, uint32_t width, bool bigEndian) {
  for (uint32_t i = 0; i < width; ++i) {
    bytes[bigEndian ? width - 1 - i : i] = static_cast<uint8_t>(value >> (8 * i));
  }
}

class BytePairs {
 public:
  static constexpr size_t kPages = 257;
  static constexpr bool kBytes = true;

  explicit BytePairs(const TableCursor& cursor)
      : cursor_(cursor), singles_(cursor.page(kSingleBytes, makeSingle)) {}

  Found next(const uint8_t* input) const {
    if (singles_ == nullptr) return kNothing;
    if (const Entry single = (*singles_)[input[0]]; single != kNoEntry) return {single, 1};
    const auto* pairs = cursor_.page(input[0], makePair);
    return pairs != nullptr ? Found{(*pairs)[input[1]], 2} : kNothing;
  }

 private:
  static constexpr uint32_t kSingleBytes = 256;  // the page of single bytes

  static int32_t makeSingle(uint32_t code, uint8_t* bytes) {
    bytes[0] = static_cast<uint8_t>(code);
    return 1;
  }
  static int32_t makePair(uint32_t code, uint8_t* bytes) {
    putUnit(bytes, code, 2, true);
    return 2;
  }

  const TableCursor cursor_;
  const DirectTable::Page* const singles_;
};

// What the Unicode forms share: entries are found by the value.
class UnicodeSource {
 public:
  static constexpr size_t kPages = 0x110000 >> 8;

 protected:
  explicit UnicodeSource(const TableCursor& cursor) : cursor_(cursor) {}

  // A mark may compose with the character before it. The bulk path stops at it and
  // goes back over that character, so nothing else has to look ahead.
  static bool isMark(uint32_t value) { return standaloneMark(value) != 0; }

  template <typename MakeBytes>
  Entry entryOf(uint32_t value, MakeBytes makeBytes) const {
    if (value > 0x10FFFF) return kNoEntry;
    const auto* page = cursor_.page(value >> 8, makeBytes);
    return page != nullptr ? (*page)[value & 0xFF] : kNoEntry;
  }

 private:
  const TableCursor cursor_;
};

class Utf8 : private UnicodeSource {
 public:
  using UnicodeSource::kPages;
  static constexpr bool kBytes = true;

  explicit Utf8(const TableCursor& cursor) : UnicodeSource(cursor) {}

  // As leniently as the decoder reads.
  Found next(const uint8_t* input) const {
    const uint32_t lead = input[0];
    if (lead < 0xC0) return {entryOf(lead, makeBytes), 1};
    const uint32_t second = input[1] & 0x3Fu;
    if (lead < 0xE0) return {entryOf((lead & 0x1F) << 6 | second, makeBytes), 2};
    const uint32_t third = input[2] & 0x3Fu;
    if (lead < 0xF0) return {entryOf((lead & 0x0F) << 12 | second << 6 | third, makeBytes), 3};
    if (lead >= 0xF8) return kNothing;
    const uint32_t fourth = input[3] & 0x3Fu;
    return {entryOf((lead & 0x07) << 18 | second << 12 | third << 6 | fourth, makeBytes), 4};
  }

 private:
  static int32_t makeBytes(uint32_t value, uint8_t* bytes) {
    if (isMark(value)) return 0;
    if (value < 0x80) {
      bytes[0] = static_cast<uint8_t>(value);
      return 1;
    }
    const int32_t length = value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
    for (int32_t i = length - 1; i > 0; --i, value >>= 6) {
      bytes[i] = static_cast<uint8_t>(0x80 | (value & 0x3F));
    }
    bytes[0] = static_cast<uint8_t>(0xF00u >> length | value);
    return length;
  }
};

template <bool kBigEndian>
class Utf16 : private UnicodeSource {
 public:
  using UnicodeSource::kPages;
  static constexpr bool kBytes = false;

  explicit Utf16(const TableCursor& cursor) : UnicodeSource(cursor) {}

  Found next(const uint8_t* input) const {
    const uint32_t unit = readUnit(input, 2, kBigEndian);
    if (!isSurrogate(unit)) return {entryOf(unit, makeBytes), 2};
    const uint32_t second = readUnit(input + 2, 2, kBigEndian);
    if (!isHighSurrogate(unit) || !isSurrogate(second) || isHighSurrogate(second)) return kNothing;
    return {entryOf(joinSurrogates(unit, second), makeBytes), 4};
  }

 private:
  static int32_t makeBytes(uint32_t value, uint8_t* bytes) {
    if (isSurrogate(value) || isMark(value)) return 0;
    if (value < 0x10000) {
      putUnit(bytes, value, 2, kBigEndian);
      return 2;
    }
    putUnit(bytes, 0xD7C0 + (value >> 10), 2, kBigEndian);
    putUnit(bytes + 2, 0xDC00 | (value & 0x3FF), 2, kBigEndian);
    return 4;
  }
};

// One unit a character: UCS-2 and UCS-4.
template <uint32_t kWidth, bool kBigEndian>
class FixedUnits : private UnicodeSource {
 public:
  using UnicodeSource::kPages;
  static constexpr bool kBytes = false;

  explicit FixedUnits(const TableCursor& cursor) : UnicodeSource(cursor) {}

  Found next(const uint8_t* input) const {
    return {entryOf(readUnit(input, kWidth, kBigEndian), makeBytes), kWidth};
  }

 private:
  static int32_t makeBytes(uint32_t value, uint8_t* bytes) {
    putUnit(bytes, value, kWidth, kBigEndian);
    return static_cast<int32_t>(kWidth);
  }
};

// --- The loop. ---

uint64_t loadEight(const uint8_t* bytes) {
  uint64_t eight;
  std::memcpy(&eight, bytes, sizeof eight);
  return eight;
}

constexpr uint64_t kHighBits = 0x8080808080808080;

// Whether some byte of eight ASCII bytes equals c.
constexpr bool hasByte(uint64_t eight, uint8_t c) {
  const uint64_t difference = eight ^ 0x0101010101010101 * c;
  return ((difference - 0x0101010101010101) & ~difference & kHighBits) != 0;
}

// Where a conversion stands.
struct Position {
  const uint8_t* input;
  uint8_t* output;
  uint32_t characters;
  uint32_t units;
};

// What is checked once for so many characters: that they have room.
constexpr uint32_t kBatch = 64;

template <typename Form>
class FormConverter : public BulkConverter {
 public:
  explicit FormConverter(bool stopsAtLineEnds)
      : table_(Form::kPages), stopsAtLineEnds_(stopsAtLineEnds) {}

  void runAhead(ConverterRecord& record) override {
    if (languageIsDue(record)) return;
    const Form form{TableCursor(table_, record)};
    const uint8_t* const inputEnd = record.input + record.inputLength;
    const uint8_t* const outputEnd = record.output + record.outputCapacity;
    const bool copiesAscii = Form::kBytes && asciiIsItself(form);

    Position at = {record.input + record.inputPosition, record.output + record.outputPosition, 0, 0};
    Position batchStart = at;
    Position batchBefore = at;
    for (;;) {
      const uint32_t batch = charactersWithRoom(inputEnd - at.input, outputEnd - at.output);
      // No smaller batches: the last two characters then lie in the last two of them.
      if (batch < kRedone) break;
      batchBefore = batchStart;
      batchStart = at;
      const uint32_t wanted = at.characters + batch;
      advance(form, at, wanted, copiesAscii);
      if (at.characters != wanted) break;
    }
    if (at.characters <= kRedone) return;  // not worth handing over
    const uint32_t kept = at.characters - kRedone;
    Position end = kept >= batchStart.characters ? batchStart : batchBefore;
    advance(form, end, kept, copiesAscii);
    takeOver(record, end);
  }

 private:
  // The characters that the engine converts again behind a run.
  static constexpr uint32_t kRedone = 2;

  static uint32_t charactersWithRoom(ptrdiff_t input, ptrdiff_t output) {
    const ptrdiff_t room = std::min(input / kLongestInput, output / kEntryBytes) - 1;
    return static_cast<uint32_t>(std::clamp<ptrdiff_t>(room, 0, kBatch));
  }

  // Goes on until wanted characters have been converted, or one cannot be decided.
  void advance(const Form& form, Position& position, uint32_t wanted, bool copiesAscii) const {
    Position at = position;
    while (at.characters < wanted) {
      if (copiesAscii && at.input[0] < 0x80 && wanted - at.characters >= 8 && copyEight(at)) {
        continue;
      }
      const Found found = form.next(at.input);
      if (found.entry == kNoEntry) break;
      storeBytes(at.output, found.entry);
      at.output += outputLength(found.entry);
      at.units += unitCount(found.entry);
      at.input += found.length;
      ++at.characters;
    }
    position = at;
  }

  // Copies eight ASCII bytes at once.
  bool copyEight(Position& at) const {
    const uint64_t eight = loadEight(at.input);
    if ((eight & kHighBits) != 0) return false;
    if (stopsAtLineEnds_ && (hasByte(eight, '\r') || hasByte(eight, '\n'))) return false;
    std::memcpy(at.output, &eight, sizeof eight);
    at.input += sizeof eight;
    at.output += sizeof eight;
    at.units += sizeof eight;
    at.characters += sizeof eight;
    return true;
  }

  static void takeOver(ConverterRecord& record, const Position& end) {
    const auto advanced = [](int32_t count, uint32_t by) {
      return static_cast<int32_t>(static_cast<uint32_t>(count) + by);
    };
    record.inputPosition = static_cast<int32_t>(end.input - record.input);
    record.outputPosition = static_cast<int32_t>(end.output - record.output);
    record.charactersRead = advanced(record.charactersRead, end.characters);
    record.unitsWritten = advanced(record.unitsWritten, end.units);
  }

  // Whether every ASCII byte but the line ends, if they matter, is written as it is.
  bool asciiIsItself(const Form& form) {
    const int known = asciiIsItself_.load(std::memory_order_relaxed);
    if (known >= 0) return known != 0;
    bool itself = true;
    for (uint32_t c = 0; c < 0x80 && itself; ++c) {
      if (stopsAtLineEnds_ && (c == '\r' || c == '\n')) continue;
      const uint8_t text[kLongestInput] = {static_cast<uint8_t>(c)};
      itself = form.next(text).entry == makeEntry(text, 1, 1);
    }
    asciiIsItself_.store(itself ? 1 : 0, std::memory_order_relaxed);
    return itself;
  }

  DirectTable table_;
  const bool stopsAtLineEnds_;
  std::atomic<int> asciiIsItself_ = -1;
};

// --- The converters of the process. ---

bool allMembersHaveWidth(const CharsetDef& charset, uint16_t width) {
  for (const SubsetDef* group : charset.members) {
    if (group->bytesPerCode != width) return false;
  }
  return true;
}

template <typename Form>
std::unique_ptr<BulkConverter> makeConverterFor(const TableKey& key) {
  return std::make_unique<FormConverter<Form>>(key.convertNewlines);
}

std::unique_ptr<BulkConverter> makeConverter(const TableKey& key, SourceForm form) {
  const bool bigEndian = key.inputBigEndian;
  switch (form) {
    case SourceForm::kBytePairs: return makeConverterFor<BytePairs>(key);
    case SourceForm::kUtf8: return makeConverterFor<Utf8>(key);
    case SourceForm::kUtf16:
      return bigEndian ? makeConverterFor<Utf16<true>>(key) : makeConverterFor<Utf16<false>>(key);
    case SourceForm::kUcs2:
      // The decoder reads as many bytes as its groups are wide.
      if (!allMembersHaveWidth(*key.source, 2)) return nullptr;
      return bigEndian ? makeConverterFor<FixedUnits<2, true>>(key)
                       : makeConverterFor<FixedUnits<2, false>>(key);
    case SourceForm::kUcs4:
      return bigEndian ? makeConverterFor<FixedUnits<4, true>>(key)
                       : makeConverterFor<FixedUnits<4, false>>(key);
    case SourceForm::kOther: return nullptr;
  }
  return nullptr;
}

// Every bulk converter that has been asked for, those that do not exist included.
class BulkConverters : public DerivedTables {
 public:
  BulkConverter* find(const TableKey& key, SourceForm form) {
    const std::lock_guard<std::mutex> guard(mutex_);
    for (const Known& known : known_) {
      if (known.key == key) return known.converter.get();
    }
    known_.push_back({key, makeConverter(key, form)});
    return known_.back().converter.get();
  }

 private:
  struct Known {
    TableKey key;
    std::unique_ptr<BulkConverter> converter;
  };
  std::mutex mutex_;
  std::vector<Known> known_;
};

BulkConverters& convertersOfProcess() {
  static constinit std::mutex mutex;
  const std::lock_guard<std::mutex> guard(mutex);
  auto& derived = ruleBase.lists->derived;
  if (derived == nullptr) derived = std::make_unique<BulkConverters>();
  return static_cast<BulkConverters&>(*derived);
}

}  // namespace

bool isMarkPending(const ConverterRecord& record) {
  const SourceForm form = sourceDecoder(record)->sourceForm;
  const bool readsMark = form != SourceForm::kOther && form != SourceForm::kBytePairs;
  return (readsMark && record.detectByteOrderMark != 0) ||
         (targetEncoder(record)->writesMark && record.options.writeByteOrderMark != 0);
}

BulkConverter* findBulkConverter(const ConverterRecord& record) try {
  if (bytesLeft(record) < kLeastInput || !bulkPathEnabled.load(std::memory_order_relaxed)) {
    return nullptr;
  }
  const SourceForm form = sourceDecoder(record)->sourceForm;
  // With a supplementary mode a character's output depends on the replacements too.
  if (form == SourceForm::kOther || record.options.supplementaryMode != 0) return nullptr;
  return ruleBase.lists == nullptr ? nullptr : convertersOfProcess().find(keyOf(record), form);
} catch (const std::bad_alloc&) {
  return nullptr;
}

void setBulkPathEnabled(bool enabled) {
  bulkPathEnabled.store(enabled, std::memory_order_relaxed);
}

}  // namespace ksv
