// The scorers of the Unicode forms, and of EUC-JP-FIX, whose characters all have two
// bytes as well.
#include "common/byte_order.h"
#include "common/utf16.h"
#include "common/utf8.h"
#include "detect/character_sets.h"
#include "detect/scorers.h"
#include "detect/text_blocks.h"

namespace ksv::detect {
namespace {

constexpr uint32_t kLineSeparator = 0x2028;
constexpr uint32_t kParagraphSeparator = 0x2029;

// An accepted unit other than CR that is no plain one.
void readRowEnd(uint32_t unit, Candidate& candidate, Tally& tally) {
  ++tally.good;
  if (unit == kLineFeed) candidate.noteLineEnd(KSV_TEXT_LF);
  if (unit == kLineSeparator) candidate.separators |= KSV_TEXT_LINE_SEPARATOR;
  if (unit == kParagraphSeparator) candidate.separators |= KSV_TEXT_PARAGRAPH_SEPARATOR;
}

// The unit behind a CR is used up with it, whatever it is: a second CR begins no
// line end, and a separator there goes unseen.
void readBehindCarriageReturn(bool isLineFeed, bool isAccepted, Candidate& candidate,
                              Tally& tally) {
  tally.good += isAccepted;
  tally.bad += !isAccepted;
  if (isAccepted) candidate.noteLineEnd(isLineFeed ? KSV_TEXT_CRLF : KSV_TEXT_CR);
}

// ---- UTF-16

// Reads on over characters that need no second look.
template <bool kBigEndian>
void readPlainUtf16(Reader& reader, Tally& tally) {
  const uint8_t* at = reader.at;
  while (reader.end - at >= 2 && kPlainCharacters.contains(readUnit16(at, kBigEndian))) at += 2;
  tally.good += static_cast<uint32_t>(at - reader.at) / 2;
  reader.at = at;
}

template <bool kBigEndian>
void readUtf16(Reader& reader, Candidate& candidate, Tally& tally) {
  const uint32_t unit = readUnit16(reader.at, kBigEndian);
  reader.at += 2;
  if (unit == kCarriageReturn) {
    ++tally.good;
    if (reader.left() >= 2) {
      const uint32_t next = readUnit16(reader.at, kBigEndian);
      reader.at += 2;
      readBehindCarriageReturn(next == kLineFeed, kAssignedCharacters.contains(next), candidate,
                               tally);
    } else if (reader.left() == 0 && !reader.moreFollows) {
      candidate.noteLineEnd(KSV_TEXT_CR);
    }
  } else if (kAssignedCharacters.contains(unit)) {
    readRowEnd(unit, candidate, tally);
  } else if (!isHighSurrogate(unit)) {
    ++tally.bad;
  } else if (reader.left() >= 2) {  // a surrogate that the chunk cuts off counts nothing
    const bool isPair = isLowSurrogate(readUnit16(reader.at, kBigEndian));
    tally.good += isPair;
    tally.bad += !isPair;
    reader.at += 2;
  }
}

template <bool kBigEndian>
int32_t scoreUtf16(Candidate& candidate, const Chunk& chunk, size_t start) {
  Reader reader(chunk, start);
  Tally tally;
  while (reader.left() >= 2) {
    readUtf16<kBigEndian>(reader, candidate, tally);
    if (tally.bad > candidate.mostBad) return 0;
    readPlainUtf16<kBigEndian>(reader, tally);
  }
  // An odd last byte is read as well. It takes the good characters of its chunk with
  // it and leaves the bad ones.
  if (chunk.length % 2 != 0) tally.good = 0;
  return candidate.add(tally);
}

// ---- UCS-4

constexpr uint32_t kLowestStopPlane = 17;
constexpr uint32_t kHighestStopPlane = 127;

template <bool kBigEndian>
uint32_t plane(const uint8_t* at) {
  return readUnit16(kBigEndian ? at : at + 2, kBigEndian);
}

template <bool kBigEndian>
uint32_t codeInPlane(const uint8_t* at) {
  return readUnit16(kBigEndian ? at + 2 : at, kBigEndian);
}

// Of the planes that no stop is known for, those with characters are good throughout.
constexpr bool isFullPlane(uint32_t plane) {
  return isBetween(plane, 1, 3) || isBetween(plane, 14, 16);
}

template <bool kBigEndian>
Step readUcs4(Reader& reader, Candidate& candidate, Tally& tally) {
  const uint32_t ownPlane = plane<kBigEndian>(reader.at);
  const uint32_t code = codeInPlane<kBigEndian>(reader.at);
  if (isBetween(ownPlane, kLowestStopPlane, kHighestStopPlane)) return Step::kStopped;
  reader.at += 4;
  if (ownPlane != 0) {
    tally.good += isFullPlane(ownPlane);
    tally.bad += !isFullPlane(ownPlane);
  } else if (!kAssignedCharacters.contains(code)) {
    ++tally.bad;
  } else if (code != kCarriageReturn) {
    readRowEnd(code, candidate, tally);
  } else {
    ++tally.good;
    if (reader.left() >= 4) {
      const uint32_t nextPlane = plane<kBigEndian>(reader.at);
      const uint32_t next = codeInPlane<kBigEndian>(reader.at);
      reader.at += 4;
      const bool isAccepted =
          nextPlane == 0 ? kAssignedCharacters.contains(next) : isFullPlane(nextPlane);
      readBehindCarriageReturn(nextPlane == 0 && next == kLineFeed, isAccepted, candidate, tally);
    } else if (reader.left() == 0 && !reader.moreFollows) {
      candidate.noteLineEnd(KSV_TEXT_CR);
    }
  }
  return Step::kRead;
}

template <bool kBigEndian>
int32_t scoreUcs4(Candidate& candidate, const Chunk& chunk, size_t start) {
  Reader reader(chunk, start);
  Tally tally;
  while (reader.left() >= 4) {
    if (readUcs4<kBigEndian>(reader, candidate, tally) == Step::kStopped) return candidate.score();
    if (tally.bad > candidate.mostBad) return 0;
  }
  return candidate.addIfGood(tally);
}

// ---- UTF-8

// Five and six bytes are let pass.
constexpr bool isUtf8Lead(uint8_t byte) { return isBetween(byte, 0xC0, 0xFD); }

// Overlong forms, surrogates and lengths beyond four are let pass.
void readUtf8Sequence(Reader& reader, Tally& tally) {
  const size_t length = utf8Length(*reader.at);
  if (reader.left() < length) {
    ++tally.bad;
    ++reader.at;
    return;
  }
  bool isGood = true;
  for (size_t i = 1; i < length; ++i) isGood &= isUtf8Continuation(reader.at[i]);
  tally.good += isGood;
  tally.bad += !isGood;
  reader.at += length;
}

// Reads on over good characters, which most texts are made of.
void readGoodUtf8(Reader& reader, Tally& tally, const uint8_t* endOfLeads) {
  const uint8_t* at = passText(reader.at, endOfLeads);
  tally.good += static_cast<uint32_t>(at - reader.at);
  while (reader.end - at > static_cast<ptrdiff_t>(kBlock) && areThreeThrees(at)) {
    at += kBlock + 1;
    tally.good += 3;
  }
  reader.at = at;
}

Step readUtf8(Reader& reader, Candidate& candidate, Tally& tally) {
  const uint8_t byte = *reader.at;
  if (isUtf8Lead(byte)) {
    readUtf8Sequence(reader, tally);
  } else if (byte == kCarriageReturn) {
    readCarriageReturn(reader, candidate, tally);
  } else if (byte == kLineFeed) {
    readLineFeed(reader, candidate, tally);
  } else if (byte == 0 || byte == kEscape) {
    return Step::kStopped;
  } else {
    const bool isGood = isBetween(byte, 0x20, 0x7E) || byte == '\t';
    tally.good += isGood;
    tally.bad += !isGood && byte < 0xFE;  // FE and FF count as nothing
    ++reader.at;
  }
  return Step::kRead;
}

// ---- EUC-JP-FIX

bool isGoodBehindZero(uint8_t byte) {
  return isBetween(byte, 0x20, 0x7E) || isBetween(byte, 0xA1, 0xDF) || byte == '\t' ||
         byte == kLineFeed;
}

// 00 0D, and the 00 0A that may follow it.
void readFixedCarriageReturn(Reader& reader, Candidate& candidate, Tally& tally) {
  ++tally.good;
  reader.at += 2;
  if (reader.left() >= 2) {
    const bool isLineEnd = reader.at[0] == 0 && reader.at[1] == kLineFeed;
    tally.good += isLineEnd;
    reader.at += isLineEnd ? 2 : 0;
    candidate.noteLineEnd(isLineEnd ? KSV_TEXT_CRLF : KSV_TEXT_CR);
  } else if (reader.left() == 0 && !reader.moreFollows) {
    candidate.noteLineEnd(KSV_TEXT_CR);
  }
}

constexpr uint64_t kLeadsOfFour = blockOf({0x80, 0, 0x80, 0, 0x80, 0, 0x80, 0});

// Reads on over pairs of a lead and a byte from A1 on: those of EUC-JP, which is what
// looks most like this form.
void readWidePairs(Reader& reader, Tally& tally) {
  const uint8_t* at = reader.at;
  while (reader.left() >= kBlock) {
    const uint64_t block = blockAt(at);
    const bool areHigh = (block & bytesFrom<0x21>(block) & kHighBits) == kHighBits;
    if (!areHigh || (bytesFrom<0x75>(block) & kLeadsOfFour) != 0) break;
    at += kBlock;
    tally.good += 4;
    reader.at = at;
  }
}

Step readEucJpFix(Reader& reader, Candidate& candidate, Tally& tally) {
  const uint8_t first = reader.at[0];
  const bool isLead = isBetween(first, 0xA1, 0xF4);
  if (first == kEscape) return Step::kStopped;
  if (first != 0 && !isLead) {
    ++tally.bad;
    ++reader.at;
    return Step::kRead;
  }
  if (reader.left() < 2) return Step::kCut;
  const uint8_t second = reader.at[1];
  if (first == 0 && second == kCarriageReturn) {
    readFixedCarriageReturn(reader, candidate, tally);
    return Step::kRead;
  }
  const bool isGood = first == 0 ? isGoodBehindZero(second) : isPrintable(second) || second >= 0xA1;
  tally.good += isGood;
  tally.bad += !isGood;
  if (first == 0 && second == kLineFeed) candidate.noteLineEnd(KSV_TEXT_LF);
  reader.at += 2;
  return Step::kRead;
}

}  // namespace

int32_t scoreUtf16BigEndian(Candidate& candidate, const Chunk& chunk, size_t start) {
  return scoreUtf16<true>(candidate, chunk, start);
}

int32_t scoreUtf16LittleEndian(Candidate& candidate, const Chunk& chunk, size_t start) {
  return scoreUtf16<false>(candidate, chunk, start);
}

int32_t scoreUcs4BigEndian(Candidate& candidate, const Chunk& chunk, size_t start) {
  return scoreUcs4<true>(candidate, chunk, start);
}

int32_t scoreUcs4LittleEndian(Candidate& candidate, const Chunk& chunk, size_t start) {
  return scoreUcs4<false>(candidate, chunk, start);
}

int32_t scoreUtf8(Candidate& candidate, const Chunk& chunk, size_t start) {
  Reader reader(chunk, start);
  Tally tally;
  const uint8_t* const endOfLeads = reader.endOfLeads(3);
  while (reader.at < endOfLeads) {
    readGoodUtf8(reader, tally, endOfLeads);
    if (reader.at >= endOfLeads) break;  // a character may reach behind it
    if (readUtf8(reader, candidate, tally) == Step::kStopped) return candidate.score();
    if (tally.bad > candidate.mostBad) return 0;
  }
  return candidate.addIfGood(tally);
}

int32_t scoreEucJpFix(Candidate& candidate, const Chunk& chunk, size_t start) {
  Reader reader(chunk, start);
  Tally tally;
  const uint8_t* const endOfLeads = reader.endOfLeads(2);
  for (readWidePairs(reader, tally); reader.at < endOfLeads; readWidePairs(reader, tally)) {
    if (readEucJpFix(reader, candidate, tally) != Step::kRead) return candidate.score();
    if (tally.bad > candidate.mostBad) return 0;
  }
  // A byte left over, as an odd position does, drops what the chunk has.
  const bool isEven = reader.left() == 0 && chunk.length % 2 == 0;
  return isEven ? candidate.addIfGood(tally) : candidate.score();
}

}  // namespace ksv::detect
