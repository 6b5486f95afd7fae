#include "kit/shifts/korean_shifts.h"

#include "kit/shifts/iso_2022_units.h"
#include "kit/shifts/unit_filter.h"

namespace ksv_kit {
namespace {

using namespace iso_2022;

constexpr std::string_view kHeader = "\x1B$)C";

class KoreanReader : public UnitFilter {
 private:
  // The header says nothing but that this is Korean, so it may be missing, or stand elsewhere and
  // again, as others read it too.
  Unit take(Bytes bytes) override {
    const uint8_t first = bytes[0];
    if (first == kEscape) return takeEscape(bytes);
    if (first == kShiftOut || first == kShiftIn) {
      isShifted_ = first == kShiftOut;
      return whole(1);
    }
    // A line that was not shifted back ends so.
    if (isLineEnd(first)) isShifted_ = false;
    return isShifted_ ? takePair(bytes) : takeAscii(bytes);
  }

  static Unit takeEscape(Bytes bytes) {
    const Escape escape = matches(bytes, kHeader);
    if (escape == Escape::kKnown) return whole(kHeader.size());
    if (escape == Escape::kCut) return cut();
    const size_t length = lengthOfUnknown(bytes);
    return length == 0 ? cut() : refused(length);
  }

  Unit takeAscii(Bytes bytes) {
    const size_t length = asciiAtFront(bytes);
    if (length == 0) return refused(1);
    write(bytes.first(length), 0);
    return whole(length);
  }

  Unit takePair(Bytes bytes) {
    if (!isLowHalf(bytes[0])) return refused(1);
    if (bytes.size() < 2) return cut();
    if (!isLowHalf(bytes[1])) return refused(1);
    const uint8_t pair[] = {static_cast<uint8_t>(bytes[0] | 0x80),
                            static_cast<uint8_t>(bytes[1] | 0x80)};
    write(pair, 0);
    return whole(2);
  }

  bool isShifted_ = false;
};

class KoreanWriter : public UnitFilter {
 private:
  Unit take(Bytes bytes) override {
    return isHighHalf(bytes[0]) ? takePair(bytes) : takeAscii(bytes);
  }

  void close() override {
    if (isShifted_) shift(false);
  }

  Unit takeAscii(Bytes bytes) {
    const size_t length = asciiAtFront(bytes);
    if (length == 0) return refused(1);
    shift(false);
    write(bytes.first(length), 0);
    return whole(length);
  }

  Unit takePair(Bytes bytes) {
    if (bytes.size() < 2) return cut();
    if (!isHighHalf(bytes[1])) return refused(1);
    shift(true);
    const uint8_t pair[] = {static_cast<uint8_t>(bytes[0] & 0x7F),
                            static_cast<uint8_t>(bytes[1] & 0x7F)};
    write(pair, 0);
    return whole(2);
  }

  // The header has to stand in front of everything, where it is not known yet whether the text
  // has Korean characters.
  void shift(bool toPairs) {
    if (!hasHeader_) insert(kHeader);
    hasHeader_ = true;
    if (isShifted_ == toPairs) return;
    insert({toPairs ? &kShiftOut : &kShiftIn, 1});
    isShifted_ = toPairs;
  }

  bool hasHeader_ = false;
  bool isShifted_ = false;
};

}  // namespace

std::unique_ptr<ShiftFilter> koreanReadingFilter() { return std::make_unique<KoreanReader>(); }
std::unique_ptr<ShiftFilter> koreanWritingFilter() { return std::make_unique<KoreanWriter>(); }

}  // namespace ksv_kit
