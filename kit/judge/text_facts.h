// What can be counted of a text without knowing its charset.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ksv_kit::judge {

class TextFacts {
 public:
  void take(const uint8_t* bytes, size_t length);

  uint64_t size() const { return size_; }
  // Bytes that are ASCII's, line ends in it, and control codes that texts do not have.
  bool isAscii() const { return isAscii_; }
  uint64_t lineFeeds() const { return lineFeeds_; }
  uint64_t carriageReturns() const { return carriageReturns_; }
  uint64_t pairsOfBoth() const { return pairsOfBoth_; }
  uint64_t oddControls() const { return oddControls_; }
  // By the place in a unit of four bytes.
  uint64_t nuls(size_t place) const { return nuls_[place]; }
  uint64_t nuls() const { return nuls_[0] + nuls_[1] + nuls_[2] + nuls_[3]; }
  bool hasNuls() const { return nuls() != 0; }

  // The first byte that cannot be UTF-8; a character that may yet be completed is none.
  bool isUtf8() const { return utf8InvalidAt_ == kNone; }
  uint64_t utf8InvalidAt() const { return utf8InvalidAt_; }
  // Whether the text so far ends inside a character of UTF-8, and where it begins.
  size_t utf8Waiting() const { return waitingCount_; }

  static constexpr uint64_t kNone = UINT64_MAX;

 private:
  void takeBlock(const uint8_t* block);
  void takeRest(const uint8_t* bytes, size_t length);
  void countControls(const uint8_t* bytes, size_t length);
  void checkUtf8(const uint8_t* bytes, size_t length);
  size_t completeWaiting(const uint8_t* bytes, size_t length);

  uint64_t size_ = 0;
  bool isAscii_ = true;
  uint8_t last_ = 0;
  uint64_t lineFeeds_ = 0;
  uint64_t carriageReturns_ = 0;
  uint64_t pairsOfBoth_ = 0;
  uint64_t oddControls_ = 0;
  std::array<uint64_t, 4> nuls_{};
  uint64_t utf8InvalidAt_ = kNone;
  std::array<uint8_t, 4> waiting_{};
  size_t waitingCount_ = 0;
};

}  // namespace ksv_kit::judge
