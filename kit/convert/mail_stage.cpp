#include "kit/convert/mail_stage.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "kit/limits.h"

namespace ksv_kit {
namespace {

// What the engine writes, and holds in between, for one character.
constexpr size_t kMostBytesPerCharacter = 4;

// A code that stands for no character is one of HZ: what is well-formed UTF-7 are characters.
constexpr size_t kBytesOfPair = 2;

std::unique_ptr<MailReader> readerOf(CharsetKind kind) {
  if (kind == CharsetKind::kUtf7) return std::make_unique<Utf7Reader>();
  return std::make_unique<HzReader>();
}

}  // namespace

MailStage::MailStage(const CharsetChoice& source, const Policy& invalid)
    : source_(source), invalid_(invalid) {
  std::memset(&prepared_, 0, sizeof prepared_);
  uint32_t parameters[3] = {1, 0, 0};
  if (cconvInitConvert(&prepared_, nullptr, "utf-8") != KSV_STATUS_DONE ||
      cconvChgCharset(&prepared_, parameters, source.name.c_str()) != KSV_STATUS_DONE)
    throw ImpossibleConversion("the charset " + source.display + " cannot be set up");
  restart();
}

void MailStage::restart() {
  record_ = prepared_;
  reader_ = readerOf(source_.kind);
  held_.clear();
  read_ = 0;
  base_ = written_ = pieceBegin_ = 0;
  end_ = PieceEnd::kMore;
  links_ = {};
  counts_ = {};
  forgetProblem();
}

bool MailStage::take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) {
  end_ = end;
  held_.append(bytes, size);
  links_.forgetBefore(pieceBegin_);
  pieceBegin_ = written_;
  Outcome outcome = Outcome::kGoesOn;
  while (outcome == Outcome::kGoesOn && read_ < held_.size()) {
    const MailPiece piece = reader_->read(held_.data() + read_, held_.size() - read_, isLast());
    if (!convertPiece(piece, out)) return false;
    read_ += piece.used;
    outcome = judgeEnd(piece, out);
  }
  held_.erase(0, read_);
  base_ += read_;
  read_ = 0;
  return outcome != Outcome::kFailed;
}

// Bad text stands behind the piece.
MailStage::Outcome MailStage::judgeEnd(const MailPiece& piece, ByteBuffer& out) {
  if (piece.end == ScanEnd::kAll) return Outcome::kGoesOn;
  const bool isCut = piece.end == ScanEnd::kIncomplete;
  if (isCut && end_ != PieceEnd::kEnd) {
    if (end_ == PieceEnd::kBrokenOff || held_.size() - read_ <= limits::kLongestRun)
      return Outcome::kNeedsMore;
    Problem problem = problemAt(ProblemKind::kTooLong, read_, 1);
    problem.message =
        "a base64 run of more than " + std::to_string(limits::kLongestRun) + " bytes begins";
    fail(std::move(problem));
    return Outcome::kFailed;
  }
  const ProblemKind kind = isCut ? ProblemKind::kTruncated : ProblemKind::kInvalid;
  if (!answer(kind, read_, piece.badLength, out)) return Outcome::kFailed;
  read_ += piece.badLength;
  return Outcome::kGoesOn;
}

// A code of the piece that stands for no character is told, or something else in its place.
bool MailStage::convertPiece(const MailPiece& piece, ByteBuffer& out) {
  record_.input = piece.bytes.data();
  record_.inputLength = static_cast<int32_t>(piece.bytes.size());
  record_.inputPosition = 0;
  size_t next = 0;
  while (next < piece.characters.size()) {
    const size_t room = kMostBytesPerCharacter * (piece.characters.size() + 1);
    record_.output = out.room(room);
    record_.outputPosition = 0;
    record_.outputCapacity = static_cast<int32_t>(room);
    record_.charactersRead = 0;
    record_.unitsWritten = 0;
    const uint32_t status = cconvConvert(&record_);
    next = linkCharacters(piece, next, record_.output, static_cast<size_t>(record_.outputPosition));
    out.add(static_cast<size_t>(record_.outputPosition));
    if (status == KSV_STATUS_DONE || next == piece.characters.size()) return true;
    const size_t bad = piece.characters[next].inText;
    ++next;
    if (next < piece.characters.size())
      record_.inputPosition = static_cast<int32_t>(piece.characters[next].inLibrary);
    if (!answer(ProblemKind::kInvalid, read_ + bad, kBytesOfPair, out)) return false;
  }
  return true;
}

// Ties the characters that the last call wrote to their places in the text. Returns
// the first that it did not write.
size_t MailStage::linkCharacters(const MailPiece& piece, size_t first, const uint8_t* made,
                                 size_t size) {
  size_t next = first;
  for (size_t i = 0; i < size; ++i) {
    if ((made[i] & 0xC0) == 0x80) continue;
    links_.add(written_ + i, base_ + read_ + piece.characters[next++].inText);
  }
  written_ += size;
  return next;
}

Problem MailStage::problemAt(ProblemKind kind, size_t position, size_t length) const {
  Problem problem;
  problem.kind = kind;
  problem.offset = placeInText(base_ + position);
  // Where nothing has to be left out, the byte is shown that must not stand there.
  const size_t end = std::min(position + std::max<size_t>(length, 1), held_.size());
  if (position < end)
    problem.bytes.assign(reinterpret_cast<const char*>(held_.data()) + position, end - position);
  problem.message = messageOf(kind, source_.display, problem.bytes);
  return problem;
}

bool MailStage::answer(ProblemKind kind, size_t position, size_t length, ByteBuffer& out) {
  Answer answer;
  if (invalid_.kind != PolicyKind::kSkip) {
    const Problem problem = problemAt(kind, position, length);
    answer = answerBy(invalid_, problem);
    if (answer.kind == Answer::Kind::kFail) return fail(problem);
  }
  counts_.invalidBytes += length;
  if (answer.text.empty()) return true;
  links_.add(written_, base_ + position);
  out.append(answer.text);
  written_ += answer.text.size();
  return true;
}

}  // namespace ksv_kit
