// Code tables: sparse maps from a 32-bit key to a 32-bit value.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "cconv/rules/code_store.h"
#include "cconv/rules/provisional_answers.h"
#include "cconv/rules/rule_list.h"
#include "cconv/rules/text_encoding.h"

namespace ksv {

// Which keys the blocks of a table cover. A table is made of blocks of equal
// size; a new one begins at the first key that none covers yet, not at a
// multiple of the size. What it covers decides only two things, both of which
// callers can see: whether key 0 exists, and when the list of blocks is full.
class BlockCoverage {
 public:
  bool covers(uint32_t key);
  bool coversZero() const { return coversZero_; }
  // False when there are 65,535 blocks already. A block whose end passes 2^32
  // counts but covers nothing, because its end wraps to a small number.
  bool addBlock(uint32_t first, uint32_t size);
  uint32_t blockCount() const { return blockCount_; }

 private:
  std::map<uint32_t, uint32_t> ranges_;  // first to end (exclusive), merged
  uint32_t lastFirst_ = 0;               // the range found last: keys come in order
  uint32_t lastEnd_ = 0;
  uint32_t blockCount_ = 0;
  bool coversZero_ = false;
};

struct CodeTable {
  enum KeyColumn : uint32_t { kSecondColumn = 0, kFirstColumn = 1 };
  // How far its file has come, whatever that held.
  enum class Reading : uint8_t {
    kNotRead,
    kReadAhead,  // to know what it holds: nobody has asked for it yet
    kAskedFor,
    kAskedForAgain  // an empty table answers nothing any more
  };
  // What readers may rely on.
  enum class State : uint8_t {
    kNotLoaded,
    kUnread,         // the same, because a system error has left nothing of it
    kLoaded,         // set last when a table is filled: whoever sees it sees the values too
    kLoadedCutShort  // nobody looks at the values, which may be read anew
  };

  CodeTable(KeyColumn column, uint16_t bytes) : keyColumn(column), valueBytes(bytes) {}
  ~CodeTable() { setState(State::kNotLoaded); }

  KeyColumn keyColumn;  // which column of the table file is the key
  uint16_t valueBytes;  // bytes kept of a value; bytes above are lost
  uint32_t low = 0;     // smallest and largest key inserted
  uint32_t high = 0;
  bool hasEntries = false;
  std::string fileName;  // empty: no file, never loaded
  TextEncodingKind sourceEncoding = TextEncodingKind::kUnknown;
  bool sourceBigEndian = false;
  Reading reading = Reading::kNotRead;  // looked at under the lock only
  bool isCutShort = false;  // by a system error, which has been noted: read again when asked for
  std::atomic<State> state = State::kNotLoaded;
  BlockCoverage coverage;
  CodeStore values;

  bool isLoaded() const {
    const State now = state.load(std::memory_order_acquire);
    return now == State::kLoaded || now == State::kLoadedCutShort;
  }
  // Whether it is loaded, and nothing is missing.
  bool isWhole() const { return state.load(std::memory_order_acquire) == State::kLoaded; }
  // Whether a system error keeps it from answering as its file would have it.
  bool waitsForSystem() const { return waitsForSystem(state.load(std::memory_order_acquire)); }
  void setState(State next);

  // How the table answers: a code for itself, without a file always and else until it is
  // loaded; or with what it has stored; or, cut short, with nothing.
  enum class Answers { kItself, kStored, kNothing };
  Answers answers() const {
    if (fileName.empty()) return Answers::kItself;
    const State now = state.load(std::memory_order_acquire);
    if (now == State::kLoaded) return Answers::kStored;
    ProvisionalAnswers::note();
    return now == State::kLoadedCutShort ? Answers::kNothing : Answers::kItself;
  }
  bool isIdentity() const { return answers() == Answers::kItself; }
  // The stored value, 0 outside the bounds, of a table that answers with what it has stored.
  uint32_t find(uint32_t key) const { return key < low || key > high ? 0 : values.find(key); }

 private:
  static bool waitsForSystem(State state) {
    return state == State::kUnread || state == State::kLoadedCutShort;
  }
};

// How many tables of the process wait for the system.
extern constinit std::atomic<uint32_t> tablesThatWait;
inline bool anyTableWaits() { return tablesThatWait.load(std::memory_order_relaxed) != 0; }

constexpr uint32_t kDefaultBlockSize = 4096;

// Stores value under key in a block of blockSize keys (made when no block covers
// the key yet). False when no block can be made.
bool tableInsert(CodeTable& table, uint32_t key, uint32_t value, uint32_t blockSize);

// The same for a line of the table's file, of which one number is the key.
inline bool insertPair(CodeTable& table, uint32_t first, uint32_t second, uint32_t blockSize) {
  const bool firstIsKey = table.keyColumn == CodeTable::kFirstColumn;
  return tableInsert(table, firstIsKey ? first : second, firstIsKey ? second : first, blockSize);
}

// The mapping of key. A table that is not loaded maps every key to itself; a
// stored 0 is no mapping, except for key 0.
bool tableLookup(const CodeTable& table, uint32_t key, uint32_t& value);

using TableList = RuleList<std::unique_ptr<CodeTable>>;

}  // namespace ksv
