#include "cconv/convert/bulk.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "cconv/convert/converter.h"
#include "cconv/convert/direct_table.h"
#include "cconv/convert/source_forms.h"

namespace ksv {
namespace {

constinit std::atomic<bool> bulkPathEnabled = true;

// Fewer bytes of input than this are not worth a table.
constexpr int32_t kLeastInput = 1024;
// What storing an entry touches.
constexpr ptrdiff_t kEntryBytes = sizeof(Entry);

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

// Without looking further than needed: the engine decides.
bool languageMayBeDue(const ConverterRecord& record) {
  return record.defaultLanguage[0] != '\0' &&
         std::strncmp(record.currentLanguage, record.emittedLanguage, KSV_NAME_SIZE) != 0;
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
    if (languageMayBeDue(record)) return;
    const Form form{TableCursor(table_, record)};
    const uint8_t* const inputEnd = record.input + record.inputLength;
    const uint8_t* const outputEnd = record.output + record.outputCapacity;
    const bool copiesAscii = Form::kBytes && asciiIsItself(form);

    Position at = {record.input + record.inputPosition, record.output + record.outputPosition, 0,
                   0};
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
    const ptrdiff_t room = std::min(input / source_forms::kLongestInput, output / kEntryBytes) - 1;
    return static_cast<uint32_t>(std::clamp<ptrdiff_t>(room, 0, kBatch));
  }

  // Goes on until wanted characters have been converted, or one cannot be decided.
  void advance(const Form& form, Position& position, uint32_t wanted, bool copiesAscii) const {
    Position at = position;
    while (at.characters < wanted) {
      if (copiesAscii && at.input[0] < 0x80 && wanted - at.characters >= 8 && copyEight(at)) {
        continue;
      }
      const source_forms::Found found = form.next(at.input);
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
      const uint8_t text[source_forms::kLongestInput] = {static_cast<uint8_t>(c)};
      itself = form.next(text).entry == makeEntry(text, 1, 1);
    }
    asciiIsItself_.store(itself ? 1 : 0, std::memory_order_relaxed);
    return itself;
  }

  DirectTable table_;
  const bool stopsAtLineEnds_;
  std::atomic<int> asciiIsItself_ = -1;
};

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
    case SourceForm::kBytePairs:
      return makeConverterFor<source_forms::BytePairs>(key);
    case SourceForm::kUtf8:
      return makeConverterFor<source_forms::Utf8>(key);
    case SourceForm::kUtf16:
      return bigEndian ? makeConverterFor<source_forms::Utf16<true>>(key)
                       : makeConverterFor<source_forms::Utf16<false>>(key);
    case SourceForm::kUcs2:
      // The decoder reads as many bytes as its groups are wide.
      if (!allMembersHaveWidth(*key.source, 2)) return nullptr;
      return bigEndian ? makeConverterFor<source_forms::FixedUnits<2, true>>(key)
                       : makeConverterFor<source_forms::FixedUnits<2, false>>(key);
    case SourceForm::kUcs4:
      return bigEndian ? makeConverterFor<source_forms::FixedUnits<4, true>>(key)
                       : makeConverterFor<source_forms::FixedUnits<4, false>>(key);
    case SourceForm::kOther:
      return nullptr;
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
    if (known_.size() >= kMostConverters) return nullptr;
    known_.push_back({key, makeConverter(key, form)});
    return known_.back().converter.get();
  }

 private:
  // With 35 KB of page pointers each, 9 MB; all charsets of the directory with one
  // set of options, and more than any process has been seen to use.
  static constexpr size_t kMostConverters = 256;

  struct Known {
    TableKey key;
    std::unique_ptr<BulkConverter> converter;
  };
  std::mutex mutex_;
  std::vector<Known> known_;
};

BulkConverters& convertersOfProcess() {
  static std::mutex mutex;
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
  if (form == SourceForm::kOther || record.options.supplementaryMode != 0 ||
      targetEncoder(record)->keepsState) {
    return nullptr;
  }
  return ruleBase.lists == nullptr ? nullptr : convertersOfProcess().find(keyOf(record), form);
} catch (const std::bad_alloc&) {
  return nullptr;
}

void setBulkPathEnabled(bool enabled) { bulkPathEnabled.store(enabled, std::memory_order_relaxed); }

}  // namespace ksv
