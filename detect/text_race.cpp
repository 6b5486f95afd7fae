// The scores are asked for one by one, and a scorer runs when its score is asked for:
// most texts are settled by one or two. A runner that is not asked cannot be in a tie
// either, since a tie asks for all.
#include "detect/text_race.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>

#include "detect/scorers.h"

namespace ksv::detect {
namespace {

constexpr int32_t kFlawless = 100;
constexpr int32_t kLeastScore = 90;

}  // namespace

struct TextRace::EncodingRow {
  uint32_t bit;
  Scorer scorer;
  Scorer littleEndian;
};

struct TextRace::Mark {
  Encoding encoding;
  bool isLittleEndian;
  size_t length;
  uint8_t bytes[4];
};

const TextRace::EncodingRow TextRace::kRows[] = {
    {KSV_TEXT_SIMPLIFIED_CHINESE, scoreSimplifiedChinese, nullptr},
    {KSV_TEXT_TRADITIONAL_CHINESE, scoreTraditionalChinese, nullptr},
    {KSV_TEXT_KOREAN, scoreKorean, nullptr},
    {KSV_TEXT_SHIFT_JIS, scoreShiftJis, nullptr},
    {KSV_TEXT_EUC_JP, scoreEucJp, nullptr},
    {KSV_TEXT_EUC_JP_FIX, scoreEucJpFix, nullptr},
    {KSV_TEXT_ISO_2022_JP, scoreIso2022Jp, nullptr},
    {KSV_TEXT_UTF8, scoreUtf8, nullptr},
    {KSV_TEXT_UTF16, scoreUtf16BigEndian, scoreUtf16LittleEndian},
    {KSV_TEXT_UCS4, scoreUcs4BigEndian, scoreUcs4LittleEndian},
    {KSV_TEXT_ASCII, scoreAscii, nullptr},
};

// Marks of several forms may stand one behind the other: each is looked for behind the
// last one that fitted, and the last one that fits holds. A text that does not fit its
// mark keeps what was counted here.
bool TextRace::decideByMark(const Chunk& chunk) {
  constexpr Mark kMarks[] = {
      {kUcs4, true, 4, {0xFF, 0xFE, 0x00, 0x00}}, {kUcs4, false, 4, {0x00, 0x00, 0xFE, 0xFF}},
      {kUtf8, false, 3, {0xEF, 0xBB, 0xBF}},      {kUtf16, true, 2, {0xFF, 0xFE}},
      {kUtf16, false, 2, {0xFE, 0xFF}},
  };
  Encoding last = kNone;
  size_t position = 0;
  for (const Mark& mark : kMarks) {
    if (mark.encoding == last || !fitsBehindMark(mark, chunk, position)) continue;
    last = mark.encoding;
    position += mark.length;
    take(mark.encoding, mark.isLittleEndian);
    attributes_ |= KSV_TEXT_MARK;
  }
  return last != kNone;
}

bool TextRace::fitsBehindMark(const Mark& mark, const Chunk& chunk, size_t position) {
  const size_t start = position + mark.length;
  if (start > chunk.length) return false;
  if (std::memcmp(chunk.data + position, mark.bytes, mark.length) != 0) return false;
  Runner& runner = runners_[mark.encoding];
  const EncodingRow& row = kRows[mark.encoding];
  const int32_t score = mark.isLittleEndian ? row.littleEndian(runner.littleEndian, chunk, start)
                                            : row.scorer(runner.candidate, chunk, start);
  return score >= kLeastScore;
}

// Only in the first chunk a scorer may give up: one that drops a later chunk leaves the
// score of what came before. What a mark has had counted does not matter, since a text
// that did not fit its mark has no score of 90 there either.
bool TextRace::mayGiveUp() const { return givesUp_ && isFirstChunk_; }

// So many bad characters leave no score of 90, whatever the others are.
uint32_t TextRace::mostBad() const {
  if (!mayGiveUp()) return UINT32_MAX;
  return static_cast<uint32_t>(chunk_.length) * (kFlawless - kLeastScore) / kFlawless;
}

int32_t TextRace::score(size_t encoding) {
  if ((enabled_ & kRows[encoding].bit) == 0) return 0;
  Runner& runner = runners_[encoding];
  if (runner.score == kUnknownScore) runner.score = scoreNow(encoding);
  return runner.score;
}

// One order may be given up only when the other one is, and the encoding leaves the race:
// in a tie both are asked for their counts and line ends later, however bad one is.
int32_t TextRace::scoreOrders(size_t encoding) {
  Runner& runner = runners_[encoding];
  const EncodingRow& row = kRows[encoding];
  const auto scoreOrder = [&](Candidate& candidate, Scorer scorer, uint32_t mostBad) {
    candidate.mostBad = mostBad;
    return scorer(candidate, chunk_, 0);
  };
  const Candidate bigBefore = runner.candidate;
  const Candidate littleBefore = runner.littleEndian;
  const int32_t big = scoreOrder(runner.candidate, row.scorer, mostBad());
  const int32_t little = scoreOrder(runner.littleEndian, row.littleEndian, mostBad());
  runner.isLittleEndian = little >= big;
  const int32_t score = std::max(big, little);
  if (score < kLeastScore) return score;
  Candidate& loser = runner.isLittleEndian ? runner.candidate : runner.littleEndian;
  loser = runner.isLittleEndian ? bigBefore : littleBefore;
  scoreOrder(loser, runner.isLittleEndian ? row.scorer : row.littleEndian, UINT32_MAX);
  return score;
}

int32_t TextRace::scoreNow(size_t encoding) {
  const EncodingRow& row = kRows[encoding];
  if (row.littleEndian != nullptr) return scoreOrders(encoding);
  Candidate& candidate = runners_[encoding].candidate;
  // What ISO-2022-JP sees of line ends is told even when it loses.
  if (encoding != kIso2022Jp) candidate.mostBad = mostBad();
  const Carry carried = candidate.carry;
  const int32_t own = row.scorer(candidate, chunk_, 0);
  return encoding == kShiftJis && own == kFlawless ? shiftJisScore(carried) : own;
}

// Pairs of UTF-8 look like Shift_JIS, so where a text is flawless in both its codes
// have to bear it out. They are counted beside what has been counted.
int32_t TextRace::shiftJisScore(const Carry& carried) {
  if (!isFlawless(kUtf8)) return kFlawless;
  Candidate& candidate = runners_[kShiftJis].candidate;
  candidate.carry = carried;
  candidate.mostBad = UINT32_MAX;
  return scoreShiftJisCodes(candidate, chunk_, 0);
}

// A text that is flawed shows it early: a copy of the candidate is given up at the
// first bad character, and the candidate is left to be scored, should it come to that.
bool TextRace::isFlawless(size_t encoding, bool isLittleEndian) {
  Runner& runner = runners_[encoding];
  Candidate& candidate = isLittleEndian ? runner.littleEndian : runner.candidate;
  if (runner.score != kUnknownScore || !mayGiveUp())
    return score(encoding) == kFlawless && runner.isLittleEndian == isLittleEndian;
  Candidate trial = candidate;
  trial.mostBad = 0;
  const EncodingRow& row = kRows[encoding];
  const Scorer scorer = isLittleEndian ? row.littleEndian : row.scorer;
  if (scorer(trial, chunk_, 0) != kFlawless) return false;
  const Carry carried = candidate.carry;
  candidate = trial;
  runner.isLittleEndian = isLittleEndian;
  runner.score = encoding == kShiftJis ? shiftJisScore(carried) : kFlawless;
  return runner.score == kFlawless;
}

TextRace::Encoding TextRace::findPreferred() {
  const auto firstFlawless = [this](std::initializer_list<Encoding> encodings) {
    for (const Encoding encoding : encodings) {
      if (isFlawless(encoding)) return encoding;
    }
    return kNone;
  };
  switch (preference_) {
    case Preference::kJapanese:
      return firstFlawless({kShiftJis, kEucJp, kIso2022Jp});
    case Preference::kSimplifiedChinese:
      return firstFlawless({kSimplifiedChinese});
    case Preference::kTraditionalChinese:
      return firstFlawless({kTraditionalChinese});
    case Preference::kKorean:
      return firstFlawless({kKorean});
    default:
      return kNone;
  }
}

// The one whose score is above all others, if there is one.
TextRace::Encoding TextRace::findBest() {
  size_t best = kNone;
  int32_t highest = kLeastScore - 1;
  for (size_t encoding = 0; encoding < kContenders; ++encoding) {
    const int32_t own = score(encoding);
    if (own > highest) {
      best = encoding;
    } else if (own == highest) {
      best = kNone;
    }
    highest = std::max(highest, own);
  }
  return static_cast<Encoding>(best);
}

TextRace::Encoding TextRace::findWinner() {
  const Encoding preferred = findPreferred();
  if (preferred != kNone) return preferred;
  if (isFlawless(kUtf8)) return kUtf8;
  if (isFlawless(kUtf16, true)) return kUtf16;
  if (isFlawless(kUcs4, true)) return kUcs4;
  return findBest();
}

void TextRace::take(size_t encoding, bool isLittleEndian) {
  const Runner& runner = runners_[encoding];
  const Candidate& winner = isLittleEndian ? runner.littleEndian : runner.candidate;
  detected_ = kRows[encoding].bit;
  attributes_ = KSV_TEXT_SETTLED | (isLittleEndian ? 0 : KSV_TEXT_BIG_ENDIAN) | winner.lineEnd |
                winner.separators;
}

// Leaves in the race those with the highest score of at least 90. False when there
// are none.
bool TextRace::narrowToTies() {
  int32_t highest = kLeastScore;
  for (size_t encoding = 0; encoding < kContenders; ++encoding)
    highest = std::max(highest, score(encoding));
  uint32_t ties = score(kAscii) == kFlawless ? KSV_TEXT_ASCII : 0;
  for (size_t encoding = 0; encoding < kContenders; ++encoding)
    if (score(encoding) == highest) ties |= kRows[encoding].bit;
  enabled_ = ties;
  detected_ = ties == 0 ? KSV_TEXT_UNDETERMINED : ties;
  return ties != 0;
}

bool TextRace::decide(const Chunk& chunk) {
  chunk_ = chunk;
  // Those of a tie mostly read a chunk alike; in the first one they do not.
  shared_ = {.encodings = enabled_};
  if (!isFirstChunk_) chunk_.shared = &shared_;
  for (Runner& runner : runners_) runner.score = kUnknownScore;
  const Encoding winner = findWinner();
  bool isSettled = true;
  if (winner != kNone) {
    take(winner, runners_[winner].isLittleEndian);
  } else {
    isSettled = !narrowToTies();
  }
  isFirstChunk_ = false;
  return isSettled;
}

uint32_t TextRace::result() const {
  if ((detected_ & KSV_TEXT_ASCII) != 0) return KSV_TEXT_ASCII | runners_[kAscii].candidate.lineEnd;
  const uint32_t result = detected_ | attributes_;
  if (attributes_ != 0) return result;
  if ((detected_ & (KSV_TEXT_UTF16 | KSV_TEXT_UCS4)) == 0) {
    const uint32_t settled = result | KSV_TEXT_BIG_ENDIAN | KSV_TEXT_SETTLED;
    // A tie tells the line end that ISO-2022-JP saw, unless UTF-8 is in it.
    const bool hasLineEnd = detected_ != KSV_TEXT_UNDETERMINED && (detected_ & KSV_TEXT_UTF8) == 0;
    return hasLineEnd ? settled | runners_[kIso2022Jp].candidate.lineEnd : settled;
  }
  // Of the ties with a form that has an order, one tells a line end.
  const Candidate& utf16 = runners_[kUtf16].candidate;
  const bool hasLineEnd =
      detected_ == (KSV_TEXT_UTF16 | KSV_TEXT_EUC_JP_FIX) && utf16.separators == 0;
  return hasLineEnd ? result | utf16.lineEnd : result;
}

}  // namespace ksv::detect
