#include "cconv/engine/byte_order_mark.h"

#include <cstring>

#include "cconv/engine/converter.h"

namespace ksv {
namespace {

constexpr uint8_t kBigEndianMark[] = {0xFE, 0xFF};
constexpr uint8_t kLittleEndianMark[] = {0xFF, 0xFE};
constexpr uint8_t kBigEndianUcs4Mark[] = {0x00, 0x00, 0xFE, 0xFF};
constexpr uint8_t kLittleEndianUcs4Mark[] = {0xFF, 0xFE, 0x00, 0x00};
constexpr uint8_t kUtf8Mark[] = {0xEF, 0xBB, 0xBF};

template <size_t kSize>
bool startsWith(const ConverterRecord& record, const uint8_t (&mark)[kSize]) {
  return std::memcmp(record.input + record.inputPosition, mark, kSize) == 0;
}

MarkResult skipped(ConverterRecord& record, int32_t size, bool bigEndian) {
  record.inputPosition += size;
  record.inputBigEndian = bigEndian;
  record.status = KSV_STATUS_WRITTEN;
  return MarkResult::kSkipped;
}

// Handles what all forms share; find tells what the first bytes say.
template <typename Find>
MarkResult skipMark(ConverterRecord& record, int32_t size, Find find) {
  if (record.detectByteOrderMark == 0) return MarkResult::kNone;
  if (bytesLeft(record) < size) {
    record.status = KSV_STATUS_INCOMPLETE;
    return MarkResult::kIncomplete;
  }
  record.detectByteOrderMark = 0;
  return find();
}

}  // namespace

MarkResult skipUcs2Mark(ConverterRecord& record) {
  return skipMark(record, 2, [&] {
    if (startsWith(record, kBigEndianMark)) return skipped(record, 2, true);
    if (startsWith(record, kLittleEndianMark)) return skipped(record, 2, false);
    return MarkResult::kNone;
  });
}

// Looser than for UCS-2, and meant so: one byte of 0xFE or 0xFF makes the pair a
// mark, and only a first byte of 0xFE makes the input big-endian.
MarkResult skipUtf16Mark(ConverterRecord& record) {
  return skipMark(record, 2, [&] {
    const uint8_t first = record.input[record.inputPosition];
    const uint8_t second = record.input[record.inputPosition + 1];
    if (first < 0xFE && second < 0xFE) return MarkResult::kNone;
    return skipped(record, 2, first == 0xFE);
  });
}

MarkResult skipUcs4Mark(ConverterRecord& record) {
  return skipMark(record, 4, [&] {
    if (startsWith(record, kLittleEndianUcs4Mark)) return skipped(record, 4, false);
    if (startsWith(record, kBigEndianUcs4Mark)) return skipped(record, 4, true);
    return MarkResult::kNone;
  });
}

MarkResult skipUtf8Mark(ConverterRecord& record) {
  return skipMark(record, 3, [&] {
    return startsWith(record, kUtf8Mark) ? skipped(record, 3, true) : MarkResult::kNone;
  });
}

}  // namespace ksv
