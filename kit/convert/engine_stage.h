// Converts with one converter record of the engine.
//
// The engine's own calls may be cut wherever a caller likes, but not without a change everywhere:
// a base and its combining mark, an escape sequence and what follows it go together. And they take
// Unicode text that is not well-formed for well-formed. So what comes is looked at first, and
// handed on up to where a cut changes nothing: the result is that of a single cconvConvert call
// over the whole text, however the text was cut.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kit/charsets/charset_names.h"
#include "kit/convert/conversion_journal.h"
#include "kit/convert/stage.h"
#include "kit/text/buffer_offsets.h"
#include "kit/text/iso_2022_check.h"
#include "kit/text/unicode_check.h"
#include "ksv_cconv.h"

namespace ksv_kit {

struct EngineTask {
  CharsetChoice source;
  CharsetChoice target;
  ConvertOptions options{};  // replaceUnmappable counts for nothing but the built-in replacement
  Policy invalid;
  Policy unmappable;
  // Texts that look like the character, the nearest first, for the policy that asks for them.
  std::vector<std::string> (*lookAlikes)(uint32_t) = nullptr;
  std::string language;       // announced in front of the text; empty: none
  bool keepsMark = false;     // a byte-order mark in front is text
  bool isWellFormed = false;  // the source: another stage has made it
  bool tellsOrigins = false;  // another stage follows
};

// Whether U+001B would come out as the beginning of an escape sequence of the target.
inline bool refusesEscape(const CharsetChoice& source, const CharsetChoice& target) {
  return target.kind == CharsetKind::kIso2022 && source.kind != CharsetKind::kIso2022;
}

class EngineStage : public Stage {
 public:
  // The task outlives the stage. Throws ImpossibleConversion when the charsets cannot be set up.
  explicit EngineStage(const EngineTask& task);

  bool take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) override;
  void restart() override;
  uint64_t originOf(uint64_t made) const override { return journal_.inputOffset(made); }
  ProblemCounts counts() const override { return counts_; }

 private:
  void setUp();
  void begin();
  ScanResult scan(size_t from);
  bool isLast() const { return end_ != PieceEnd::kMore; }
  bool isComplete() const { return end_ == PieceEnd::kEnd; }
  size_t cut(bool badFollows) const;
  bool convertHeld(ByteBuffer& out);
  bool convertUpToBad(const ScanResult& bad, ByteBuffer& out);
  void closeGaps();
  bool convertRest(ByteBuffer& out);
  void discard(size_t used);

  bool convert(size_t end, ByteBuffer& out);
  uint32_t convertOnce(ConverterRecord& before, ByteBuffer& out);
  void noteCall(const ConverterRecord& before);
  size_t nextEscape(size_t from, size_t end) const;

  bool answerInvalid(ProblemKind kind, size_t start, size_t length, ByteBuffer& out);
  enum class Outcome { kGoesOn, kNeedsMore, kFailed };
  Outcome takeInvalid(size_t start, ByteBuffer& out);
  bool takeUnmappable(const ConverterRecord& before, ByteBuffer& out);
  bool answerCodeWithoutCharacter(size_t start, size_t end, ByteBuffer& out);
  bool takeEscape(size_t at, ByteBuffer& out);
  bool answerUnmappable(Problem problem, const Answer& answer, size_t start, size_t end,
                        ByteBuffer& out);
  bool answerMark(uint32_t mark, ByteBuffer& out);
  std::string messageOfCode() const;
  bool writeLookAlike(uint32_t character, ByteBuffer& out);
  bool writeBuiltIn(size_t start, size_t end, ByteBuffer& out);
  bool encode(std::string_view utf8, ByteBuffer& out);
  size_t unmappableStart(const ConverterRecord& before) const;
  Problem problemAt(ProblemKind kind, size_t start, size_t end) const;
  bool finish(ByteBuffer& out);

  const EngineTask& task_;
  ConverterRecord prepared_;  // as it is in front of every text
  ConverterRecord record_;
  ConverterRecord inserting_;  // writes UTF-8 of ours among what the record writes
  bool refusesEscape_ = false;

  ByteBuffer text_;  // what has not been converted, and in front of it what begin_ passes over
  size_t begin_ = 0;
  size_t checked_ = 0;  // what is known to be well-formed ends here
  BufferOffsets offsets_;
  Iso2022Scanner iso2022_;
  PieceEnd end_ = PieceEnd::kMore;
  bool hasBegun_ = false;
  bool bigEndian_ = false;
  bool wroteAny_ = false;
  ConversionJournal journal_;
  ProblemCounts counts_;
};

}  // namespace ksv_kit
