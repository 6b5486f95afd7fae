// The scorers of text made of single bytes, pairs and, in EUC-JP, threes.
//
// An encoding is two tables: what each byte is where a character begins, and which
// pairs are good. One function reads them all.
#include <array>
#include <cstdint>

#include "common/byte_order.h"
#include "detect/character_sets.h"
#include "detect/code_set.h"
#include "detect/scorers.h"
#include "detect/text_blocks.h"

namespace ksv::detect {
namespace {

enum class ByteClass : uint8_t {
  kBad,
  kGood,
  kStop,  // no text of the encoding holds it
  kCarriageReturn,
  kLineFeed,
  kLead,
  kLeadBeforeLead,  // a trail that is wrong for it begins a character of its own
  kLeadOfThree
};

using ByteClasses = std::array<ByteClass, 256>;

struct ByteRange {
  uint8_t first;
  uint8_t last;
  ByteClass what;
};

constexpr void set(ByteClasses& classes, const ByteRange& range) {
  for (uint32_t byte = range.first; byte <= range.last; ++byte) classes[byte] = range.what;
}

// Printable ASCII, white space and line ends, which all have in common, and what the
// encoding adds.
template <size_t kCount>
constexpr ByteClasses classesOf(const ByteRange (&ranges)[kCount]) {
  ByteClasses classes{};
  set(classes, {0x21, 0x7E, ByteClass::kGood});
  classes['\t'] = ByteClass::kGood;
  classes[' '] = ByteClass::kGood;
  classes[kCarriageReturn] = ByteClass::kCarriageReturn;
  classes[kLineFeed] = ByteClass::kLineFeed;
  for (const ByteRange& range : ranges) set(classes, range);
  return classes;
}

constexpr bool isCarried(ByteClass what) {
  return what == ByteClass::kCarriageReturn || what >= ByteClass::kLead;
}

// ---- ASCII

constexpr ByteRange kAsciiRanges[] = {
    {0x00, 0x00, ByteClass::kStop},
    {0x1B, 0x1B, ByteClass::kStop},
    {0x7F, 0xFF, ByteClass::kStop},
};
constexpr ByteClasses kAscii = classesOf(kAsciiRanges);

// ---- Shift_JIS

constexpr ByteRange kShiftJisRanges[] = {
    {0x00, 0x00, ByteClass::kStop},           {0x1B, 0x1B, ByteClass::kStop},
    {0x7F, 0x7F, ByteClass::kStop},           {0x81, 0x9F, ByteClass::kLead},
    {0xA1, 0xDF, ByteClass::kGood},           {0xE0, 0xEF, ByteClass::kLead},
    {0xFA, 0xFC, ByteClass::kLeadBeforeLead},
};
constexpr ByteClasses kShiftJis = classesOf(kShiftJisRanges);

// The rows of extensions take 7F, and row 87 even 3F: files that hold such codes have
// always been detected.
constexpr PairRange kShiftJisPairRanges[] = {
    {0x81, 0x86, 0x40, 0x7E}, {0x81, 0x86, 0x80, 0xFC}, {0x87, 0x87, 0x3F, 0xFC},
    {0x88, 0x9F, 0x40, 0x7E}, {0x88, 0x9F, 0x80, 0xFC}, {0xE0, 0xEC, 0x40, 0x7E},
    {0xE0, 0xEC, 0x80, 0xFC}, {0xED, 0xEE, 0x40, 0xFC}, {0xEF, 0xEF, 0x40, 0x7E},
    {0xEF, 0xEF, 0x80, 0xFC}, {0xFA, 0xFB, 0x40, 0xFC}, {0xFC, 0xFC, 0x40, 0x4B},
};

// By code, every other byte above ASCII is a lead, and no byte stops the scan.
constexpr ByteRange kShiftJisCodeRanges[] = {
    {0x80, 0xA0, ByteClass::kLead},
    {0xA1, 0xDF, ByteClass::kGood},
    {0xE0, 0xFF, ByteClass::kLead},
};
constexpr ByteClasses kShiftJisByCode = classesOf(kShiftJisCodeRanges);

// ---- EUC-JP

constexpr ByteRange kEucJpRanges[] = {
    {0x00, 0x00, ByteClass::kStop}, {0x1B, 0x1B, ByteClass::kStop},
    {0x8E, 0x8E, ByteClass::kLead}, {0x8F, 0x8F, ByteClass::kLeadOfThree},
    {0xA1, 0xF4, ByteClass::kLead},
};
constexpr ByteClasses kEucJp = classesOf(kEucJpRanges);

constexpr PairRange kEucJpPairRanges[] = {
    {0x8E, 0x8E, 0xA1, 0xDF},
    {0xA1, 0xF4, 0xA1, 0xFF},
};

// ---- Simplified Chinese: GBK

constexpr ByteRange kGbkRanges[] = {
    {0x00, 0x00, ByteClass::kStop},
    {0x1B, 0x1B, ByteClass::kStop},
    {0x81, 0xFE, ByteClass::kLead},
};
constexpr ByteClasses kGbk = classesOf(kGbkRanges);

constexpr PairRange kGbkPairRanges[] = {
    {0x81, 0xA0, 0x40, 0x7E}, {0x81, 0xA0, 0x80, 0xFE}, {0xB0, 0xD6, 0x40, 0x7E},
    {0xB0, 0xD6, 0x80, 0xFE}, {0xD8, 0xF7, 0x40, 0x7E}, {0xD8, 0xF7, 0x80, 0xFE},
    {0xA1, 0xA1, 0xA1, 0xFE}, {0xA3, 0xA3, 0xA1, 0xFE}, {0xA2, 0xA2, 0xA1, 0xAA},
    {0xA2, 0xA2, 0xB1, 0xE2}, {0xA2, 0xA2, 0xE5, 0xEE}, {0xA2, 0xA2, 0xF1, 0xFC},
    {0xA4, 0xA4, 0xA1, 0xF3}, {0xA5, 0xA5, 0xA1, 0xF6}, {0xA6, 0xA6, 0xA1, 0xB8},
    {0xA6, 0xA6, 0xC1, 0xD8}, {0xA6, 0xA6, 0xE0, 0xEB}, {0xA6, 0xA6, 0xEE, 0xF2},
    {0xA6, 0xA6, 0xF4, 0xF5}, {0xA7, 0xA7, 0xA1, 0xC1}, {0xA7, 0xA7, 0xD1, 0xF1},
    {0xA8, 0xA8, 0x40, 0x7E}, {0xA8, 0xA8, 0x80, 0x95}, {0xA8, 0xA8, 0xA1, 0xBE},
    {0xA8, 0xA8, 0xC0, 0xC0}, {0xA8, 0xA8, 0xC5, 0xE9}, {0xA9, 0xA9, 0x40, 0x57},
    {0xA9, 0xA9, 0x59, 0x5A}, {0xA9, 0xA9, 0x5C, 0x5C}, {0xA9, 0xA9, 0x60, 0x88},
    {0xA9, 0xA9, 0x96, 0x96}, {0xA9, 0xA9, 0xA4, 0xEF}, {0xAA, 0xAF, 0x40, 0x7E},
    {0xAA, 0xAF, 0x80, 0xA0}, {0xF8, 0xFE, 0x40, 0x7E}, {0xF8, 0xFE, 0x80, 0xA0},
    {0xD7, 0xD7, 0x40, 0x7E}, {0xD7, 0xD7, 0x80, 0xF9},
};

// ---- Traditional Chinese: Big5

constexpr ByteRange kBig5Ranges[] = {
    {0x00, 0x00, ByteClass::kStop},
    {0x1B, 0x1B, ByteClass::kStop},
    {0xA1, 0xF9, ByteClass::kLead},
};
constexpr ByteClasses kBig5 = classesOf(kBig5Ranges);

constexpr PairRange kBig5PairRanges[] = {
    {0xA1, 0xC7, 0x40, 0x7E}, {0xA1, 0xC7, 0xA1, 0xFE}, {0xC9, 0xF9, 0x40, 0x7E},
    {0xC9, 0xF9, 0xA1, 0xFE}, {0xC8, 0xC8, 0x40, 0x79}, {0xC8, 0xC8, 0x7B, 0x7B},
    {0xC8, 0xC8, 0x7D, 0x7D}, {0xC8, 0xC8, 0xA2, 0xA2}, {0xC8, 0xC8, 0xCD, 0xD3},
};

// ---- Korean: EUC-KR with the trail bytes of UHC

constexpr ByteRange kKoreanRanges[] = {
    {0x00, 0x00, ByteClass::kStop},
    {0x1B, 0x1B, ByteClass::kStop},
    {0xA1, 0xFE, ByteClass::kLead},
};
constexpr ByteClasses kKorean = classesOf(kKoreanRanges);

constexpr PairRange kKoreanPairRanges[] = {
    {0xA1, 0xFE, 0x41, 0xA0}, {0xA1, 0xA4, 0xA1, 0xFE}, {0xA8, 0xA9, 0xA1, 0xFE},
    {0xAD, 0xFE, 0xA1, 0xFE}, {0xA5, 0xA5, 0xA1, 0xAA}, {0xA5, 0xA5, 0xB0, 0xB9},
    {0xA5, 0xA5, 0xC1, 0xD8}, {0xA5, 0xA5, 0xE1, 0xF8}, {0xA6, 0xA6, 0xA1, 0xE4},
    {0xA7, 0xA7, 0xA1, 0xEF}, {0xAA, 0xAA, 0xA1, 0xF3}, {0xAB, 0xAB, 0xA1, 0xF6},
    {0xAC, 0xAC, 0xA1, 0xC1}, {0xAC, 0xAC, 0xD1, 0xF1},
};

// ---- Pairs

// The bits of text detection, shifted down into a byte.
constexpr uint32_t kPairBitsShift = 6;
constexpr uint32_t kPairEncodingsMask = KSV_TEXT_EUC_JP | KSV_TEXT_SHIFT_JIS |
                                        KSV_TEXT_SIMPLIFIED_CHINESE | KSV_TEXT_TRADITIONAL_CHINESE |
                                        KSV_TEXT_KOREAN;
constexpr uint8_t pairBits(uint32_t encodings) {
  return static_cast<uint8_t>((encodings & kPairEncodingsMask) >> kPairBitsShift);
}

enum PairEncoding : uint8_t {
  kEucJpPairs = pairBits(KSV_TEXT_EUC_JP),
  kShiftJisPairs = pairBits(KSV_TEXT_SHIFT_JIS),
  kGbkPairs = pairBits(KSV_TEXT_SIMPLIFIED_CHINESE),
  kBig5Pairs = pairBits(KSV_TEXT_TRADITIONAL_CHINESE),
  kKoreanPairs = pairBits(KSV_TEXT_KOREAN),
};

using PairEncodings = std::array<uint8_t, 0x10000>;

template <size_t kCount>
constexpr void add(PairEncodings& table, const PairRange (&ranges)[kCount], PairEncoding encoding) {
  for (const PairRange& range : ranges) {
    for (uint32_t lead = range.firstLead; lead <= range.lastLead; ++lead) {
      for (uint32_t trail = range.firstTrail; trail <= range.lastTrail; ++trail)
        table[lead << 8 | trail] |= encoding;
    }
  }
}

constexpr PairEncodings makePairEncodings() {
  PairEncodings table{};
  add(table, kShiftJisPairRanges, kShiftJisPairs);
  add(table, kEucJpPairRanges, kEucJpPairs);
  add(table, kGbkPairRanges, kGbkPairs);
  add(table, kBig5PairRanges, kBig5Pairs);
  add(table, kKoreanPairRanges, kKoreanPairs);
  return table;
}

// The encodings that each pair, lead * 256 + trail, is good in. One byte a pair: 64 KB,
// of which a text touches the rows of its leads. A set of bits for each encoding is
// smaller and takes twice the time, since the bit has to be shifted down.
constinit const PairEncodings kPairEncodings = makePairEncodings();

uint32_t pairAt(const uint8_t* at) { return readUnit16(at, true); }

// Whether four pairs are good in all these encodings: no branch for each.
bool areFourGood(const uint8_t* at, uint8_t encodings) {
  const uint32_t all = kPairEncodings[pairAt(at)] & kPairEncodings[pairAt(at + 2)] &
                       kPairEncodings[pairAt(at + 4)] & kPairEncodings[pairAt(at + 6)];
  return (all & encodings) == encodings;
}

// How many of three pairs are good in them, from the first on.
size_t goodOfThree(const uint8_t* at, uint8_t encodings) {
  const auto isGood = [&](size_t i) -> size_t {
    return (kPairEncodings[pairAt(at + 2 * i)] & encodings) == encodings;
  };
  const size_t two = isGood(0) & isGood(1);
  return isGood(0) + two + (two & isGood(2));
}

// What a scorer asks of pairs: in one of the encodings of the table, or by code.
template <PairEncoding kEncoding>
struct PairsOf {
  static bool areIn(uint32_t encodings) { return (pairBits(encodings) & kEncoding) != 0; }
  static bool isGood(const uint8_t* at) { return (kPairEncodings[pairAt(at)] & kEncoding) != 0; }
  static bool areFourGood(const uint8_t* at) { return detect::areFourGood(at, kEncoding); }
};

struct PairsByCode {
  static bool areIn(uint32_t) { return false; }
  static bool isGood(const uint8_t* at) { return kShiftJisCodes.contains(pairAt(at)); }
  static bool areFourGood(const uint8_t* at) {
    return (int{isGood(at)} & int{isGood(at + 2)} & int{isGood(at + 4)} & int{isGood(at + 6)}) != 0;
  }
};

// ---- Reading

void count(Tally& tally, bool isGood) {
  tally.good += isGood;
  tally.bad += !isGood;
}

Step readThree(Reader& reader, Tally& tally) {
  if (reader.left() < 2) return Step::kCut;
  if (!isBetween(reader.at[1], 0xA1, 0xDF)) {
    ++tally.bad;
    reader.at += 2;  // the third byte is read as a character of its own
    return Step::kRead;
  }
  if (reader.left() < 3) return Step::kCut;
  count(tally, reader.at[2] >= 0xA1);
  reader.at += 3;
  return Step::kRead;
}

template <class Pairs>
Step readPair(Reader& reader, Tally& tally, ByteClass lead) {
  if (reader.left() < 2) return Step::kCut;
  const bool isGood = Pairs::isGood(reader.at);
  count(tally, isGood);
  reader.at += !isGood && lead == ByteClass::kLeadBeforeLead ? 1 : 2;
  return Step::kRead;
}

template <const ByteClasses& kClasses, class Pairs>
Step readCharacter(Reader& reader, Candidate& candidate, Tally& tally) {
  switch (const ByteClass what = kClasses[*reader.at]) {
    case ByteClass::kGood:
    case ByteClass::kBad:
      count(tally, what == ByteClass::kGood);
      ++reader.at;
      return Step::kRead;
    case ByteClass::kStop:
      return Step::kStopped;
    case ByteClass::kCarriageReturn:
      readCarriageReturn(reader, candidate, tally);
      return Step::kRead;
    case ByteClass::kLineFeed:
      readLineFeed(reader, candidate, tally);
      return Step::kRead;
    case ByteClass::kLeadOfThree:
      return readThree(reader, tally);
    default:
      return readPair<Pairs>(reader, tally, what);
  }
}

// The end of the good pairs from at on; last is where none can begin any more.
template <class Pairs>
const uint8_t* passGoodPairs(const uint8_t* at, const uint8_t* last) {
  while (last - at >= static_cast<ptrdiff_t>(kBlock) && Pairs::areFourGood(at)) at += kBlock;
  while (at < last && Pairs::isGood(at)) at += 2;
  return at;
}

// Reads on while there are pairs and plain bytes, which most of a text is made of. Good
// pairs and good bytes come in runs, which are counted by their length.
template <const ByteClasses& kClasses, class Pairs>
void readPlainText(Reader& reader, Tally& tally, uint32_t mostBad) {
  const uint8_t* at = reader.at;
  const uint8_t* const last = reader.end - 1;
  uint32_t good = tally.good;
  uint32_t bad = tally.bad;
  while (bad <= mostBad) {
    const uint8_t* const start = at;
    at = passGoodPairs<Pairs>(at, last);
    good += static_cast<uint32_t>(at - start) / 2;
    if (at >= last) break;
    const ByteClass what = kClasses[*at];
    if (what == ByteClass::kGood) {
      const uint8_t* const singles = at;
      at = passText(at, last);
      while (at < last && kClasses[*at] == ByteClass::kGood) ++at;
      good += static_cast<uint32_t>(at - singles);
    } else if (what == ByteClass::kBad || what == ByteClass::kLead) {
      ++bad;
      at += what == ByteClass::kBad ? 1 : 2;
    } else {
      break;
    }
  }
  reader.at = at;
  tally = {good, bad};
}

// ---- What encodings share

// A tab, an LF, or a CR with the LF that may follow it.
const uint8_t* readControl(const uint8_t* at, SharedRun& run) {
  if (*at == '\t') {
    ++run.good;
    return at + 1;
  }
  const bool isPair = at[0] == kCarriageReturn && at[1] == kLineFeed;
  if (run.lineEnd == 0)
    run.lineEnd = isPair ? KSV_TEXT_CRLF : *at == kLineFeed ? KSV_TEXT_LF : KSV_TEXT_CR;
  run.good += isPair ? 2 : 1;
  return at + (isPair ? 2 : 1);
}

// Text of many pairs and some ASCII changes between them unforeseeably, so what is read
// is counted rather than branched on. Whatever is not as usual ends the run, the
// last bytes of the chunk as well.
void readShared(SharedRun& run, const uint8_t* from, const uint8_t* end) {
  constexpr ptrdiff_t kMostInTurn = 2 * kBlock;
  const uint8_t encodings = pairBits(run.encodings);
  run.from = from;
  const uint8_t* at = from;
  uint32_t good = 0;
  while (end - at > kMostInTurn) {
    if (areFourGood(at, encodings)) {
      at += kBlock;
      good += 4;
      continue;
    }
    const uint8_t* const before = at;
    const size_t pairs = goodOfThree(at, encodings);
    at += 2 * pairs;
    const size_t singles = textBytes(blockAt(at));
    at += singles;
    good += static_cast<uint32_t>(pairs + singles);
    if (*at == kLineFeed || *at == kCarriageReturn || *at == '\t') at = readControl(at, run);
    if (at == before) break;
  }
  run.good += good;
  run.to = at;
}

// Passes over what has been read for other encodings, or is read for them now.
void passShared(SharedRun& run, Reader& reader, Candidate& candidate, Tally& tally) {
  if (run.from == nullptr) readShared(run, reader.at, reader.end);
  if (run.from != reader.at) return;
  reader.at = run.to;
  tally.good += run.good;
  if (run.lineEnd != 0) candidate.noteLineEnd(run.lineEnd);
}

template <const ByteClasses& kClasses, class Pairs>
int32_t scoreByteText(Candidate& candidate, const Chunk& chunk, size_t start) {
  Reader reader(chunk, start);
  Tally tally;
  const auto read = [&](Reader& from) {
    return readCharacter<kClasses, Pairs>(from, candidate, tally);
  };
  Step step = candidate.carry.count == 0 ? Step::kRead : resume(candidate.carry, reader, read);
  if (step == Step::kRead && chunk.shared != nullptr && Pairs::areIn(chunk.shared->encodings))
    passShared(*chunk.shared, reader, candidate, tally);
  const uint8_t* const endOfLeads = reader.endOfLeads(2);
  while (step == Step::kRead && reader.at < endOfLeads) {
    readPlainText<kClasses, Pairs>(reader, tally, candidate.mostBad);
    if (tally.bad > candidate.mostBad) return 0;
    if (reader.at < endOfLeads) step = read(reader);
  }
  if (step == Step::kStopped) return candidate.score();
  const bool isLeftOver = reader.at < reader.end && isCarried(kClasses[*reader.at]);
  if (step == Step::kCut || isLeftOver) keepCut(reader, candidate.carry, tally);
  return candidate.addIfGood(tally);
}

}  // namespace

int32_t scoreAscii(Candidate& candidate, const Chunk& chunk, size_t start) {
  Reader reader(chunk, start);
  Tally tally;
  Step step = Step::kRead;
  while (step == Step::kRead && reader.at < reader.end) {
    step = readCharacter<kAscii, PairsByCode>(reader, candidate, tally);
  }
  // Such a chunk takes what earlier ones counted with it.
  if (step == Step::kStopped || tally.good == 0) {
    candidate.good = 0;
    candidate.bad = 0;
    return 0;
  }
  return candidate.add(tally);
}

int32_t scoreShiftJis(Candidate& candidate, const Chunk& chunk, size_t start) {
  return scoreByteText<kShiftJis, PairsOf<kShiftJisPairs>>(candidate, chunk, start);
}

int32_t scoreShiftJisCodes(Candidate& candidate, const Chunk& chunk, size_t start) {
  return scoreByteText<kShiftJisByCode, PairsByCode>(candidate, chunk, start);
}

int32_t scoreEucJp(Candidate& candidate, const Chunk& chunk, size_t start) {
  return scoreByteText<kEucJp, PairsOf<kEucJpPairs>>(candidate, chunk, start);
}

int32_t scoreSimplifiedChinese(Candidate& candidate, const Chunk& chunk, size_t start) {
  return scoreByteText<kGbk, PairsOf<kGbkPairs>>(candidate, chunk, start);
}

int32_t scoreTraditionalChinese(Candidate& candidate, const Chunk& chunk, size_t start) {
  return scoreByteText<kBig5, PairsOf<kBig5Pairs>>(candidate, chunk, start);
}

int32_t scoreKorean(Candidate& candidate, const Chunk& chunk, size_t start) {
  return scoreByteText<kKorean, PairsOf<kKoreanPairs>>(candidate, chunk, start);
}

}  // namespace ksv::detect
