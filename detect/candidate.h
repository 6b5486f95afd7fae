// What a scorer reads and what it keeps: the layer that all scorers share.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ksv_detect.h"

namespace ksv::detect {

constexpr uint8_t kLineFeed = '\n';
constexpr uint8_t kCarriageReturn = '\r';
constexpr uint8_t kEscape = 0x1B;

constexpr bool isBetween(uint32_t value, uint32_t first, uint32_t last) {
  return value >= first && value <= last;
}

constexpr uint8_t kFirstPrintable = 0x21;
constexpr uint8_t kLastPrintable = 0x7E;

constexpr bool isPrintable(uint8_t byte) {
  return isBetween(byte, kFirstPrintable, kLastPrintable);
}

// What several encodings read alike in a chunk, from the place where the first of them
// came by: so it is read once.
struct SharedRun {
  uint32_t encodings = 0;  // KSV_TEXT_ bits of those that share it
  const uint8_t* from = nullptr;
  const uint8_t* to = nullptr;
  uint32_t good = 0;  // all characters are
  uint32_t lineEnd = 0;
};

// A piece of a file. It is read in place.
struct Chunk {
  const uint8_t* data = nullptr;
  size_t length = 0;
  bool moreFollows = false;     // the file goes on behind it
  SharedRun* shared = nullptr;  // where scorers of pairs may look and leave what they read
};

// The bytes of a character that the end of a chunk has cut, for the next one.
struct Carry {
  uint8_t bytes[3] = {};
  uint8_t count = 0;
  bool isPair = false;  // the first byte of a pair of ISO-2022-JP
};

// Characters of one chunk.
struct Tally {
  uint32_t good = 0;
  uint32_t bad = 0;
};

// One encoding that a text may be in, zeroed before the first chunk. Everything
// stays from chunk to chunk.
struct Candidate {
  uint32_t good = 0;
  uint32_t bad = 0;
  uint32_t lineEnd = 0;     // KSV_TEXT_CRLF, KSV_TEXT_LF or KSV_TEXT_CR
  uint32_t separators = 0;  // KSV_TEXT_LINE_SEPARATOR, KSV_TEXT_PARAGRAPH_SEPARATOR
  Carry carry;
  // A scorer may give up, with score 0, a text with more bad characters than that.
  uint32_t mostBad = UINT32_MAX;

  // Only the first convention that a text has is kept.
  void noteLineEnd(uint32_t flag) {
    if (lineEnd == 0) lineEnd = flag;
  }

  // The percentage of good characters, cut off to a whole number.
  int32_t score() const {
    if (good == 0) return 0;
    return static_cast<int32_t>(uint64_t{good} * 100 / (uint64_t{good} + bad));
  }

  int32_t add(const Tally& tally) {
    good += tally.good;
    bad += tally.bad;
    return score();
  }

  // A chunk without a good character says nothing.
  int32_t addIfGood(const Tally& tally) { return tally.good == 0 ? score() : add(tally); }
};

// Where a scorer stands in a chunk.
struct Reader {
  const uint8_t* at;
  const uint8_t* end;
  bool moreFollows;

  Reader(const Chunk& chunk, size_t start)
      : at(chunk.data + start), end(chunk.data + chunk.length), moreFollows(chunk.moreFollows) {}
  Reader(const uint8_t* from, const uint8_t* to, bool more)
      : at(from), end(to), moreFollows(more) {}

  size_t left() const { return static_cast<size_t>(end - at); }

  // Where characters end to begin. In front of more text, a character begins only
  // where bytesNeeded are left; the last bytes of a chunk are looked at for what has
  // to be carried and are not counted, even where they are whole characters.
  const uint8_t* endOfLeads(size_t bytesNeeded) const {
    if (!moreFollows) return end;
    return left() < bytesNeeded ? at : end - (bytesNeeded - 1);
  }
};

// Reads a CR and the LF that may follow it.
inline void readCarriageReturn(Reader& reader, Candidate& candidate, Tally& tally) {
  ++tally.good;
  ++reader.at;
  if (reader.at == reader.end) {
    if (!reader.moreFollows) candidate.noteLineEnd(KSV_TEXT_CR);
  } else if (*reader.at == kLineFeed) {
    ++tally.good;
    ++reader.at;
    candidate.noteLineEnd(KSV_TEXT_CRLF);
  } else {
    candidate.noteLineEnd(KSV_TEXT_CR);
  }
}

inline void readLineFeed(Reader& reader, Candidate& candidate, Tally& tally) {
  ++tally.good;
  ++reader.at;
  candidate.noteLineEnd(KSV_TEXT_LF);
}

// How reading one character ended.
enum class Step { kRead, kStopped, kCut };

// Reads the character whose first bytes were carried, the rest of it from the chunk.
// Those bytes and the chunk's first are put together for it; readCharacter(reader)
// returns a Step. kCut: the file ends inside it.
template <class ReadCharacter>
Step resume(Carry& carry, Reader& reader, ReadCharacter readCharacter) {
  constexpr size_t kMostMissing = 3;  // an ESC lacks three bytes
  uint8_t joined[sizeof carry.bytes + kMostMissing];
  size_t length = 0;
  for (; length < carry.count; ++length) joined[length] = carry.bytes[length];
  const size_t carried = length;
  for (size_t i = 0; i < kMostMissing && i < reader.left(); ++i) joined[length++] = reader.at[i];
  carry = {};

  const bool isAll = length - carried == reader.left();
  Reader character(joined, joined + length, reader.moreFollows || !isAll);
  const Step step = readCharacter(character);
  if (step == Step::kRead) reader.at += static_cast<size_t>(character.at - joined) - carried;
  if (step == Step::kCut) reader.at = reader.end;
  return step;
}

// Keeps the rest of the chunk for the next one, or, when there is none, sets the
// good characters of this one to naught: so a file that ends inside a character is
// told apart.
inline void keepCut(Reader& reader, Carry& carry, Tally& tally) {
  if (reader.moreFollows) {
    carry = {};
    while (reader.at < reader.end) carry.bytes[carry.count++] = *reader.at++;
  } else {
    tally.good = 0;
    reader.at = reader.end;
  }
}

}  // namespace ksv::detect
