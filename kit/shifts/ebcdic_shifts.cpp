#include "kit/shifts/ebcdic_shifts.h"

#include <algorithm>

#include "kit/shifts/unit_filter.h"

namespace ksv_kit {
namespace {

constexpr uint8_t kToPairs = 0x0E;
constexpr uint8_t kToSingles = 0x0F;
constexpr uint8_t kPairLead = 0xFE;
constexpr uint8_t kSpace = 0x40;

constexpr bool isHalf(uint8_t byte) { return byte > kSpace && byte < 0xFF; }
// The space is the one pair with bytes of 40.
constexpr bool mayLead(uint8_t byte) { return isHalf(byte) || byte == kSpace; }
constexpr bool isPair(uint8_t first, uint8_t second) {
  return first == kSpace ? second == kSpace : isHalf(first) && isHalf(second);
}
constexpr bool isSingle(uint8_t byte) {
  return byte != kToPairs && byte != kToSingles && byte != kPairLead;
}

size_t singlesAtFront(std::span<const uint8_t> bytes) {
  const auto end = std::find_if_not(bytes.begin(), bytes.end(), isSingle);
  return static_cast<size_t>(end - bytes.begin());
}

class EbcdicReader : public UnitFilter {
 private:
  // A shift to what holds already says nothing, and a text may end shifted out.
  Unit take(Bytes bytes) override {
    const uint8_t first = bytes[0];
    if (first == kToPairs || first == kToSingles) {
      isShifted_ = first == kToPairs;
      return whole(1);
    }
    return isShifted_ ? takePair(bytes) : takeSingles(bytes);
  }

  Unit takeSingles(Bytes bytes) {
    const size_t length = singlesAtFront(bytes);
    if (length == 0) return refused(1);
    write(bytes.first(length), 0);
    return whole(length);
  }

  Unit takePair(Bytes bytes) {
    if (!mayLead(bytes[0])) return refused(1);
    if (bytes.size() < 2) return cut();
    if (!isPair(bytes[0], bytes[1])) return refused(1);
    insert({&kPairLead, 1});
    write(bytes.first(2), 0);
    return whole(2);
  }

  bool isShifted_ = false;
};

class EbcdicWriter : public UnitFilter {
 private:
  Unit take(Bytes bytes) override {
    return bytes[0] == kPairLead ? takePair(bytes) : takeSingles(bytes);
  }

  void close() override { shift(false); }

  Unit takeSingles(Bytes bytes) {
    const size_t length = singlesAtFront(bytes);
    if (length == 0) return refused(1);
    shift(false);
    write(bytes.first(length), 0);
    return whole(length);
  }

  Unit takePair(Bytes bytes) {
    if (bytes.size() > 1 && !mayLead(bytes[1])) return refused(1);
    if (bytes.size() < 3) return cut();
    if (!isPair(bytes[1], bytes[2])) return refused(1);
    shift(true);
    write(bytes.subspan(1, 2), 1);
    return whole(3);
  }

  void shift(bool toPairs) {
    if (isShifted_ == toPairs) return;
    insert({toPairs ? &kToPairs : &kToSingles, 1});
    isShifted_ = toPairs;
  }

  bool isShifted_ = false;
};

}  // namespace

std::unique_ptr<ShiftFilter> ebcdicReadingFilter() { return std::make_unique<EbcdicReader>(); }
std::unique_ptr<ShiftFilter> ebcdicWritingFilter() { return std::make_unique<EbcdicWriter>(); }

}  // namespace ksv_kit
