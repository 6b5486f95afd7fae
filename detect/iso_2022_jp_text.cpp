// The scorer of ISO-2022-JP.
#include "detect/scorers.h"
#include "detect/text_blocks.h"

namespace ksv::detect {
namespace {

// Roman and ASCII are one mode: their bytes are counted alike.
enum class Mode : uint8_t { kSingle, kKatakana, kPairs, kInvalid };

// Two bytes behind an ESC, and a third for one of the sequences. They are not
// counted.
Step readEscape(Reader& reader, Mode& mode, Tally& tally) {
  if (reader.left() < 3) return Step::kCut;
  const uint8_t second = reader.at[1];
  const uint8_t third = reader.at[2];
  if (second == '$' && third == '(') {
    if (reader.left() < 4) return Step::kCut;
    const bool isKnown = reader.at[3] == 'D';
    mode = isKnown ? Mode::kPairs : Mode::kInvalid;
    tally.bad += !isKnown;
    reader.at += 4;
    return Step::kRead;
  }
  if (second == '$' && (third == 'B' || third == '@')) {
    mode = Mode::kPairs;
  } else if (second == '(' && (third == 'J' || third == 'B')) {
    mode = Mode::kSingle;
  } else if (second == '(' && third == 'I') {
    mode = Mode::kKatakana;
  } else {
    mode = Mode::kInvalid;
  }
  reader.at += 3;
  return Step::kRead;
}

// A pair whose first byte is bad, a line end for one, uses two bytes as well.
Step readPair(Reader& reader, Tally& tally) {
  if (reader.left() < 2) return Step::kCut;
  const bool isGood = isPrintable(reader.at[0]) && isPrintable(reader.at[1]);
  tally.good += isGood;
  tally.bad += !isGood;
  reader.at += 2;
  return Step::kRead;
}

bool isGoodSingle(uint8_t byte, Mode mode) {
  const bool isLetter = mode == Mode::kKatakana ? isBetween(byte, 0xA1, 0xDF) : isPrintable(byte);
  return isLetter || byte == ' ' || byte == '\t';
}

// Reads on over good pairs, which come in runs.
void readGoodPairs(Reader& reader, Tally& tally, const uint8_t* endOfLeads) {
  const uint8_t* at = reader.at;
  while (endOfLeads - at >= static_cast<ptrdiff_t>(kBlock) &&
         areBetween<kFirstPrintable, kLastPrintable>(blockAt(at))) {
    at += kBlock;
  }
  tally.good += static_cast<uint32_t>(at - reader.at) / 2;
  reader.at = at;
}

// Passes over blocks without control characters and counts what is good in Roman. Text
// of other encodings is read to its end, too, for its line ends.
const uint8_t* countBlocks(const uint8_t* at, const uint8_t* endOfLeads, uint32_t& good) {
  for (; endOfLeads - at >= static_cast<ptrdiff_t>(kBlock); at += kBlock) {
    const uint64_t block = blockAt(at);
    if (((block | bytesFrom<' '>(block)) & kHighBits) != kHighBits) break;
    good += highBits(bytesOutside<' ', '~'>(block) ^ kHighBits);
  }
  return at;
}

// Reads on, in the modes of one byte, to what is more than a byte.
void readSingles(Reader& reader, Mode mode, Tally& tally, const uint8_t* endOfLeads) {
  uint32_t good = 0;
  const uint8_t* at = reader.at;
  if (mode == Mode::kSingle) at = countBlocks(at, endOfLeads, good);
  for (; at < endOfLeads; ++at) {
    const uint8_t byte = *at;
    if (byte == kEscape || byte == kCarriageReturn || byte == kLineFeed) break;
    good += isGoodSingle(byte, mode);
  }
  tally.good += good;
  tally.bad += static_cast<uint32_t>(at - reader.at) - good;
  reader.at = at;
}

// Behind an unknown escape sequence everything is bad, later ones included.
Step readInvalid(Reader& reader, Tally& tally) {
  ++tally.bad;
  ++reader.at;
  return Step::kRead;
}

Step readCharacter(Reader& reader, Mode& mode, Candidate& candidate, Tally& tally) {
  const uint8_t byte = *reader.at;
  if (mode == Mode::kInvalid) return readInvalid(reader, tally);
  if (byte == kEscape) return readEscape(reader, mode, tally);
  if (mode == Mode::kPairs) return readPair(reader, tally);
  // Single bytes have been read up to here.
  if (byte == kCarriageReturn) {
    readCarriageReturn(reader, candidate, tally);
  } else {
    readLineFeed(reader, candidate, tally);
  }
  return Step::kRead;
}

// What is carried of the one or two bytes that are left over in front of more text.
// A pair, and CR LF, is whole and is passed over; so is a CR before another byte.
void keepLeftOver(Reader& reader, Mode mode, Candidate& candidate, Tally& tally) {
  if (mode == Mode::kInvalid || reader.left() == 0) return;
  if (reader.left() == 2 && *reader.at != kEscape) {
    if (mode == Mode::kPairs) return;
    const bool isLineEnd = reader.at[0] == kCarriageReturn && reader.at[1] == kLineFeed;
    reader.at += isLineEnd ? 2 : 1;
    if (isLineEnd) return;
  }
  const bool isPair = mode == Mode::kPairs && *reader.at != kEscape;
  if (!isPair && *reader.at != kEscape && *reader.at != kCarriageReturn) return;
  keepCut(reader, candidate.carry, tally);
  candidate.carry.isPair = isPair;
}

}  // namespace

int32_t scoreIso2022Jp(Candidate& candidate, const Chunk& chunk, size_t start) {
  Reader reader(chunk, start);
  Tally tally;
  Mode mode = Mode::kSingle;
  const auto read = [&](Reader& from) { return readCharacter(from, mode, candidate, tally); };
  Step step = Step::kRead;
  if (candidate.carry.count != 0) {
    if (candidate.carry.isPair) mode = Mode::kPairs;
    step = resume(candidate.carry, reader, read);
    // Every chunk begins in Roman, even behind an escape sequence that two share.
    mode = Mode::kSingle;
  }
  const uint8_t* const endOfLeads = reader.endOfLeads(3);
  while (step == Step::kRead && reader.at < endOfLeads) {
    if (mode == Mode::kPairs) readGoodPairs(reader, tally, endOfLeads);
    if (mode == Mode::kSingle || mode == Mode::kKatakana)
      readSingles(reader, mode, tally, endOfLeads);
    if (tally.bad > candidate.mostBad) return 0;
    if (reader.at < endOfLeads) step = read(reader);
  }
  if (step == Step::kCut) {
    keepCut(reader, candidate.carry, tally);
  } else {
    keepLeftOver(reader, mode, candidate, tally);
  }
  return candidate.add(tally);
}

}  // namespace ksv::detect
