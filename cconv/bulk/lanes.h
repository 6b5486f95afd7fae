// Lanes: what holds while the same groups are designated, in input and output. A lane is made
// when a conversion first comes to stand in it, and learns its short entries from the direct
// table as text needs them.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <memory>
#include <new>

#include "cconv/bulk/bulk_run.h"
#include "cconv/bulk/direct_table.h"
#include "cconv/bulk/position.h"
#include "cconv/bulk/source_form.h"
#include "cconv/rules/publication.h"

namespace ksv {

// Short entries, and what goes ahead over them.
struct ShortEntries {
  ShortTable table;
  AsciiStops stops;
  RunFunction runByVectors;  // null where the processor has none
  SingleCodes singles;
  LineEndEntries lineEnds;

  RunTables run() const {
    RunTables tables{table.slots(), stops, &singles};
    if (lineEnds.areThere()) tables.lineEnds = &lineEnds;
    return tables;
  }
};

struct Lane : ShortEntries {
  AsciiOutput ascii;
  RunFunction runShort;
  vector_runs::ShiftedRunFunction runShifted;
  SharedPages pages;

  bool writesUnits() const { return ksv::writesUnits(ascii); }
};

// The entries of all groups at once, for an output with escape sequences.
struct Designating : ShortEntries {
  static constexpr uint32_t kNoGroup = 0xFFFFFFFF;

  SharedDesignations designations{kNoGroup};
};

template <typename Form>
class Lanes {
 public:
  // designates: the output has escape sequences.
  Lanes(const DirectTable& pages, bool designates) : pages_(pages), designates_(designates) {}
  ~Lanes() {
    for (auto& lane : lanes_) delete lane.load(std::memory_order_relaxed);
    delete designating_.load(std::memory_order_relaxed);
  }
  Lanes(const Lanes&) = delete;
  Lanes& operator=(const Lanes&) = delete;

  bool designates() const { return designates_; }

  // The lane of a place. Null for groups that have none, and without memory.
  Lane* at(const Form& form, const BulkPosition& place) {
    const uint32_t shift = Form::shiftOf(place);
    const uint32_t designation = designates_ ? designationIndex(place.designatedGroup) : 0;
    if (shift >= Form::kShiftStates || designation >= kDesignations) return nullptr;
    std::atomic<Lane*>& slot = lanes_[shift * kDesignations + designation];
    Lane* lane = slot.load(std::memory_order_acquire);
    return lane != nullptr ? lane : makeLane(form, place, slot);
  }

  // Null where there are no vectors for it.
  Designating* designating(const Form& form, const BulkPosition& place) {
    Designating* known = designating_.load(std::memory_order_acquire);
    if (known == nullptr) known = makeDesignating(form, place);
    const bool works = known != nullptr && known->runByVectors != nullptr && known->table.isThere();
    return works ? known : nullptr;
  }

  // Remembers what was found, where it stands, for those who come after.
  void learn(const Form& form, const source_forms::Found& found, Lane& lane) const {
    remember(form, found.shortIndex, shortEntryOf(withoutDesignation(found.entry)), lane);
  }
  static void learn(const source_forms::Found& found, Designating& all) {
    const uint32_t length = escapeLengthOf(found.entry);
    const ShortEntry entry = shortEntryWithGroup(found.entry);
    if (entry == kNoShortEntry || length > Designations::kLongestEscape) return;
    all.designations.add(designationIndex(designatedGroupOf(found.entry)),
                         static_cast<uint32_t>(found.entry), length);
    pauseForTests(PublicationStep::kWord);
    all.table.remember(found.shortIndex, entry);
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
    remember(form, found.shortIndex, entry, lane);
    return entry != kNoShortEntry && found.shortIndex != ShortTable::kNoIndex;
  }

 private:
  // By what is designated in the output: nothing, or a group of the codec.
  static constexpr uint32_t kDesignations = 1 + kMostDesignatedGroup;

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
    if constexpr (Form::kShifts) made->runShifted = vector_runs::levelRuns().iso2022Jp(made->ascii);
    learnSingles(form, at, *made);
    // What was learned for want of a page must not stay.
    if (pages_.timesWithoutMemory() != withoutMemory) return nullptr;
    return publish(slot, std::move(made));
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
      if (isOne) learn(found, *made);
      if (isOne) learnLineEnd(found.entry, made->lineEnds);
      if (isOne && code == 'A') learnAscii(form, at, designatedGroupOf(found.entry), *made);
    }
    made->singles.describeUpper(AsciiOutput::kBytes);
    if (pages_.timesWithoutMemory() != withoutMemory) return nullptr;
    return publish(designating_, std::move(made));
  }

  void learnAscii(const Form& form, BulkPosition place, uint32_t group, Designating& all) {
    place.designatedGroup = group;
    const Lane* lane = at(form, place);
    if (lane == nullptr || lane->ascii != AsciiOutput::kBytes) return;
    all.designations.setAsciiGroup(group);
    all.stops = lane->stops;
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
      if (!designates_) learnLineEnd(found.entry, lane.lineEnds);
      const bool same = !designates_ || designatedGroupOf(found.entry) == at.designatedGroup;
      const ShortEntry entry = same ? shortEntryOf(withoutDesignation(found.entry)) : kNoShortEntry;
      remember(form, found.shortIndex, entry, lane);
      describe(code, entry, lane.singles);
    }
    lane.singles.describeUpper(lane.ascii);
  }

  static void learnLineEnd(Entry entry, LineEndEntries& lineEnds) {
    if ((entry & kIsCarriageReturn) != 0) lineEnds.carriageReturn = entry;
    if ((entry & kIsLineFeed) != 0) lineEnds.lineFeed = entry;
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

  void remember(const Form& form, uint32_t shortIndex, ShortEntry entry, Lane& lane) const {
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

  static RunFunction runnerFor(AsciiOutput ascii) {
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
      if (!noteStop(c, entry, stops)) return false;
    }
    return true;
  }

  // False for a character that runs cannot stop at.
  static bool noteStop(uint8_t c, Entry entry, AsciiStops& stops) {
    if ((entry & kIsLineEnd) != 0) return stops.lineEnds = true;
    if (c == 0x1B && entry == kNoEntry) return stops.escape = true;
    if (c == 0x7F && entry == kNoEntry) return stops.del = true;
    return false;
  }

  // For a target without escape sequences an entry has none.
  Entry withoutDesignation(Entry entry) const {
    return designates_ ? ksv::withoutDesignation(entry) : entry;
  }

  const DirectTable& pages_;
  std::array<std::atomic<Lane*>, Form::kShiftStates* kDesignations> lanes_ = {};
  std::atomic<Designating*> designating_ = nullptr;
  const bool designates_;
};

}  // namespace ksv
