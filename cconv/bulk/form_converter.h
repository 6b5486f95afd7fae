// The bulk converter of one form of input: goes ahead in batches of characters, and hands over
// to the engine with its last two characters to be converted again.
#pragma once

#include <algorithm>
#include <array>
#include <cstring>

#include "cconv/bulk/batches.h"
#include "cconv/bulk/bulk_converter.h"
#include "cconv/bulk/direct_table.h"
#include "cconv/bulk/lanes.h"
#include "cconv/bulk/position.h"
#include "cconv/bulk/run_luck.h"
#include "cconv/bulk/short_text.h"
#include "cconv/bulk/source_form.h"
#include "cconv/bulk/watched_run.h"
#include "cconv/rules/names.h"

namespace ksv {

template <typename Form>
class FormConverter : public BulkConverter {
 public:
  // designates: the output has escape sequences.
  explicit FormConverter(bool designates) : pages_(Form::kPages), lanes_(pages_, designates) {}

  void runAhead(ConverterRecord& record) override {
    if (languageMayBeDue(record)) return;
    const uint32_t withoutMemory = pages_.timesWithoutMemory();
    const Form form{TableCursor(pages_, record)};
    if (pages_.timesWithoutMemory() != withoutMemory) return;
    if (!Form::kShifts && !lanes_.designates() && shortTexts_.convert(form, lanes_, record)) return;
    const uint8_t* const inputEnd = record.input + record.inputLength;
    const uint8_t* const outputEnd = record.output + record.outputCapacity;

    BulkPosition at = positionOf(record);
    BulkPosition batchStart = at;
    BulkPosition batchBefore = at;
    for (;;) {
      const uint32_t batch = charactersWithRoom<Form>(inputEnd - at.input, outputEnd - at.output);
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
  // Without looking further than needed: the engine decides.
  static bool languageMayBeDue(const ConverterRecord& record) {
    if (record.defaultLanguage[0] == '\0') return false;
    return record.currentLanguage[0] == '\0' ||
           std::strncmp(record.currentLanguage, record.emittedLanguage, KSV_NAME_SIZE) != 0;
  }

  // Goes on until wanted characters have been converted, or one cannot be decided.
  void advance(const Form& form, BulkPosition& at, uint32_t wanted) {
    const bool mayUseVectors = usesVectors();
    for (;;) {
      Designating* const designating =
          mayUseVectors && lanes_.designates() ? lanes_.designating(form, at) : nullptr;
      const uint32_t before = at.characters;
      const bool byVectors = mayUseVectors && luck_.isWorthTrying();
      if (byVectors && designating != nullptr) runDesignating(*designating, at, wanted);
      if constexpr (Form::kShifts) {
        if (byVectors) runShifted(form, at, wanted);
      }
      if (const Lane* lane = lanes_.at(form, at); lane != nullptr && lane->table.isThere()) {
        if (byVectors) runLaneByVectors<Form>(*lane, at, wanted);
        lane->runShort(lane->run(), at, wanted);
        // Not where memory was wanting, which says nothing about texts.
        if (pages_.timesWithoutMemory() == 0) luck_.note(at.characters - before);
      }
      if (at.characters >= wanted) return;
      if constexpr (Form::kShifts) {
        const bool isBehindReturn = at.behindReturn == at.input;
        if (!Form::takeShift(at)) return;
        if (isBehindReturn) at.behindReturn = at.input;
      }
      const source_forms::Found found = form.next(at);
      if (found.entry == kNoEntry) return;
      at.takeWhole(found.entry, found.length, lanes_.designates());
      if (Lane* lane = lanes_.at(form, at); lane != nullptr) lanes_.learn(form, found, *lane);
      if (designating != nullptr) lanes_.learn(found, *designating);
    }
  }

  static void runDesignating(const Designating& all, BulkPosition& at, uint32_t wanted) {
    const WatchedRun<Form> watched(at);
    RunTables run = all.run();
    Designations designations;
    all.designations.copyTo(designations);
    run.designations = &designations;
    pauseForTests(PublicationStep::kCopied);
    all.runByVectors(run, at, wanted);
  }

  // Goes ahead across escape sequences, between the groups that texts are mostly made of.
  void runShifted(const Form& form, BulkPosition& at, uint32_t wanted) {
    if (lanes_.designates()) return;
    for (const CharsetId single : Form::kSingleGroups) {
      if (at.decoderState != single && at.decoderState != Form::kPairGroup) continue;
      const Lane* singles = laneBehindShift(form, at, single);
      const Lane* pairs = laneBehindShift(form, at, Form::kPairGroup);
      if (singles == nullptr || singles->runShifted == nullptr) return;
      if (pairs == nullptr || !pairs->table.isThere() || !singles->table.isThere()) return;
      const WatchedRun<Form> watched(at);
      singles->runShifted({singles->run(), pairs->run(), single, Form::kPairGroup,
                           Form::finalOf(single), Form::finalOf(Form::kPairGroup)},
                          at, wanted);
    }
  }

  const Lane* laneBehindShift(const Form& form, BulkPosition at, uint32_t decoderState) {
    at.decoderState = decoderState;
    return lanes_.at(form, at);
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

  // Goes on character by character, as far as short entries answer, where the buffers
  // have no more room than that. Returns where it was kRedone characters before its end.
  BulkPosition runTail(const Form& form, BulkPosition& at, const uint8_t* inputEnd,
                       const uint8_t* outputEnd) {
    BulkPosition before[kRedone] = {at, at};
    Lane* const lane = lanes_.at(form, at);
    if (lane == nullptr || !lane->table.isThere()) return at;
    const RunTables run = lane->run();
    for (;;) {
      const ptrdiff_t left = inputEnd - at.input;
      uint8_t bytes[kShortEntryBytes];
      BulkPosition next = at;
      next.output = bytes;
      if (!Form::takeLast(run, next, left) &&
          !(lanes_.learnShort(form, at, left, *lane) && Form::takeLast(run, next, left))) {
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

  DirectTable pages_;
  Lanes<Form> lanes_;
  ShortTexts<Form> shortTexts_;
  RunLuck luck_;
};

}  // namespace ksv
