// The encodings that a text may be in, and which of them win.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "detect/candidate.h"
#include "detect/language.h"

namespace ksv::detect {

class TextRace {
 public:
  explicit TextRace(Preference preference) : preference_(preference) {}

  // Whether a byte-order mark settles it. For the first chunk, before decide().
  bool decideByMark(const Chunk& chunk);

  // Whether it is settled. If not, a tie has narrowed the race, and the next chunk may
  // break it.
  bool decide(const Chunk& chunk);

  // Before the first chunk: every score is counted to its end. The answer is the same.
  void giveNothingUpForTests() { givesUp_ = false; }

  // The answer of dtctText so far.
  uint32_t result() const;

 private:
  // In the order in which they are asked for the best score.
  enum Encoding : size_t {
    kSimplifiedChinese,
    kTraditionalChinese,
    kKorean,
    kShiftJis,
    kEucJp,
    kEucJpFix,
    kIso2022Jp,
    kUtf8,
    kUtf16,
    kUcs4,
    kAscii,
    kNone
  };
  static constexpr size_t kEncodings = kNone;
  // Plain ASCII is told only behind a tie.
  static constexpr size_t kContenders = kAscii;

  static constexpr int32_t kUnknownScore = -1;

  struct Runner {
    Candidate candidate;     // in big-endian order, or with no order
    Candidate littleEndian;  // of the two forms that have an order
    bool isLittleEndian = false;
    int32_t score = kUnknownScore;  // in this chunk
  };

  struct Mark;
  struct EncodingRow;
  static const EncodingRow kRows[kEncodings];

  bool fitsBehindMark(const Mark& mark, const Chunk& chunk, size_t position);
  bool mayGiveUp() const;
  uint32_t mostBad() const;
  int32_t score(size_t encoding);
  int32_t scoreNow(size_t encoding);
  int32_t scoreOrders(size_t encoding);
  int32_t shiftJisScore(const Carry& carried);
  bool isFlawless(size_t encoding, bool isLittleEndian = false);
  Encoding findPreferred();
  Encoding findWinner();
  Encoding findBest();
  bool narrowToTies();
  void take(size_t encoding, bool isLittleEndian);

  const Preference preference_;
  std::array<Runner, kEncodings> runners_;
  Chunk chunk_;
  SharedRun shared_;
  bool isFirstChunk_ = true;
  bool givesUp_ = true;
  uint32_t enabled_ = KSV_TEXT_ENCODINGS;
  uint32_t detected_ = 0;
  uint32_t attributes_ = 0;
};

}  // namespace ksv::detect
