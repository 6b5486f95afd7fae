// The scorers once more, byte by byte and without regard to speed. They share no
// function and no table with the library.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ksv_detect_tests {

using Bytes = std::vector<uint8_t>;

// One candidate encoding and the chunk that it reads.
struct SlowRecord {
  Bytes data;
  size_t position = 0;
  bool more = false;

  bool cr = false;
  bool lf = false;
  bool crlf = false;
  bool lineSeparator = false;
  bool paragraphSeparator = false;
  Bytes carried;
  bool carriedInPairs = false;
  int64_t goodTotal = 0;
  int64_t badTotal = 0;

  int64_t good = 0;
  int64_t bad = 0;

  // One byte, if at least so many are there; -1 if not.
  int read(size_t atLeast = 1);
  void unread(size_t count = 1) { position -= count; }
  size_t left() const { return data.size() - position; }

  void setCr() { cr = cr || (!crlf && !lf); }
  void setLf() { lf = lf || (!crlf && !cr); }
  void setCrlf() { crlf = crlf || (!cr && !lf); }

  void add() {
    goodTotal += good;
    badTotal += bad;
  }
  int64_t score() const { return goodTotal == 0 ? 0 : goodTotal * 100 / (goodTotal + badTotal); }
  // The flags of the three line ends, as a result has them.
  uint32_t lineFlags() const {
    return (crlf ? 0x04000000u : 0) | (lf ? 0x08000000u : 0) | (cr ? 0x10000000u : 0);
  }
  uint32_t separatorFlags() const {
    return (lineSeparator ? 0x01000000u : 0) | (paragraphSeparator ? 0x02000000u : 0);
  }
};

// The scorers by the names "ASCII", "Shift_JIS", "Shift_JIS by code", "EUC-JP",
// "EUC-JP-FIX", "GBK", "Big5", "Korean", "ISO-2022-JP", "UTF-8", "UTF-16BE",
// "UTF-16LE", "UCS-4BE" and "UCS-4LE". Returns the score.
int64_t slowScore(const std::string& name, SlowRecord& record);

// The good trail bytes of each lead byte of a byte-oriented encoding.
const std::map<uint32_t, std::set<uint32_t>>& trailsOf(const std::string& name);

}  // namespace ksv_detect_tests
