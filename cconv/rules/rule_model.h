// The rule model: charsets, the subsets that they are made of, and the indexes
// that stand beside the model's lists so that no look-up walks them.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "cconv/rules/code_table.h"
#include "cconv/rules/names.h"
#include "cconv/rules/rule_list.h"

namespace ksv {

enum class SubsetKind : uint16_t { kBase = 1, kDifference = 2, kUser = 3 };

struct CodeRange {
  uint32_t first;
  uint32_t last;  // inclusive; a single code has first = last
};

struct RangeSet {
  RuleList<CodeRange> ranges;
  // Stays 0 whatever the ranges are: the running minimum starts at 0.
  uint32_t low = 0;
  // The largest last code of a range; single codes do not raise it.
  uint32_t high = 0;
};

// One character set that charsets are built from.
struct SubsetDef {
  SubsetDef(std::string subsetName, SubsetKind subsetKind, uint16_t bytes);

  std::string name;  // as written in the rule file
  CharsetId id;
  SubsetKind kind;
  uint16_t bytesPerCode;
  std::string lang;
  RangeSet defined;
  CodeTable toUcs;    // the set's code to the UCS code
  CodeTable fromUcs;  // the UCS code to the set's code
  std::string basedon;
  uint16_t defStart = 0;   // kind kUser: first code and count of codes,
  uint16_t defNumber = 0;  // which map onto U+E000 and up

  uint32_t type() const { return static_cast<uint32_t>(kind); }
  bool isUser() const { return kind == SubsetKind::kUser; }

  // The share of a user-defined set in the Private Use Area, there and back; false
  // outside it.
  bool userCodeToUcs(uint32_t code, uint32_t& ucs) const {
    if (code < defStart || code - defStart >= defNumber) return false;
    ucs = kPrivateUseStart + (code - defStart);
    return true;
  }
  bool ucsToUserCode(uint32_t ucs, uint32_t& code) const {
    if (ucs < kPrivateUseStart || ucs - kPrivateUseStart >= defNumber) return false;
    code = defStart + (ucs - kPrivateUseStart);
    return true;
  }

 private:
  static constexpr uint32_t kPrivateUseStart = 0xE000;
};

// What a charset writes for a Unicode code.
struct EncodedCode {
  uint32_t code = 0;
  uint16_t sequenceLength = 0;  // non-zero: a destination table's sequence
  uint16_t member = 0;          // index of the member plus 1; 0: no member has it
};

// Remembers, for one charset, what the walk along its members found for a
// Unicode code. Filled code by code by whoever asks first; safe from any thread: pages are
// published zeroed, and an entry is a word that says all by itself (publication.h).
// At most 8.9 MB a charset, when all of Unicode is asked for.
class EncodedCodeCache {
 public:
  EncodedCodeCache() = default;
  ~EncodedCodeCache();
  EncodedCodeCache(const EncodedCodeCache&) = delete;
  EncodedCodeCache& operator=(const EncodedCodeCache&) = delete;

  bool find(uint32_t unicode, EncodedCode& found) const {
    const Page* page = pageOf(unicode);
    if (page == nullptr) return false;
    const uint64_t entry = (*page)[unicode & 0xFF].load(std::memory_order_relaxed);
    found.code = static_cast<uint32_t>(entry);
    found.sequenceLength = static_cast<uint16_t>(entry >> 32);
    found.member = static_cast<uint16_t>((entry >> 48) & 0x7FFF);
    return entry != 0;
  }

  // Does nothing when there is no memory, or for what does not fit an entry.
  void remember(uint32_t unicode, const EncodedCode& found);

 private:
  static constexpr uint32_t kCodes = 0x110000;
  static constexpr uint64_t kKnown = uint64_t{1} << 63;
  static constexpr uint32_t kFirstBeyond = 0x10000;
  using Page = std::array<std::atomic<uint64_t>, 256>;
  // Every charset has a cache, and few have characters beyond plane 0: of those pages
  // there is nothing until one is needed.
  using PagesBeyond = std::array<std::atomic<Page*>, (kCodes - kFirstBeyond) / 256>;

  const Page* pageOf(uint32_t unicode) const {
    if (unicode < kFirstBeyond) return pages_[unicode >> 8].load(std::memory_order_acquire);
    const PagesBeyond* beyond = pagesBeyond_.load(std::memory_order_acquire);
    if (beyond == nullptr || unicode >= kCodes) return nullptr;
    return (*beyond)[(unicode - kFirstBeyond) >> 8].load(std::memory_order_acquire);
  }

  std::array<std::atomic<Page*>, kFirstBeyond / 256> pages_ = {};
  std::atomic<PagesBeyond*> pagesBeyond_ = nullptr;
};

struct CodecEntry;

// One charset, as a rule file defines it.
struct CharsetDef {
  std::string name;  // lower-cased
  CharsetId id = 0;
  std::string construle;         // the encoder's name in the codec table
  std::string destrule;          // the decoder's
  RuleList<SubsetDef*> members;  // owned by the registry of subsets
  // One list for each base or difference member, in member order.
  RuleList<std::unique_ptr<TableList>> destTables;

  // Call once when all members are there.
  void buildIndexes();

  // Index of the first member with that id, -1 when there is none.
  int memberWithId(CharsetId subset) const {
    for (uint32_t slot = subset & idSlotMask_;; slot = (slot + 1) & idSlotMask_) {
      const int member = idSlots_[slot];
      if (member < 0 || members[static_cast<size_t>(member)]->id == subset) return member;
    }
  }

  const TableList* destTablesOf(size_t member) const {
    return member < destTables.count() ? destTables[member].get() : nullptr;
  }

  // The first member that is not user-defined, null when there is none.
  const SubsetDef* firstPlainMember() const { return firstPlainMember_; }
  bool hasUserMembers() const { return hasUserMembers_; }

  mutable std::unique_ptr<EncodedCodeCache> encodedCodes;
  // Where the conversion engine keeps what it found for the two names above; any
  // thread may fill them, with the same constants of the codec table.
  mutable std::atomic<const CodecEntry*> encoder = nullptr;
  mutable std::atomic<const CodecEntry*> decoder = nullptr;
  // Whether the tables from and to Unicode of all members are as they will stay: those
  // that have a file are loaded. Set by whoever finds it so, behind what makes it so: the
  // tables' own flags, which he has seen.
  mutable std::atomic<bool> encodingTablesAreReady = false;
  mutable std::atomic<bool> decodingTablesAreReady = false;

 private:
  std::vector<int32_t> idSlots_;  // open addressing by id, -1: free
  uint32_t idSlotMask_ = 0;
  const SubsetDef* firstPlainMember_ = nullptr;
  bool hasUserMembers_ = false;
};

}  // namespace ksv
