#include "cconv/codecs/ucs2.h"

#include <cinttypes>
#include <cstdio>

#include "cconv/engine/byte_order_mark.h"
#include "cconv/engine/mapping.h"
#include "cconv/engine/rule_driven_decoder.h"
#include "cconv/engine/unit_writer.h"
#include "common/utf16.h"

namespace ksv::codecs {
namespace {

constexpr uint32_t kFirstSupplementary = 0x10000;
constexpr uint32_t kHexadecimalReferences = 1;  // supplementaryMode; other modes: decimal

// A numeric character reference (XML 1.0, section 4.1), a unit a character. It is
// refused when it would fill the output exactly, too.
bool writeReference(ConverterRecord& record, uint32_t code) {
  char text[16];
  const bool hexadecimal = record.options.supplementaryMode == kHexadecimalReferences;
  const int length =
      std::snprintf(text, sizeof text, hexadecimal ? "&#x%" PRIX32 ";" : "&#%" PRIu32 ";", code);
  if (static_cast<int64_t>(record.outputPosition) + 2 * length >= record.outputCapacity) {
    return refuse(record, KSV_STATUS_FULL);
  }
  for (int i = 0; i < length; ++i) plainUnit(record, static_cast<uint8_t>(text[i]), 2);
  return true;
}

bool writeUcs2Unit(ConverterRecord& record, uint32_t code, uint32_t) {
  if (record.options.supplementaryMode != 0 && !isInWindows31JRepertoire(record, code)) {
    return writeReference(record, code);
  }
  return plainUnit(record, code, 2);
}

// The mark is a plain unit: it is no character that a repertoire could lack.
bool writeMarkUnit(ConverterRecord& record, uint32_t code, uint32_t) {
  return plainUnit(record, code, 2);
}

bool isSupplementary(uint32_t unicode) {
  return unicode >= kFirstSupplementary && unicode <= kHighestScalar;
}

}  // namespace

void decodeUcs2(ConverterRecord& record) {
  if (skipUcs2Mark(record) != MarkResult::kNone) return;
  decodeByRules(record);
  if (record.status == KSV_STATUS_DECODED && record.unicodeCode == 0) {
    record.unicodeCode = record.rawCode;
  }
}

void encodeUcs2(ConverterRecord& record) {
  if (!writePendingMark(record, writeMarkUnit)) return;
  const bool prepared = record.status == KSV_STATUS_FULL;
  if (mapCharacter(record)) {
    if (record.unicodeCode >= kFirstSupplementary && !prepared) {
      record.status = KSV_STATUS_UNMAPPABLE;
    } else {
      writeCharacter(record, writeUcs2Unit);
    }
  } else if (record.status == KSV_STATUS_UNMAPPABLE && record.options.supplementaryMode != 0 &&
             isSupplementary(record.unicodeCode)) {
    writeReference(record, record.unicodeCode);
  }
}

}  // namespace ksv::codecs
