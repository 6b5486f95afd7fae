#include "cconv/convert/bulk.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "cconv/convert/character_traces.h"
#include "cconv/convert/converter.h"
#include "cconv/convert/direct_table.h"
#include "cconv/convert/driver.h"
#include "cconv/convert/iso_2022_form.h"
#include "cconv/convert/source_forms.h"
#include "cconv/limits.h"
#include "cconv/rules/table_loader.h"

namespace ksv {
namespace {

constinit std::atomic<BulkPath> bulkPath = BulkPath::kWhereItPays;

bool usesVectors() {
  return bulkPath.load(std::memory_order_relaxed) != BulkPath::kAlwaysWithoutVectors;
}

// Fewer bytes of input than this are not worth handing over.
constexpr int32_t kLeastText = 4;
// Fewer are not worth a table, unless that many have come in short inputs before.
constexpr int64_t kLeastInput = 1024;
constexpr int64_t kLeastInputs = 4096;
// What storing an entry touches.
constexpr ptrdiff_t kEntryBytes = sizeof(Entry);
constexpr ptrdiff_t kShortEntryBytes = sizeof(ShortEntry);

// What the output of a character depends on besides its own bytes.
struct TableKey {
  const LoadedCharset* source;
  const LoadedCharset* target;
  // The newline form, 0 where line ends are not converted, above three flags.
  uint64_t settings;

  static constexpr uint64_t kInputBigEndian = 1;
  static constexpr uint64_t kOutputBigEndian = 2;
  static constexpr uint64_t kConvertNewlines = 4;

  bool inputIsBigEndian() const { return (settings & kInputBigEndian) != 0; }
  bool operator==(const TableKey&) const = default;
};

TableKey keyOf(const ConverterRecord& record) {
  uint64_t settings = 0;
  if (record.inputBigEndian != 0) settings |= TableKey::kInputBigEndian;
  if (record.options.outputBigEndian != 0) settings |= TableKey::kOutputBigEndian;
  if (record.options.convertNewlines != 0)
    settings |= TableKey::kConvertNewlines | uint64_t{record.options.newlineForm} << 3;
  return {sourceCharset(record), targetCharset(record), settings};
}

// Without looking further than needed: the engine decides.
bool languageMayBeDue(const ConverterRecord& record) {
  if (record.defaultLanguage[0] == '\0') return false;
  return record.currentLanguage[0] == '\0' ||
         std::strncmp(record.currentLanguage, record.emittedLanguage, KSV_NAME_SIZE) != 0;
}

// What is checked once for so many characters: that they have room. Where there is room
// for fewer, so many at most are converted beside the output.
constexpr uint32_t kBatch = 16384;
constexpr uint32_t kPiece = 2048;
constexpr uint32_t kLeastBatch = 16;
// Texts of so many bytes are converted in one go.
constexpr ptrdiff_t kLongestShortText = 256;

template <typename Form>
class FormConverter : public BulkConverter {
 public:
  explicit FormConverter(bool designates) : pages_(Form::kPages), designates_(designates) {}
  ~FormConverter() override {
    for (auto& lane : lanes_) delete lane.load(std::memory_order_relaxed);
    delete designating_.load(std::memory_order_relaxed);
  }
  FormConverter(const FormConverter&) = delete;
  FormConverter& operator=(const FormConverter&) = delete;

  void runAhead(ConverterRecord& record) override {
    if (languageMayBeDue(record)) return;
    const uint32_t withoutMemory = pages_.timesWithoutMemory();
    const Form form{TableCursor(pages_, record)};
    if (pages_.timesWithoutMemory() != withoutMemory) return;
    if (!Form::kShifts && !designates_ && convertShortText(form, record)) return;
    const uint8_t* const inputEnd = record.input + record.inputLength;
    const uint8_t* const outputEnd = record.output + record.outputCapacity;

    BulkPosition at = positionOf(record);
    BulkPosition batchStart = at;
    BulkPosition batchBefore = at;
    for (;;) {
      const uint32_t batch = charactersWithRoom(inputEnd - at.input, outputEnd - at.output);
      // The last two characters then lie in the last two batches.
      if (batch < kLeastBatch) break;
      batchBefore = batchStart;
      batchStart = at;
      const uint32_t wanted = at.characters + batch;
      if (batch == kBatch) {
        advance(form, at, wanted);
      } else {
        advanceExactly(form, at, wanted);
      }
      if (at.characters != wanted) break;
    }
    const uint32_t beforeTail = at.characters;
    BulkPosition end = runTail(form, at, inputEnd, outputEnd);
    if (at.characters <= kRedone) return;  // not worth handing over
    const uint32_t kept = at.characters - kRedone;
    if (kept < beforeTail) {
      end = kept >= batchStart.characters ? batchStart : batchBefore;
      advanceAgain(form, end, kept);
    }
    takeOver(record, end);
  }

 private:
  // The characters that the engine converts again behind a run.
  static constexpr uint32_t kRedone = 2;
  static constexpr uint32_t kLeastRun = 8;
  // By what is designated in the output: nothing, or a group of the codec.
  static constexpr uint32_t kDesignations = 1 + kMostDesignatedGroup;
  static constexpr uint32_t kNoGroup = 0xFFFFFFFF;

  // Short entries, and what goes ahead over them.
  struct ShortEntries {
    ShortTable table;
    AsciiStops stops;
    RunShort runByVectors;  // null where the processor has none
    SingleCodes singles;

    ShortRun run() const { return {table.slots(), stops, &singles}; }
  };

  // Those that hold while the same groups are designated.
  struct Lane : ShortEntries {
    AsciiOutput ascii;
    RunShort runShort;
    vector_runs::RunShifted runShifted;
    SharedPages pages;

    bool writesUnits() const {
      return ascii == AsciiOutput::kLittleUnits || ascii == AsciiOutput::kBigUnits;
    }
  };

  // Those of all groups, for an output with escape sequences.
  struct Designating : ShortEntries {
    SharedDesignations designations{kNoGroup};
  };

  // Enters what was made, unless another thread was first; gives what is there.
  template <typename Made>
  static Made* publish(std::atomic<Made*>& slot, std::unique_ptr<Made> made) {
    Made* published = nullptr;
    pauseForTests(PublicationStep::kMade);
    if (!slot.compare_exchange_strong(published, made.get(), std::memory_order_acq_rel))
      return published;
    return made.release();
  }

  static BulkPosition positionOf(const ConverterRecord& record) {
    const uint8_t* const input = record.input + record.inputPosition;
    return {input,
            record.output + record.outputPosition,
            0,
            0,
            record.rawCode == '\r' ? input : nullptr,
            record.decoderState,
            record.designatedGroup};
  }

  static uint32_t charactersWithRoom(ptrdiff_t input, ptrdiff_t output) {
    const ptrdiff_t room = std::min(input / Form::kLongestInput, output / kEntryBytes) - 1;
    return room >= kBatch ? kBatch : static_cast<uint32_t>(std::clamp<ptrdiff_t>(room, 0, kPiece));
  }

  // Goes on until wanted characters have been converted, or one cannot be decided.
  void advance(const Form& form, BulkPosition& at, uint32_t wanted) {
    const bool byVectors = usesVectors();
    for (;;) {
      Designating* const designating =
          byVectors && designates_ ? designatingFor(form, at) : nullptr;
      if (designating != nullptr) runDesignating(*designating, at, wanted);
      if constexpr (Form::kShifts) {
        if (byVectors) runShifted(form, at, wanted);
      }
      if (const Lane* lane = laneAt(form, at); lane != nullptr && lane->table.isThere()) {
        if (byVectors) runLaneByVectors(*lane, at, wanted);
        lane->runShort(lane->run(), at, wanted);
      }
      if (at.characters >= wanted) return;
      if constexpr (Form::kShifts) {
        const bool isBehindReturn = at.behindReturn == at.input;
        if (!Form::takeShift(at)) return;
        if (isBehindReturn) at.behindReturn = at.input;
      }
      const source_forms::Found found = form.next(at);
      if (found.entry == kNoEntry) return;
      takeEntry(at, found);
      if (Lane* lane = laneAt(form, at); lane != nullptr) {
        learn(form, found.shortIndex, shortEntryOf(withoutDesignation(found.entry)), *lane);
      }
      if (designating != nullptr) learnDesignation(found, *designating);
    }
  }

  static void runLaneByVectors(const Lane& lane, BulkPosition& at, uint32_t wanted) {
    if (lane.runByVectors == nullptr) return;
    ShortRun run = lane.run();
    PlainPages pages;
    if (lane.writesUnits()) {
      lane.pages.copyTo(pages);
      run.pages = &pages;
      pauseForTests(PublicationStep::kCopied);
    }
    lane.runByVectors(run, at, wanted);
  }

  static void runDesignating(const Designating& all, BulkPosition& at, uint32_t wanted) {
    ShortRun run = all.run();
    Designations designations;
    all.designations.copyTo(designations);
    run.designations = &designations;
    pauseForTests(PublicationStep::kCopied);
    all.runByVectors(run, at, wanted);
  }

  // Goes ahead across escape sequences, between the groups that texts are mostly made of.
  void runShifted(const Form& form, BulkPosition& at, uint32_t wanted) {
    if (designates_) return;
    for (const CharsetId single : Form::kSingleGroups) {
      if (at.decoderState != single && at.decoderState != Form::kPairGroup) continue;
      const Lane* singles = laneOf(form, at, single);
      const Lane* pairs = laneOf(form, at, Form::kPairGroup);
      if (singles == nullptr || singles->runShifted == nullptr) return;
      if (pairs == nullptr || !pairs->table.isThere() || !singles->table.isThere()) return;
      singles->runShifted({singles->run(), pairs->run(), single, Form::kPairGroup,
                           Form::finalOf(single), Form::finalOf(Form::kPairGroup)},
                          at, wanted);
    }
  }

  const Lane* laneOf(const Form& form, BulkPosition at, uint32_t decoderState) {
    at.decoderState = decoderState;
    return laneAt(form, at);
  }

  // Null where there are no vectors for it.
  Designating* designatingFor(const Form& form, const BulkPosition& at) {
    Designating* known = designating_.load(std::memory_order_acquire);
    if (known == nullptr) known = makeDesignating(form, at);
    const bool works = known != nullptr && known->runByVectors != nullptr && known->table.isThere();
    return works ? known : nullptr;
  }

  Designating* makeDesignating(const Form& form, const BulkPosition& at) {
    std::unique_ptr<Designating> made(new (std::nothrow) Designating{});
    if (made == nullptr || made->table.hadNoMemory()) return nullptr;
    const uint32_t withoutMemory = pages_.timesWithoutMemory();
    made->runByVectors = Form::runDesignating();
    for (uint32_t code = 0; code < 0x100; ++code) {
      const source_forms::Found found = findSingle(form, at, code);
      const bool isOne = found.entry != kNoEntry;
      made->singles.classes[code] = isOne ? SingleCodes::kIsWide : SingleCodes::kNone;
      if (isOne) learnDesignation(found, *made);
      if (isOne && code == 'A') learnAscii(form, at, designatedGroupOf(found.entry), *made);
    }
    if (pages_.timesWithoutMemory() != withoutMemory) return nullptr;
    return publish(designating_, std::move(made));
  }

  void learnAscii(const Form& form, BulkPosition at, uint32_t group, Designating& all) {
    at.designatedGroup = group;
    const Lane* lane = laneAt(form, at);
    if (lane == nullptr || lane->ascii != AsciiOutput::kBytes) return;
    all.designations.setAsciiGroup(group);
    all.stops = lane->stops;
  }

  static void learnDesignation(const source_forms::Found& found, Designating& all) {
    const uint32_t length = escapeLengthOf(found.entry);
    const ShortEntry entry = shortEntryWithGroup(found.entry);
    if (entry == kNoShortEntry || length > Designations::kLongestEscape) return;
    all.designations.add(designationIndex(designatedGroupOf(found.entry)),
                         static_cast<uint32_t>(found.entry), length);
    pauseForTests(PublicationStep::kWord);
    all.table.remember(found.shortIndex, entry);
  }

  // Room for a piece.
  using Scratch = std::array<uint8_t, (kPiece + 1) * kEntryBytes>;

  // Goes on without writing into the output, where everything may stand already.
  void advanceIn(Scratch& scratch, const Form& form, BulkPosition& at, uint32_t wanted) {
    uint8_t* const output = at.output;
    at.output = scratch.data();
    advance(form, at, wanted);
    at.output = output + (at.output - scratch.data());
  }

  // From the start of a batch forward again to a place in it or in the next one.
  void advanceAgain(const Form& form, BulkPosition& at, uint32_t wanted) {
    Scratch scratch;
    while (at.characters < wanted)
      advanceIn(scratch, form, at, std::min(wanted, at.characters + kPiece));
  }

  // Stores of several bytes at once touch some behind the last character. Where the text
  // or its buffer comes to an end that must not be seen.
  void advanceExactly(const Form& form, BulkPosition& at, uint32_t wanted) {
    Scratch scratch;
    uint8_t* const output = at.output;
    advanceIn(scratch, form, at, wanted);
    std::memcpy(output, scratch.data(), static_cast<size_t>(at.output - output));
  }

  // Where a character begins in input and output.
  struct Place {
    const uint8_t* input;
    uint8_t* output;
  };

  // Room for a short text, and for what is stored behind it.
  using ShortScratch = std::array<uint8_t, kLongestShortText * kShortEntryBytes + 128>;

  // Goes ahead in a short text, but for its last characters.
  static void runShortText(const Lane& lane, BulkPosition& at, const uint8_t* inputEnd) {
    for (;;) {
      const auto least = static_cast<uint32_t>((inputEnd - at.input) / Form::kLongestShortInput);
      if (least < kLeastRun) return;
      const uint32_t wanted = at.characters + least - kRedone;
      lane.runShort(lane.run(), at, wanted);
      if (at.characters < wanted) return;
    }
  }

  // Converts a short text as far as short entries answer, and leaves it as it is
  // where another way is better. Its bytes are collected, since nothing behind the output
  // may be touched.
  bool convertShortText(const Form& form, ConverterRecord& record) {
    BulkPosition start = positionOf(record);
    const uint8_t* const inputEnd = record.input + record.inputLength;
    uint8_t* const output = start.output;
    const ptrdiff_t bytes = inputEnd - start.input;
    const ptrdiff_t room = record.output + record.outputCapacity - output;
    if (bytes <= 0 || bytes > kLongestShortText) return false;
    Lane* const lane = laneAt(form, start);
    if (lane == nullptr || !lane->table.isThere()) return false;
    const ShortRun run = lane->run();
    ShortScratch scratch;
    start.output = scratch.data();
    runShortText(*lane, start, inputEnd);
    BulkPosition at = start;  // of which no call that is not inlined knows
    Place beforeLast = {};
    Place last = {};
    while (at.input != inputEnd) {
      const ptrdiff_t left = inputEnd - at.input;
      const Place place = {at.input, at.output};
      if (!Form::takeLast(run, at, left)) [[unlikely]] {
        if (!learnShort(form, at, left, *lane) || !Form::takeLast(run, at, left)) break;
      }
      beforeLast = last;
      last = place;
    }
    const ptrdiff_t length = at.output - scratch.data();
    if (beforeLast.input == nullptr || length > room) return false;
    // Batches take longer entries too.
    if (at.input != inputEnd && charactersWithRoom(bytes, room) >= kLeastBatch) return false;
    std::memcpy(output, scratch.data(), static_cast<size_t>(length));
    at.output = output + length;
    beforeLast.output = output + (beforeLast.output - scratch.data());
    if (at.input == inputEnd) {
      endText(record, at, beforeLast, last);
    } else {
      goBack(record, at, beforeLast);
    }
    return true;
  }

  // Leaves the record as the engine does behind the last characters of a text.
  void endText(ConverterRecord& record, const BulkPosition& end, const Place& beforeLast,
               const Place& last) {
    const CharacterTrace* const before =
        traces_.find(beforeLast.input, last.input - beforeLast.input);
    const CharacterTrace* const trace = traces_.find(last.input, end.input - last.input);
    if (before != nullptr && trace != nullptr) {
      takeOver(record, end);
      trace->leaveIn(record);
      record.previousRawCode = before->rawCode;
      return;
    }
    goBack(record, end, beforeLast);
    convertAndRemember(record, last.input);
    convertAndRemember(record, end.input);
  }

  // Leaves the record at the place where the last two characters begin.
  void goBack(ConverterRecord& record, BulkPosition at, const Place& beforeLast) const {
    at.input = beforeLast.input;
    at.output = beforeLast.output;
    at.characters -= kRedone;
    at.units -= kRedone;
    takeOver(record, at);
  }

  // Lets the engine convert the character that ends there.
  void convertAndRemember(ConverterRecord& record, const uint8_t* end) {
    const uint8_t* const begin = record.input + record.inputPosition;
    convertByCharacters(record, 1);
    if (record.status == KSV_STATUS_WRITTEN) traces_.remember(begin, end - begin, record);
  }

  // Goes on character by character, as far as short entries answer, where the buffers
  // have no more room than that. Returns where it was kRedone characters before its end.
  BulkPosition runTail(const Form& form, BulkPosition& at, const uint8_t* inputEnd,
                       const uint8_t* outputEnd) {
    BulkPosition before[kRedone] = {at, at};
    Lane* const lane = laneAt(form, at);
    if (lane == nullptr || !lane->table.isThere()) return at;
    const ShortRun run = lane->run();
    for (;;) {
      const ptrdiff_t left = inputEnd - at.input;
      uint8_t bytes[kShortEntryBytes];
      BulkPosition next = at;
      next.output = bytes;
      if (!Form::takeLast(run, next, left) &&
          !(learnShort(form, at, left, *lane) && Form::takeLast(run, next, left))) {
        break;
      }
      const ptrdiff_t length = next.output - bytes;
      if (length > outputEnd - at.output) break;
      std::memcpy(at.output, bytes, static_cast<size_t>(length));
      next.output = at.output + length;
      before[0] = before[1];
      before[1] = at;
      at = next;
    }
    return before[0];
  }

  // Looks the character up that has no short entry yet, within the bytes that are left.
  // False when it has none.
  [[gnu::cold]] bool learnShort(const Form& form, BulkPosition at, ptrdiff_t left,
                                Lane& lane) const {
    uint8_t padded[Form::kLongestInput] = {};
    if (left <= 0) return false;
    std::memcpy(padded, at.input, static_cast<size_t>(std::min(left, Form::kLongestInput)));
    at.input = padded;
    const source_forms::Found found = form.next(at);
    if (found.entry == kNoEntry || found.length > left) return false;
    if (designates_ && designatedGroupOf(found.entry) != at.designatedGroup) return false;
    const ShortEntry entry = shortEntryOf(withoutDesignation(found.entry));
    learn(form, found.shortIndex, entry, lane);
    return entry != kNoShortEntry && found.shortIndex != ShortTable::kNoIndex;
  }

  void takeEntry(BulkPosition& at, const source_forms::Found& found) const {
    const bool isDropped = (found.entry & kLineFeed) != 0 && at.behindReturn == at.input;
    at.input += found.length;
    ++at.characters;
    if (isDropped) return;
    const Entry entry = designates_ && designatedGroupOf(found.entry) == at.designatedGroup
                            ? withoutDesignation(found.entry)
                            : found.entry;
    storeBytes(at.output, entry);
    at.output += outputLength(entry);
    at.units += designates_ ? 1 : unitCount(entry);
    if (designates_) at.designatedGroup = designatedGroupOf(found.entry);
    if ((found.entry & kCarriageReturn) != 0) at.behindReturn = at.input;
  }

  void takeOver(ConverterRecord& record, const BulkPosition& end) const {
    const auto advanced = [](int32_t count, uint32_t by) {
      return static_cast<int32_t>(static_cast<uint32_t>(count) + by);
    };
    record.inputPosition = static_cast<int32_t>(end.input - record.input);
    record.outputPosition = static_cast<int32_t>(end.output - record.output);
    record.charactersRead = advanced(record.charactersRead, end.characters);
    record.unitsWritten = advanced(record.unitsWritten, end.units);
    record.decoderState = end.decoderState;
    record.designatedGroup = end.designatedGroup;
    // All that the engine asks of the character before.
    record.rawCode = end.behindReturn == end.input ? '\r' : 0;
  }

  Lane* laneAt(const Form& form, const BulkPosition& at) {
    const uint32_t shift = Form::shiftOf(at);
    const uint32_t designation = designates_ ? designationIndex(at.designatedGroup) : 0;
    if (shift >= Form::kShiftStates || designation >= kDesignations) return nullptr;
    std::atomic<Lane*>& slot = lanes_[shift * kDesignations + designation];
    Lane* lane = slot.load(std::memory_order_acquire);
    return lane != nullptr ? lane : makeLane(form, at, slot);
  }

  [[gnu::cold]] Lane* makeLane(const Form& form, const BulkPosition& at,
                               std::atomic<Lane*>& slot) const {
    std::unique_ptr<Lane> made(new (std::nothrow) Lane{});
    if (made == nullptr || made->table.hadNoMemory()) return nullptr;
    const uint32_t withoutMemory = pages_.timesWithoutMemory();
    made->ascii = AsciiOutput::kOther;
    for (const AsciiOutput output :
         {AsciiOutput::kBytes, AsciiOutput::kLittleUnits, AsciiOutput::kBigUnits}) {
      AsciiStops stops;
      if (!writesAsciiAs(form, at, output, stops)) continue;
      made->ascii = output;
      made->stops = stops;
    }
    made->runShort = runnerFor(made->ascii);
    made->runByVectors = Form::runByVectors(made->ascii);
    if constexpr (Form::kShifts) made->runShifted = vector_runs::iso2022Jp(made->ascii);
    learnSingles(form, at, *made);
    // What was learned for want of a page must not stay.
    if (pages_.timesWithoutMemory() != withoutMemory) return nullptr;
    return publish(slot, std::move(made));
  }

  // A code below 0x100, where it is one by itself.
  static source_forms::Found findSingle(const Form& form, BulkPosition at, uint32_t code) {
    uint8_t input[Form::kLongestInput] = {};
    const uint32_t length = Form::putSingle(code, input);
    at.input = input;
    const source_forms::Found found = form.next(at);
    return found.length == length ? found : source_forms::kNothing;
  }

  // What single codes are while the same groups stay designated. The runs by vectors
  // ask the table for ASCII, too.
  void learnSingles(const Form& form, const BulkPosition& at, Lane& lane) const {
    for (uint32_t code = 0; code < 0x100; ++code) {
      const source_forms::Found found = findSingle(form, at, code);
      lane.singles.classes[code] = SingleCodes::kNone;
      if (found.entry == kNoEntry) continue;
      const bool same = !designates_ || designatedGroupOf(found.entry) == at.designatedGroup;
      const ShortEntry entry = same ? shortEntryOf(withoutDesignation(found.entry)) : kNoShortEntry;
      learn(form, found.shortIndex, entry, lane);
      describe(code, entry, lane.singles);
    }
  }

  static void describe(uint32_t code, ShortEntry entry, SingleCodes& singles) {
    const uint32_t length = shortLength(entry);
    singles.classes[code] = length == 1   ? 0
                            : length == 2 ? SingleCodes::kHasTwoBytes
                                          : SingleCodes::kIsWide;
    if (code < 0x80) return;
    singles.first[code - 0x80] = static_cast<uint8_t>(entry);
    singles.second[code - 0x80] = static_cast<uint8_t>(entry >> 8);
  }

  void learn(const Form& form, uint32_t shortIndex, ShortEntry entry, Lane& lane) const {
    lane.table.remember(shortIndex, entry);
    pauseForTests(PublicationStep::kWord);
    learnPage(form, shortIndex, lane);
  }

  // Looks whether a page is plain, when one of its values is met without a short entry:
  // so once for nearly every page.
  void learnPage(const Form& form, uint32_t shortIndex, Lane& lane) const {
    if constexpr (Form::kIsUnicode) {
      if (!lane.writesUnits() || shortIndex >= ShortTable::kSingles) return;
      const uint32_t page = shortIndex >> 8;
      if (lane.pages.at(page) != 0) return;
      const bool bigEndian = lane.ascii == AsciiOutput::kBigUnits;
      const uint32_t withoutMemory = pages_.timesWithoutMemory();
      bool isPlain = true;
      for (uint32_t value = shortIndex & 0xFF00; isPlain && value <= (shortIndex | 0xFF); ++value) {
        uint8_t unit[2];
        source_forms::putUnit(unit, value, 2, bigEndian);
        isPlain = form.entryOf(value) == makeEntry(unit, 2, 1) || Form::isMark(value);
      }
      if (pages_.timesWithoutMemory() == withoutMemory)
        lane.pages.add(page, isPlain ? PlainPages::kIsPlain : PlainPages::kIsNot);
    }
  }

  static RunShort runnerFor(AsciiOutput ascii) {
    switch (ascii) {
      case AsciiOutput::kBytes:
        return Form::template runShort<AsciiOutput::kBytes>;
      case AsciiOutput::kLittleUnits:
        return Form::template runShort<AsciiOutput::kLittleUnits>;
      case AsciiOutput::kBigUnits:
        return Form::template runShort<AsciiOutput::kBigUnits>;
      case AsciiOutput::kOther:
        break;
    }
    return Form::template runShort<AsciiOutput::kOther>;
  }

  // Whether ASCII is written so while the same groups stay designated, but for the
  // characters that are stops.
  bool writesAsciiAs(const Form& form, const BulkPosition& at, AsciiOutput output,
                     AsciiStops& stops) const {
    for (uint8_t c = 0; c < 0x80; ++c) {
      const Entry entry = findSingle(form, at, c).entry;
      const uint8_t written[3] = {0, c, 0};
      const int32_t width = output == AsciiOutput::kBytes ? 1 : 2;
      const Entry itself =
          makeEntry(output == AsciiOutput::kBigUnits ? written : written + 1, width, 1);
      const bool same = !designates_ || designatedGroupOf(entry) == at.designatedGroup;
      if (same && withoutDesignation(entry) == itself) continue;
      if (!isStop(c, entry, stops)) return false;
    }
    return true;
  }

  static bool isStop(uint8_t c, Entry entry, AsciiStops& stops) {
    if ((entry & kLineEnd) != 0) return stops.lineEnds = true;
    if (c == 0x1B && entry == kNoEntry) return stops.escape = true;
    if (c == 0x7F && entry == kNoEntry) return stops.del = true;
    return false;
  }

  // For a target without escape sequences an entry has none.
  Entry withoutDesignation(Entry entry) const {
    return designates_ ? ksv::withoutDesignation(entry) : entry;
  }

  DirectTable pages_;
  CharacterTraces traces_;
  std::array<std::atomic<Lane*>, Form::kShiftStates* kDesignations> lanes_ = {};
  std::atomic<Designating*> designating_ = nullptr;
  const bool designates_;
};

bool allMembersHaveWidth(const CharsetDef& charset, uint16_t width) {
  for (const GroupDef* group : charset.groups) {
    if (group->bytesPerCode != width) return false;
  }
  return true;
}

// Whether what the rule-driven decoder finds in the first bytes is the same whatever
// follows them: it tries the groups in order.
bool widthsAscend(const CharsetDef& charset) {
  uint16_t width = 1;
  for (const GroupDef* group : charset.groups) {
    if (group->bytesPerCode < width) return false;
    width = group->bytesPerCode;
  }
  return true;
}

template <typename Form>
std::unique_ptr<BulkConverter> makeConverterFor(const TableKey& key) {
  return std::make_unique<FormConverter<Form>>(encoderOf(*key.target)->keepsState);
}

std::unique_ptr<BulkConverter> makeConverter(const TableKey& key, SourceForm form) {
  const bool bigEndian = key.inputIsBigEndian();
  switch (form) {
    case SourceForm::kByRules:
      if (!widthsAscend(*key.source)) return nullptr;
      return makeConverterFor<source_forms::ByteCodes>(key);
    case SourceForm::kByteCodes:
      return makeConverterFor<source_forms::ByteCodes>(key);
    case SourceForm::kTwoByteCodes:
      return makeConverterFor<source_forms::FixedUnits<2, true>>(key);
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
    case SourceForm::kIso2022Jp:
      return makeConverterFor<source_forms::Iso2022Jp>(key);
    case SourceForm::kOther:
      return nullptr;
  }
  return nullptr;
}

// Tables are made of answers to questions that no text has asked. That must not show: each
// question may be one of the attempts after which a table of the target answers.
bool answersAreFinal(const CharsetDef& target) {
  bool all = true;
  for (const auto& tables : target.destTables) {
    for (const auto& table : *tables) all = ksv::answersAreFinal(*table) && all;
  }
  return all;
}

// Every bulk converter that has been asked for, those that do not exist included.
// They are found without a lock; only making one takes it.
class BulkConverters : public DerivedTables {
 public:
  ~BulkConverters() override {
    for (auto& place : places_) delete place.load(std::memory_order_relaxed);
  }

  // Null when there is none for the key, or too few bytes have been converted with it
  // for making tables to pay.
  BulkConverter* find(const TableKey& key, SourceForm form, int64_t bytes) {
    Known* known = knownFor(key);
    if (known == nullptr) return nullptr;
    if (bytes < kLeastInput && known->bytes.load(std::memory_order_relaxed) < kLeastInputs) {
      known->bytes.fetch_add(bytes, std::memory_order_relaxed);
      return nullptr;
    }
    if (!known->isMade.load(std::memory_order_acquire)) {
      make(*known, form);
      if (!known->isMade.load(std::memory_order_acquire)) return nullptr;
    }
    return known->converter.get();
  }

 private:
  static constexpr size_t kPlaces = limits::kPlacesOfConverters;

  struct Known {
    explicit Known(const TableKey& knownKey) : key(knownKey) {}
    const TableKey key;
    std::atomic<int64_t> bytes = 0;  // of short inputs so far
    std::unique_ptr<BulkConverter> converter;
    std::atomic<bool> isMade = false;  // the converter, or that there is none
  };

  // Does nothing while questions to the engine would change later answers.
  [[gnu::cold]] void make(Known& known, SourceForm form) {
    if (!answersAreFinal(*known.key.target)) return;
    const std::lock_guard<std::mutex> guard(mutex_);
    if (known.isMade.load(std::memory_order_relaxed)) return;
    known.converter = makeConverter(known.key, form);
    pauseForTests(PublicationStep::kMade);
    known.isMade.store(true, std::memory_order_release);
  }

  Known* knownFor(const TableKey& key) {
    for (size_t place = hashOf(key);; ++place) {
      Known* known = places_[place % kPlaces].load(std::memory_order_acquire);
      if (known == nullptr) return addKnown(key);
      if (known->key == key) return known;
    }
  }

  [[gnu::cold]] Known* addKnown(const TableKey& key) {
    const std::lock_guard<std::mutex> guard(mutex_);
    for (size_t place = hashOf(key);; ++place) {
      std::atomic<Known*>& slot = places_[place % kPlaces];
      Known* known = slot.load(std::memory_order_relaxed);
      if (known != nullptr && known->key == key) return known;
      if (known != nullptr) continue;
      if (count_ >= limits::kMostConverters) return nullptr;
      known = new Known(key);
      ++count_;
      pauseForTests(PublicationStep::kMade);
      slot.store(known, std::memory_order_release);
      return known;
    }
  }

  static size_t hashOf(const TableKey& key) {
    const auto mixed = (reinterpret_cast<uintptr_t>(key.source) >> 4) * 0x9E3779B97F4A7C15 +
                       (reinterpret_cast<uintptr_t>(key.target) >> 4) * 0xC2B2AE3D27D4EB4F +
                       key.settings;
    return static_cast<size_t>(mixed >> 40 ^ mixed) % kPlaces;
  }

  std::mutex mutex_;
  size_t count_ = 0;
  std::array<std::atomic<Known*>, kPlaces> places_ = {};
};

BulkConverters& convertersOfProcess() {
  DerivedPlace& derived = ruleBase.lists->derived;
  DerivedTables* tables = derived.get();
  if (tables == nullptr) tables = derived.fill(std::make_unique<BulkConverters>());
  return static_cast<BulkConverters&>(*tables);
}

}  // namespace

BulkConverter* findBulkConverter(const ConverterRecord& record) try {
  const BulkPath path = bulkPath.load(std::memory_order_relaxed);
  const bool always = path == BulkPath::kAlways || path == BulkPath::kAlwaysWithoutVectors;
  const int64_t bytes = always ? kLeastInput : bytesLeft(record);
  if (bytes < kLeastText || path == BulkPath::kNever) return nullptr;
  const SourceForm form = sourceDecoder(record)->sourceForm;
  // With a supplementary mode a character's output depends on the replacements too.
  if (form == SourceForm::kOther || record.options.supplementaryMode != 0) return nullptr;
  return ruleBase.lists == nullptr ? nullptr
                                   : convertersOfProcess().find(keyOf(record), form, bytes);
} catch (const std::bad_alloc&) {
  return nullptr;
}

void setBulkPath(BulkPath path) { bulkPath.store(path, std::memory_order_relaxed); }

}  // namespace ksv
