// What a packed charset directory says it holds. charsets/pack.py writes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace ksv {

// The texts and bytes lie in the packed file.
struct PackedCatalog {
  using Bytes = std::span<const uint8_t>;

  struct RuleFile {
    std::string_view name;
    Bytes content;
  };
  struct TableFile {
    std::string_view name;  // of its text
    uint32_t textSize;      // which that has as a file
    uint32_t lineCount;
    uint32_t linesInFront;  // of the derived ones
    uint32_t derivedLines;  // which the table by the first number gives
    Bytes records;          // the other lines, and which keys of that table are passed over
  };
  struct Group {
    std::string_view name;
    std::string_view language;
    uint16_t bytesPerCode;
    std::optional<uint32_t> table;
  };
  struct DestTable {
    uint32_t table;
    uint16_t bytesPerCode;
  };
  // Some that stand one behind the other.
  struct Range {
    uint32_t first = 0;
    uint32_t count = 0;
  };
  struct Member {
    uint32_t group;
    Range destTables;
  };
  struct Charset {
    std::string_view name;
    std::string_view codec;
    Range members;
  };

  std::vector<RuleFile> ruleFiles;    // by name
  std::vector<TableFile> tableFiles;  // in no order
  std::vector<Group> groups;
  std::vector<Charset> charsets;  // in the order in which their files are read
  std::vector<Member> members;    // of all charsets
  std::vector<DestTable> destTables;

  // None when the stream, or anything it points to in the data, is not as it should be.
  static std::optional<PackedCatalog> read(Bytes stream, Bytes data);

  std::span<const Member> membersOf(const Charset& charset) const {
    return std::span(members).subspan(charset.members.first, charset.members.count);
  }
  std::span<const DestTable> destTablesOf(const Member& member) const {
    return std::span(destTables).subspan(member.destTables.first, member.destTables.count);
  }

  const RuleFile* findRuleFile(std::string_view name) const;
  std::optional<uint32_t> findTableFile(std::string_view name) const;
};

// A stream of numbers of seven bits a byte. Behind its end, and behind a number that is none,
// it gives zeroes and is not sound any more.
class PackedStream {
 public:
  explicit PackedStream(PackedCatalog::Bytes bytes) : bytes_(bytes) {}

  bool isSound() const { return isSound_; }
  bool isAtEnd() const { return at_ == bytes_.size(); }
  size_t bytesLeft() const { return bytes_.size() - at_; }

  uint32_t number() {
    const uint64_t value = rawNumber();
    if (value > UINT32_MAX) isSound_ = false;
    return isSound_ ? static_cast<uint32_t>(value) : 0;
  }

  // The distance to another number: 0, -1, 1, -2, and so on.
  uint32_t step() {
    const uint64_t value = rawNumber();
    return static_cast<uint32_t>(value / 2 ^ (0 - (value & 1)));
  }

  std::string_view text() {
    const PackedCatalog::Bytes found = bytes(number());
    return {reinterpret_cast<const char*>(found.data()), found.size()};
  }

 private:
  static constexpr unsigned kMostBits = 35;

  uint64_t rawNumber() {
    uint64_t value = 0;
    for (unsigned shift = 0; shift < kMostBits && at_ < bytes_.size(); shift += 7) {
      const uint8_t byte = bytes_[at_++];
      value |= uint64_t{byte & 0x7Fu} << shift;
      if (byte < 0x80) return value;
    }
    isSound_ = false;
    return 0;
  }

  PackedCatalog::Bytes bytes(uint32_t count) {
    if (count > bytes_.size() - at_) {
      isSound_ = false;
      return {};
    }
    at_ += count;
    return bytes_.subspan(at_ - count, count);
  }

  PackedCatalog::Bytes bytes_;
  size_t at_ = 0;
  bool isSound_ = true;
};

// Gives each of so many lines to take(first, second), in their order, until it says false. False
// when the records are not as many.
template <class Take>
bool takeRecords(PackedStream& stream, uint32_t count, Take take) {
  uint32_t first = 0;
  uint32_t second = 0;
  uint32_t taken = 0;
  while (taken < count) {
    first += stream.step();
    second += stream.step();
    const uint32_t following = stream.number();
    if (!stream.isSound() || following >= count - taken) return false;
    taken += following + 1;
    for (uint32_t i = 0;; ++i, ++first, ++second) {
      if (!take(first, second)) return true;
      if (i == following) break;
    }
  }
  return true;
}

}  // namespace ksv
