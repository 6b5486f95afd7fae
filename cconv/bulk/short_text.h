// Short texts: one that consists of short entries is converted to its end at once.
#pragma once

#include <array>
#include <cstring>

#include "cconv/bulk/batches.h"
#include "cconv/bulk/bulk_converter.h"
#include "cconv/bulk/character_traces.h"
#include "cconv/bulk/lanes.h"
#include "cconv/bulk/position.h"
#include "cconv/bulk/watched_run.h"
#include "cconv/engine/step_engine.h"

namespace ksv {

template <typename Form>
class ShortTexts {
 public:
  // Converts as far as short entries answer, and leaves the text as it is
  // where another way is better. Its bytes are collected, since nothing behind the output
  // may be touched. Has one caller, for which a call of its own would be a tenth of its time.
  KSV_IN_LOOP bool convert(const Form& form, Lanes<Form>& lanes, ConverterRecord& record) {
    BulkPosition start = positionOf(record);
    const uint8_t* const inputEnd = record.input + record.inputLength;
    uint8_t* const output = start.output;
    const ptrdiff_t bytes = inputEnd - start.input;
    const ptrdiff_t room = record.output + record.outputCapacity - output;
    if (bytes <= 0 || bytes > kLongestText) return false;
    Lane* const lane = lanes.at(form, start);
    if (lane == nullptr || !lane->table.isThere()) return false;
    const RunTables run = lane->run();
    Scratch scratch;
    start.output = scratch.data();
    goAhead(*lane, start, inputEnd);
    BulkPosition at = start;  // of which no call that is not inlined knows
    Place beforeLast = {};
    Place last = {};
    while (at.input != inputEnd) {
      const ptrdiff_t left = inputEnd - at.input;
      const Place place = {at.input, at.output};
      if (!Form::takeLast(run, at, left)) [[unlikely]] {
        if (!lanes.learnShort(form, at, left, *lane) || !Form::takeLast(run, at, left)) break;
      }
      beforeLast = last;
      last = place;
    }
    const ptrdiff_t length = at.output - scratch.data();
    if (beforeLast.input == nullptr || length > room) return false;
    // Batches take longer entries too.
    if (at.input != inputEnd && charactersWithRoom<Form>(bytes, room) >= kLeastBatch) return false;
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

 private:
  // Texts of so many bytes are converted in one go.
  static constexpr ptrdiff_t kLongestText = 1024;
  // So many characters are worth a run by vectors.
  static constexpr uint32_t kLeastByVectors = 80;
  static constexpr ptrdiff_t kNoLimit = PTRDIFF_MAX;
  // Fewer characters are not worth a run.
  static constexpr uint32_t kLeastRun = 5;

  // Room for a short text, and for what is stored behind it.
  using Scratch = std::array<uint8_t, kLongestText * kShortEntryBytes + 128>;

  // Where a character begins in input and output.
  struct Place {
    const uint8_t* input;
    uint8_t* output;
  };

  // Goes ahead, but for the last characters.
  static void goAhead(const Lane& lane, BulkPosition& at, const uint8_t* inputEnd) {
    if (const uint32_t room = charactersWithRoom<Form>(inputEnd - at.input, kNoLimit);
        room >= kLeastByVectors && usesVectors()) {
      runLaneByVectors<Form>(lane, at, at.characters + room);
    }
    for (;;) {
      const auto least = static_cast<uint32_t>((inputEnd - at.input) / Form::kLongestShortInput);
      if (least < kLeastRun) return;
      const uint32_t wanted = at.characters + least - kRedone;
      lane.runShort(lane.run(), at, wanted);
      if (at.characters < wanted) return;
    }
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
  static void goBack(ConverterRecord& record, BulkPosition at, const Place& beforeLast) {
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

  CharacterTraces traces_;
};

}  // namespace ksv
