// The second half of every encoder: writing the output code and the second code
// behind it as units of the target.
//
// A unit writer takes the record, a code and the unit's width in bytes. It
// returns true with status 21, or false with status 22 (no room) or 23 (the code
// cannot be written). Codecs with a form of their own bring their own; the
// others use plainUnit behind a transform of the code.
#pragma once

#include <cstdint>

#include "cconv/engine/converter.h"

namespace ksv {

constexpr uint32_t kCarriageReturn = 13;
constexpr uint32_t kLineFeed = 10;

inline bool hasRoom(const ConverterRecord& record, uint32_t bytes) {
  return static_cast<int64_t>(record.outputCapacity) - record.outputPosition >= int64_t{bytes};
}

inline bool refuse(ConverterRecord& record, uint32_t status) {
  record.status = status;
  return false;
}

inline bool unitWritten(ConverterRecord& record) {
  countOneMore(record.unitsWritten);
  record.status = KSV_STATUS_WRITTEN;
  return true;
}

// Bytes of a code in a unit of any width, in the output byte order.
inline bool plainUnit(ConverterRecord& record, uint32_t code, uint32_t width) {
  if (!hasRoom(record, width)) return refuse(record, KSV_STATUS_FULL);
  uint8_t* at = record.output + record.outputPosition;
  const bool bigEndian = record.options.outputBigEndian != 0;
  if (width == 1) {
    at[0] = static_cast<uint8_t>(code);
  } else if (width == 2) {
    const uint8_t high = static_cast<uint8_t>(code >> 8);
    at[bigEndian ? 0 : 1] = high;
    at[bigEndian ? 1 : 0] = static_cast<uint8_t>(code);
  } else {
    for (uint32_t i = 0; i < width; ++i) {
      const uint8_t byte = i < 4 ? static_cast<uint8_t>(code >> (8 * i)) : uint8_t{0};
      at[bigEndian ? width - 1 - i : i] = byte;
    }
  }
  record.outputPosition += static_cast<int32_t>(width);
  return unitWritten(record);
}

// Where a character began, to go back to when it does not fit as a whole.
class OutputMark {
 public:
  explicit OutputMark(const ConverterRecord& record)
      : position_(record.outputPosition), units_(record.unitsWritten) {}
  void goBack(ConverterRecord& record) const {
    record.outputPosition = position_;
    record.unitsWritten = units_;
  }

 private:
  int32_t position_;
  int32_t units_;
};

// A sequence of record.sequenceLength bytes, least significant byte of the code
// last, as units of width bytes; bytes left over are not written.
template <typename WriteUnit>
bool writeSequence(ConverterRecord& record, uint32_t code, uint32_t width, WriteUnit writeUnit) {
  const uint32_t length = record.sequenceLength;
  if (width == 0 || length < width) return refuse(record, KSV_STATUS_FAILURE);
  for (uint32_t unit = 0; unit < length / width; ++unit) {
    uint32_t value = 0;
    for (uint32_t i = unit * width; i < (unit + 1) * width; ++i) {
      const uint32_t fromEnd = length - 1 - i;
      value = value << 8 | (fromEnd < 4 ? code >> (8 * fromEnd) & 0xFF : 0);
    }
    if (!writeUnit(record, value, width)) return false;
  }
  return true;
}

template <typename WriteUnit>
bool writeNewline(ConverterRecord& record, uint32_t width, WriteUnit writeUnit) {
  const uint32_t form = record.options.newlineForm;
  if (form == KSV_NEWLINE_CR) return writeUnit(record, kCarriageReturn, width);
  if (form == KSV_NEWLINE_LF) return writeUnit(record, kLineFeed, width);
  if (width != 1 && form == KSV_NEWLINE_LINE_SEPARATOR) return writeUnit(record, 0x2028, width);
  if (width != 1 && form == KSV_NEWLINE_PARAGRAPH_SEPARATOR) {
    return writeUnit(record, 0x2029, width);
  }
  return writeUnit(record, kCarriageReturn, width) && writeUnit(record, kLineFeed, width);
}

// Writes the prepared character whole or not at all, and leaves the status.
template <typename WriteUnit>
void writeCharacter(ConverterRecord& record, WriteUnit writeUnit) {
  const OutputMark start(record);
  // JIS X 0213 codes are two bytes whatever the width of the group says.
  const uint32_t width = record.targetGroup == charset_id::kJisX0213 ? 2 : record.outputWidth;
  bool written;
  if (record.sequenceLength != 0) {
    written =
        writeSequence(record, record.outputCode, width, writeUnit) &&
        (record.secondCode == 0 || writeSequence(record, record.secondCode, width, writeUnit));
  } else if (record.options.convertNewlines != 0 && record.outputCode == kCarriageReturn) {
    written = writeNewline(record, width, writeUnit);
  } else {
    written = writeUnit(record, record.outputCode, width) &&
              (record.secondCode == 0 || writeUnit(record, record.secondCode, width));
  }
  if (!written) start.goBack(record);
}

// Writes the byte-order mark while the option asks for one, and clears the option.
// False, with status 22, when it does not fit.
template <typename WriteUnit>
bool writePendingMark(ConverterRecord& record, WriteUnit writeUnit) {
  if (record.options.writeByteOrderMark == 0) return true;
  const uint32_t entryStatus = record.status;
  if (!writeUnit(record, 0xFEFF, 2)) return false;
  record.options.writeByteOrderMark = 0;
  record.status = entryStatus;
  return true;
}

// For codecs whose units are the group's bytes behind a transform of the code. A
// transform gives 0 for what the target has no code for.
template <typename Transform>
auto transformedUnit(Transform transform) {
  return [transform](ConverterRecord& record, uint32_t code, uint32_t width) {
    const uint32_t transformed = transform(code);
    if (transformed == 0 && code != 0) return refuse(record, KSV_STATUS_UNMAPPABLE);
    return plainUnit(record, transformed, width);
  };
}

}  // namespace ksv
