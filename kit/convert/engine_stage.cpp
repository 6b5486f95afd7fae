#include "kit/convert/engine_stage.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "kit/limits.h"
#include "kit/text/chunk_boundary.h"
#include "kit/text/formatted.h"
#include "kit/text/replay.h"
#include "kit/text/resynchronisation.h"
#include "kit/unicode/utf8_text.h"

namespace ksv_kit {
namespace {

// The longest thing that is written whole is a language tag in UCS-4, a little above 1 KiB.
constexpr size_t kSmallestOutput = 2048;
constexpr uint32_t kEscape = 0x1B;
constexpr char kPlainReplacement[] = "?";

// As long as a text is shorter than this, it may begin with a mark that is not all there.
size_t longestMark(UnicodeForm form) {
  switch (form) {
    case UnicodeForm::kUtf8:
      return 3;
    case UnicodeForm::kUtf16:
    case UnicodeForm::kUcs2:
      return 2;
    case UnicodeForm::kUcs4:
      return 4;
    case UnicodeForm::kNone:
      break;
  }
  return 0;
}

// What an encoder remembers of what it has written.
void copyTargetState(const ConverterRecord& from, ConverterRecord& to) {
  to.targetGroup = from.targetGroup;
  to.targetGroupType = from.targetGroupType;
  to.designatedGroup = from.designatedGroup;
  to.designatedPlane = from.designatedPlane;
  to.options.writeByteOrderMark = from.options.writeByteOrderMark;
  std::memcpy(to.emittedLanguage, from.emittedLanguage, sizeof to.emittedLanguage);
  std::memcpy(to.currentLanguage, from.currentLanguage, sizeof to.currentLanguage);
}

}  // namespace

EngineStage::EngineStage(const EngineTask& task) : task_(task) {
  setUp();
  restart();
}

void EngineStage::setUp() {
  std::memset(&prepared_, 0, sizeof prepared_);
  // Byte-oriented charsets are read most significant byte first. What is invalid is left out here:
  // the engine's decoders go on behind it each in a way of its own.
  uint32_t parameters[3] = {1, 0, 0};
  if (cconvInitConvert(&prepared_, &task_.options, task_.target.name.c_str()) != KSV_STATUS_DONE)
    throw ImpossibleConversion("the charset " + task_.target.display + " cannot be set up");
  // What is replaced is counted, so the engine is asked for it one by one.
  prepared_.options.replaceUnmappable = 0;
  inserting_ = prepared_;
  if (cconvChgCharset(&prepared_, parameters, task_.source.name.c_str()) != KSV_STATUS_DONE)
    throw ImpossibleConversion("the charset " + task_.source.display + " cannot be set up");
  cconvChgCharset(&inserting_, parameters, "utf-8");
  if (!task_.language.empty()) cconvChgLang(&prepared_, task_.language.c_str());
  refusesEscape_ = refusesEscape(task_.source, task_.target);
}

void EngineStage::restart() {
  record_ = prepared_;
  text_.clear();
  begin_ = checked_ = 0;
  offsets_ = {};
  iso2022_ = {};
  end_ = PieceEnd::kMore;
  hasBegun_ = wroteAny_ = false;
  journal_ = {};
  counts_ = {};
  forgetProblem();
}

bool EngineStage::take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) {
  end_ = end;
  text_.append(bytes, size);
  journal_.beginPiece();
  if (!hasBegun_) {
    if (!isLast() && text_.size() < longestMark(task_.source.form)) return true;
    begin();
  }
  const size_t before = out.size();
  const bool goesOn = convertHeld(out);
  wroteAny_ = wroteAny_ || out.size() != before;
  return goesOn && (end_ != PieceEnd::kEnd || finish(out));
}

void EngineStage::begin() {
  hasBegun_ = true;
  const bool orderIsFixed = task_.source.order != ByteOrder::kOpen;
  bigEndian_ = task_.source.order == ByteOrder::kBig;
  const size_t mark =
      byteOrderMark(task_.source.form, orderIsFixed, text_.data(), text_.size(), bigEndian_);
  if (task_.source.hasByteOrder()) record_.inputBigEndian = bigEndian_;
  if (!task_.keepsMark) begin_ = checked_ = mark;
}

ScanResult EngineStage::scan(size_t from) {
  const uint8_t* text = text_.data() + from;
  const size_t length = text_.size() - from;
  if (task_.isWellFormed) return {length, ScanEnd::kAll, 0};
  if (task_.source.kind == CharsetKind::kIso2022) return iso2022_.scan(text, length);
  return scanUnicode(task_.source.form, bigEndian_, text, length);
}

// An escape sequence goes with the character behind it, which is not read alike in a call of its
// own.
size_t EngineStage::cut(bool badFollows) const {
  if (task_.source.kind == CharsetKind::kIso2022)
    return isLast() && !badFollows ? checked_
                                   : std::max(begin_, checked_ - iso2022_.escapesAtEnd());
  if (isLast() || badFollows) return checked_;
  return begin_ + safeCut(task_.source.form, bigEndian_, text_.data() + begin_, checked_ - begin_);
}

bool EngineStage::convertHeld(ByteBuffer& out) {
  if (task_.invalid.kind == PolicyKind::kSkip) closeGaps();
  for (;;) {
    const ScanResult found = scan(checked_);
    checked_ += found.wellFormed;
    const bool isBad =
        found.end == ScanEnd::kInvalid || (found.end == ScanEnd::kIncomplete && isComplete());
    if (!isBad) break;
    if (!convertUpToBad(found, out)) return false;
  }
  return convertRest(out);
}

// What the bad bytes leave unread in front of them, escape sequences, goes with what follows.
bool EngineStage::convertUpToBad(const ScanResult& bad, ByteBuffer& out) {
  if (!convert(cut(true), out)) return false;
  const size_t left = checked_ - begin_;
  const bool isTruncated = bad.end == ScanEnd::kIncomplete;
  if (!answerInvalid(isTruncated ? ProblemKind::kTruncated : ProblemKind::kInvalid, checked_,
                     bad.badLength, out))
    return false;
  if (left != 0) std::memmove(text_.data() + begin_ + bad.badLength, text_.data() + begin_, left);
  begin_ += bad.badLength;
  checked_ += bad.badLength;
  return true;
}

// Where ill-formed bytes are left out, they are so before anything is converted: what stood around
// them goes together. In one pass, so that many of them cost no more.
void EngineStage::closeGaps() {
  size_t from = checked_;
  for (;;) {
    const ScanResult found = scan(from);
    // In front of the first gap nothing moves, nor is there anything yet where no text has come.
    if (from != checked_)
      std::memmove(text_.data() + checked_, text_.data() + from, found.wellFormed);
    checked_ += found.wellFormed;
    from += found.wellFormed;
    if (found.end == ScanEnd::kAll || (found.end == ScanEnd::kIncomplete && !isComplete())) break;
    offsets_.noteGap(checked_, found.badLength);
    counts_.invalidBytes += found.badLength;
    from += found.badLength;
  }
  text_.erase(checked_, from - checked_);
}

bool EngineStage::convertRest(ByteBuffer& out) {
  const size_t end = cut(false);
  if (!convert(end, out)) return false;
  // The end of the text cuts a sequence. The bytes behind its first may be characters in
  // their own right, but not behind an escape.
  while (isComplete() && begin_ < end) {
    const bool standsAlone =
        task_.source.form == UnicodeForm::kNone && text_.data()[begin_] != kEscape;
    const size_t length =
        standsAlone ? badSequenceLength(task_.source, text_.data() + begin_, end - begin_, true)
                    : end - begin_;
    if (!answerInvalid(ProblemKind::kTruncated, begin_, length, out)) return false;
    begin_ += length;
    if (!convert(end, out)) return false;
  }
  const bool isStuck = !isLast() && begin_ == 0 && text_.size() > limits::kLongestCarry;
  if (isStuck) return fail(problemAt(ProblemKind::kTooLong, 0, 1));
  discard(begin_);
  return true;
}

void EngineStage::discard(size_t used) {
  text_.erase(0, used);
  offsets_.advance(used);
  begin_ = 0;
  checked_ -= std::min(checked_, used);
}

uint32_t EngineStage::convertOnce(ConverterRecord& before, ByteBuffer& out) {
  const auto left = static_cast<size_t>(record_.inputLength - record_.inputPosition);
  record_.output = out.room(std::max(2 * left, kSmallestOutput));
  record_.outputPosition = 0;
  record_.outputCapacity = static_cast<int32_t>(std::min<size_t>(out.roomLeft(), size_t{1} << 30));
  record_.charactersRead = 0;  // 32-bit counts, which a long text would overflow
  record_.unitsWritten = 0;
  before = record_;
  const uint32_t status = cconvConvert(&record_);
  if (task_.tellsOrigins) journal_.note(before, record_, offsets_);
  out.add(static_cast<size_t>(record_.outputPosition));
  return status;
}

// Converts from begin_ on, which then stands at what was not used.
bool EngineStage::convert(size_t end, ByteBuffer& out) {
  record_.input = text_.data();
  record_.inputPosition = static_cast<int32_t>(begin_);
  size_t escape = nextEscape(begin_, end);
  size_t limit = escape;
  for (;;) {
    record_.inputLength = static_cast<int32_t>(limit);
    ConverterRecord before;
    const uint32_t status = convertOnce(before, out);
    begin_ = static_cast<size_t>(record_.inputPosition);
    if (status == KSV_STATUS_DONE || status == KSV_STATUS_INCOMPLETE) {
      if (limit == end) return true;
      if (begin_ != escape) {
        ++limit;  // the escape stands where a trail should: what it breaks is told first
        continue;
      }
      if (!takeEscape(escape, out)) return false;
    } else if (status == KSV_STATUS_INVALID) {
      begin_ = static_cast<size_t>(characterStart(before, record_.inputPosition));
      const Outcome outcome = takeInvalid(begin_, out);
      if (outcome != Outcome::kGoesOn) return outcome == Outcome::kNeedsMore;
    } else if (status == KSV_STATUS_UNMAPPABLE) {
      if (!takeUnmappable(before, out)) return false;
    } else if (status != KSV_STATUS_FULL) {
      throw ImpossibleConversion("the conversion from " + task_.source.display + " to " +
                                 task_.target.display + " cannot be set up");
    }
    begin_ = static_cast<size_t>(record_.inputPosition);
    if (begin_ > escape) escape = nextEscape(begin_, end);
    limit = escape;
  }
}

// The first U+001B that would come out as the beginning of an escape sequence.
size_t EngineStage::nextEscape(size_t from, size_t end) const {
  if (!refusesEscape_) return end;
  const size_t unit = unitSize(task_.source);
  const bool bigEndian = task_.source.hasByteOrder() ? bigEndian_ : true;
  for (size_t at = from; at + unit <= end; at += unit) {
    uint32_t value = 0;
    for (size_t i = 0; i < unit; ++i)
      value = value << 8 | text_.data()[at + (bigEndian ? i : unit - 1 - i)];
    if (value == kEscape) return at;
  }
  return end;
}

Problem EngineStage::problemAt(ProblemKind kind, size_t start, size_t end) const {
  Problem problem;
  problem.kind = kind;
  problem.offset = placeInText(offsets_.offset(start));
  const size_t last = std::min(end, text_.size());
  if (start < last)
    problem.bytes.assign(reinterpret_cast<const char*>(text_.data()) + start, last - start);
  problem.message = messageOf(kind, task_.source.display, problem.bytes);
  return problem;
}

bool EngineStage::answerInvalid(ProblemKind kind, size_t start, size_t length, ByteBuffer& out) {
  if (task_.invalid.kind == PolicyKind::kSkip) {
    counts_.invalidBytes += length;
    return true;
  }
  const Problem problem = problemAt(kind, start, start + length);
  const Answer answer = answerBy(task_.invalid, problem);
  if (answer.kind == Answer::Kind::kFail) return fail(problem);
  counts_.invalidBytes += length;
  if (answer.kind == Answer::Kind::kLeaveOut) return true;
  if (!encode(answer.text, out) && !encode(kPlainReplacement, out)) return fail(problem);
  return true;
}

// Passes over bytes that are no character, unless more of them are needed to see how many.
EngineStage::Outcome EngineStage::takeInvalid(size_t start, ByteBuffer& out) {
  const bool fails = task_.invalid.kind == PolicyKind::kFail;
  const size_t length = badSequenceLength(task_.source, text_.data() + start, text_.size() - start,
                                          isLast() || fails);
  if (length == 0) return Outcome::kNeedsMore;
  if (!answerInvalid(ProblemKind::kInvalid, start, length, out)) return Outcome::kFailed;
  record_.inputPosition = static_cast<int32_t>(start + length);
  return Outcome::kGoesOn;
}

// A code that the source itself has no character for is invalid input, unless only for characters
// something else than an end is asked for.
bool EngineStage::takeUnmappable(const ConverterRecord& before, ByteBuffer& out) {
  const auto end = static_cast<size_t>(record_.inputPosition);
  const bool isCharacter = record_.unicodeCode != 0;
  if (!isCharacter &&
      (task_.invalid.kind != PolicyKind::kFail || task_.unmappable.kind == PolicyKind::kFail))
    return answerCodeWithoutCharacter(unmappableStart(before), end, out);
  const bool needsPlace = task_.unmappable.needsPlace();
  const size_t start = needsPlace ? unmappableStart(before) : end;
  Problem problem;
  if (needsPlace) problem = problemAt(ProblemKind::kUnmappable, start, end);
  problem.kind = ProblemKind::kUnmappable;
  if (isCharacter) problem.codePoint = record_.unicodeCode;
  const uint32_t mark = record_.secondCode;
  const Answer answer = answerBy(task_.unmappable, problem);
  if (!answerUnmappable(std::move(problem), answer, start, end, out)) return false;
  return mark == 0 || answer.kind == Answer::Kind::kBuiltIn || answerMark(mark, out);
}

bool EngineStage::answerCodeWithoutCharacter(size_t start, size_t end, ByteBuffer& out) {
  if (task_.invalid.kind != PolicyKind::kFail)
    return answerInvalid(ProblemKind::kInvalid, start, end - start, out);
  Problem problem = problemAt(ProblemKind::kInvalid, start, end);
  problem.message = messageOfCode();
  return fail(std::move(problem));
}

std::string EngineStage::messageOfCode() const {
  return formatted("the code 0x%02X", record_.rawCode) + " is not in " + task_.source.display;
}

bool EngineStage::answerUnmappable(Problem problem, const Answer& answer, size_t start, size_t end,
                                   ByteBuffer& out) {
  const auto refuse = [&] {
    const bool isCharacter = problem.codePoint != Problem::kNoCodePoint;
    problem.message =
        isCharacter ? messageOfLacking(problem.codePoint, task_.target.display) : messageOfCode();
    return fail(std::move(problem));
  };
  if (answer.kind == Answer::Kind::kFail) return refuse();
  ++counts_.unmappable;
  if (answer.kind == Answer::Kind::kLeaveOut) return true;
  if (answer.kind == Answer::Kind::kBuiltIn) return writeBuiltIn(start, end, out) || refuse();
  if (task_.unmappable.kind == PolicyKind::kLookAlike && writeLookAlike(problem.codePoint, out))
    return true;
  return encode(answer.text, out) || refuse();
}

// A combining mark that was read together with an unmappable base.
bool EngineStage::answerMark(uint32_t mark, ByteBuffer& out) {
  if (encode(utf8Of(mark), out)) return true;
  Problem problem;
  problem.kind = ProblemKind::kUnmappable;
  problem.codePoint = mark;
  const Answer answer = answerBy(task_.unmappable, problem);
  return answerUnmappable(std::move(problem), answer, begin_, begin_, out);
}

bool EngineStage::writeLookAlike(uint32_t character, ByteBuffer& out) {
  if (task_.lookAlikes == nullptr) return false;
  for (const std::string& candidate : task_.lookAlikes(character))
    if (encode(candidate, out)) return true;
  return false;
}

bool EngineStage::writeBuiltIn(size_t start, size_t end, ByteBuffer& out) {
  const int32_t length = record_.inputLength;
  record_.inputPosition = static_cast<int32_t>(start);
  record_.inputLength = static_cast<int32_t>(end);
  record_.options.replaceUnmappable = 1;
  ConverterRecord before;
  uint32_t status;
  do {
    status = convertOnce(before, out);
  } while (status == KSV_STATUS_FULL);
  record_.options.replaceUnmappable = 0;
  record_.inputPosition = static_cast<int32_t>(end);
  record_.inputLength = length;
  return status != KSV_STATUS_UNMAPPABLE;
}

bool EngineStage::takeEscape(size_t at, ByteBuffer& out) {
  const size_t behind = at + unitSize(task_.source);
  Problem problem = problemAt(ProblemKind::kUnmappable, at, behind);
  problem.codePoint = kEscape;
  Answer answer = answerBy(task_.unmappable, problem);
  // The engine would not replace what it can write.
  if (answer.kind == Answer::Kind::kBuiltIn)
    answer = {Answer::Kind::kWrite, utf8Of(record_.options.narrowReplacement)};
  if (!answerUnmappable(std::move(problem), answer, at, behind, out)) return false;
  record_.inputPosition = static_cast<int32_t>(behind);
  return true;
}

// Writes text of ours with a second record, which begins as the first one stands and whose
// state goes back to it.
bool EngineStage::encode(std::string_view utf8, ByteBuffer& out) {
  if (refusesEscape_ && utf8.find(static_cast<char>(kEscape)) != std::string_view::npos)
    return false;
  const size_t before = out.size();
  ConverterRecord& other = inserting_;
  copyTargetState(record_, other);
  other.input = reinterpret_cast<const uint8_t*>(utf8.data());
  other.inputPosition = 0;
  other.inputLength = static_cast<int32_t>(utf8.size());
  uint32_t status;
  do {
    other.output = out.room(std::max(4 * utf8.size(), kSmallestOutput));
    other.outputPosition = 0;
    other.outputCapacity = static_cast<int32_t>(std::min<size_t>(out.roomLeft(), kSmallestOutput));
    status = cconvConvert(&other);
    out.add(static_cast<size_t>(other.outputPosition));
  } while (status == KSV_STATUS_FULL);
  if (status != KSV_STATUS_DONE) {
    out.shrink(before);
    return false;
  }
  copyTargetState(other, record_);
  record_.rawCode = other.rawCode;  // so that CR and LF around it are two line ends
  if (task_.tellsOrigins) journal_.noteInserted(out.size() - before, offsets_.offset(begin_));
  return true;
}

size_t EngineStage::unmappableStart(const ConverterRecord& before) const {
  const int32_t start = task_.source.form == UnicodeForm::kNone
                            ? characterBehindOutput(before, record_.outputPosition)
                            : characterStart(before, record_.inputPosition - 1);
  return static_cast<size_t>(start);
}

bool EngineStage::finish(ByteBuffer& out) {
  // An empty text stays empty: no escape sequence has to be undone.
  if (!wroteAny_ && task_.target.kind == CharsetKind::kIso2022) return true;
  record_.output = out.room(kSmallestOutput);
  record_.outputPosition = 0;
  record_.outputCapacity = static_cast<int32_t>(kSmallestOutput);
  if (cconvTermConvert(&record_) != KSV_STATUS_DONE)
    throw ImpossibleConversion("the end of the text cannot be written");
  out.add(static_cast<size_t>(record_.outputPosition));
  return true;
}

}  // namespace ksv_kit
