#include "kit/shifts/chinese_shifts.h"

#include <optional>

#include "kit/shifts/iso_2022_units.h"
#include "kit/shifts/unit_filter.h"

namespace ksv_kit {
namespace {

using namespace iso_2022;

constexpr std::string_view kDesignateGb2312 = "\x1B$)A";
constexpr std::string_view kDesignatePlane1 = "\x1B$)G";
constexpr std::string_view kDesignatePlane2 = "\x1B$*H";
constexpr std::string_view kSingleShift = "\x1BN";
// In front of the planes of CNS 11643 in the stateless form.
constexpr uint8_t kPlaneLead = 0x8E;
constexpr uint8_t kPlane1 = 0xA1;
constexpr uint8_t kPlane2 = 0xA2;

// What 0E shifts out to.
enum class ShiftedOut { kNothing, kGb2312, kPlane1 };

struct Designations {
  ShiftedOut shiftedOut = ShiftedOut::kNothing;
  bool hasPlane2 = false;

  void forget() { *this = {}; }
};

bool hasLineEnd(std::span<const uint8_t> bytes) {
  return std::any_of(bytes.begin(), bytes.end(), isLineEnd);
}

bool hasLineFeed(std::span<const uint8_t> bytes) {
  return std::find(bytes.begin(), bytes.end(), '\n') != bytes.end();
}

class ChineseReader : public UnitFilter {
 private:
  Unit take(Bytes bytes) override {
    const uint8_t first = bytes[0];
    if (first == kEscape) return takeEscape(bytes);
    if (first == kShiftOut || first == kShiftIn) return takeShift(first == kShiftOut);
    // A line that was not shifted back ends so.
    if (isLineEnd(first)) isShifted_ = false;
    if (!isShifted_) return takeAscii(bytes);
    return designated_.shiftedOut == ShiftedOut::kGb2312 ? takePair(bytes, 0, {})
                                                         : takePair(bytes, 0, kPlane1);
  }

  Unit takeShift(bool toPairs) {
    if (toPairs && designated_.shiftedOut == ShiftedOut::kNothing) return refused(1);
    isShifted_ = toPairs;
    return whole(1);
  }

  Unit takeEscape(Bytes bytes) {
    if (const std::optional<Unit> unit = takeDesignation(bytes)) return *unit;
    const Escape shift = matches(bytes, kSingleShift);
    if (shift == Escape::kKnown && designated_.hasPlane2)
      return takePair(bytes, kSingleShift.size(), kPlane2);
    const size_t length = lengthOfUnknown(bytes);
    return length == 0 ? cut() : refused(length);
  }

  // Nothing when it is another escape sequence.
  std::optional<Unit> takeDesignation(Bytes bytes) {
    for (const std::string_view sequence : {kDesignateGb2312, kDesignatePlane1, kDesignatePlane2}) {
      const Escape escape = matches(bytes, sequence);
      if (escape == Escape::kCut) return cut();
      if (escape == Escape::kNone) continue;
      if (sequence == kDesignatePlane2)
        designated_.hasPlane2 = true;
      else
        designated_.shiftedOut =
            sequence == kDesignateGb2312 ? ShiftedOut::kGb2312 : ShiftedOut::kPlane1;
      return whole(sequence.size());
    }
    return std::nullopt;
  }

  Unit takeAscii(Bytes bytes) {
    const size_t length = asciiAtFront(bytes);
    if (length == 0) return refused(1);
    const Bytes run = bytes.first(length);
    // Some writers do not count a lone CR as the end of a line.
    if (hasLineFeed(run)) designated_.forget();
    write(run, 0);
    return whole(length);
  }

  // A pair behind so many bytes; its plane is nothing for GB 2312.
  Unit takePair(Bytes bytes, size_t behind, std::optional<uint8_t> plane) {
    const size_t refusedLength = behind == 0 ? 1 : behind;
    for (size_t place = behind; place < behind + 2; ++place) {
      if (bytes.size() == place) return cut();
      if (!isLowHalf(bytes[place])) return refused(refusedLength);
    }
    if (plane) {
      const uint8_t lead[] = {kPlaneLead, *plane};
      insert(lead);
    }
    const uint8_t pair[] = {static_cast<uint8_t>(bytes[behind] | 0x80),
                            static_cast<uint8_t>(bytes[behind + 1] | 0x80)};
    write(pair, behind);
    return whole(behind + 2);
  }

  Designations designated_;
  bool isShifted_ = false;
};

class ChineseWriter : public UnitFilter {
 private:
  Unit take(Bytes bytes) override {
    if (bytes[0] == kPlaneLead) return takePlane(bytes);
    return isHighHalf(bytes[0]) ? takePair(bytes, 0, ShiftedOut::kGb2312) : takeAscii(bytes);
  }

  void close() override { shift(false); }

  Unit takeAscii(Bytes bytes) {
    const size_t length = asciiAtFront(bytes);
    if (length == 0) return refused(1);
    shift(false);
    const Bytes run = bytes.first(length);
    write(run, 0);
    // Some readers count a lone CR as the end of a line.
    if (hasLineEnd(run)) designated_.forget();
    return whole(length);
  }

  Unit takePlane(Bytes bytes) {
    constexpr size_t kBehind = 2;
    if (bytes.size() < kBehind) return cut();
    if (bytes[1] == kPlane1) return takePair(bytes, kBehind, ShiftedOut::kPlane1);
    if (bytes[1] == kPlane2) return takePair(bytes, kBehind, ShiftedOut::kNothing);
    return refused(1);
  }

  // A pair behind so many bytes, of what is shifted out to; nothing for plane 2.
  Unit takePair(Bytes bytes, size_t behind, ShiftedOut set) {
    for (size_t place = behind; place < behind + 2; ++place) {
      if (bytes.size() == place) return cut();
      if (!isHighHalf(bytes[place])) return refused(1);
    }
    if (set == ShiftedOut::kNothing)
      shiftToPlane2();
    else
      shiftOutTo(set);
    const uint8_t pair[] = {static_cast<uint8_t>(bytes[behind] & 0x7F),
                            static_cast<uint8_t>(bytes[behind + 1] & 0x7F)};
    write(pair, behind);
    return whole(behind + 2);
  }

  // Not every reader takes a designation for what is shifted out to at once, so one that changes
  // stands between shifts.
  void shiftOutTo(ShiftedOut set) {
    if (designated_.shiftedOut != set) {
      shift(false);
      insert(set == ShiftedOut::kGb2312 ? kDesignateGb2312 : kDesignatePlane1);
      designated_.shiftedOut = set;
    }
    shift(true);
  }

  void shiftToPlane2() {
    if (!designated_.hasPlane2) insert(kDesignatePlane2);
    designated_.hasPlane2 = true;
    insert(kSingleShift);
  }

  void shift(bool toPairs) {
    if (isShifted_ == toPairs) return;
    insert({toPairs ? &kShiftOut : &kShiftIn, 1});
    isShifted_ = toPairs;
  }

  Designations designated_;
  bool isShifted_ = false;
};

}  // namespace

std::unique_ptr<ShiftFilter> chineseReadingFilter() { return std::make_unique<ChineseReader>(); }
std::unique_ptr<ShiftFilter> chineseWritingFilter() { return std::make_unique<ChineseWriter>(); }

}  // namespace ksv_kit
