#include "cconv/codecs/euc_jp.h"

#include <initializer_list>

#include "cconv/engine/group_code.h"
#include "cconv/engine/jis_x_0213.h"
#include "cconv/engine/mapping.h"
#include "cconv/engine/unit_writer.h"

namespace ksv::codecs {
namespace {

constexpr uint8_t kSingleShift2 = 0x8E;
constexpr uint8_t kSingleShift3 = 0x8F;
constexpr uint8_t kFirstHighByte = 0xA0;
constexpr uint8_t kLastAscii = 0x7E;

// Where pairs, and pairs behind a single shift 3, belong.
struct PairGroups {
  CharsetId pairs;
  CharsetId shiftedPairs;
  uint32_t shiftedFlag;
};
constexpr PairGroups kEucJpGroups = {charset_id::kJisX0208, charset_id::kJisX0212, 0};
constexpr PairGroups kEucJis2004Groups = {charset_id::kJisX0213, charset_id::kJisX0213,
                                          kPlane2Flag};

uint32_t jisPair(const uint8_t* bytes) {
  return (static_cast<uint32_t>(bytes[0]) << 8 | bytes[1]) & 0x7F7F;
}

int32_t lengthFor(uint8_t lead) {
  if (lead == kSingleShift3) return 3;
  return lead == kSingleShift2 || lead >= kFirstHighByte ? 2 : 1;
}

GroupCode groupCodeAt(const uint8_t* bytes, int32_t length, const PairGroups& groups) {
  if (length == 1) return {charset_id::kIso646Irv, bytes[0], 1};
  if (length == 3) return {groups.shiftedPairs, jisPair(bytes + 1) | groups.shiftedFlag, 3};
  if (bytes[0] == kSingleShift2) return {charset_id::kJisX0201Kana, bytes[1], 2};
  return {groups.pairs, jisPair(bytes), 2};
}

void decodePacked(ConverterRecord& record, const PairGroups& groups) {
  const int64_t left = bytesLeft(record);
  if (left == 0) {
    record.status = KSV_STATUS_DONE;
    return;
  }
  const uint8_t* bytes = record.input + record.inputPosition;
  const int32_t length = lengthFor(bytes[0]);
  if (left < length) {
    record.status = KSV_STATUS_INCOMPLETE;
    return;
  }
  bool valid = length > 1 || bytes[0] <= kLastAscii;
  for (int32_t i = 1; i < length; ++i) valid = valid && bytes[i] >= kFirstHighByte;
  if (!valid) {
    rejectFirstByte(record);
    return;
  }
  deliverGroupCode(record, groupCodeAt(bytes, length, groups));
}

// The group and code of a pair of the fixed-width format; group 0: there is none.
GroupCode fixedGroupCode(uint8_t first, uint8_t second) {
  constexpr GroupCode kNone = {0, 0, 0};
  const bool highSecond = second >= kFirstHighByte;
  if (first == 0) {
    if (highSecond) return {charset_id::kJisX0201Kana, second, 2};
    return second <= kLastAscii ? GroupCode{charset_id::kIso646Irv, second, 2} : kNone;
  }
  if (first < kFirstHighByte) return kNone;
  const uint32_t row = (first & 0x7Fu) << 8;
  if (highSecond) return {charset_id::kJisX0208, row | (second & 0x7Fu), 2};
  if (second < 0x21 || second > 0x7E) return kNone;
  return {charset_id::kJisX0212, row | second, 2};
}

bool writeBytes(ConverterRecord& record, std::initializer_list<uint32_t> bytes) {
  if (!hasRoom(record, static_cast<uint32_t>(bytes.size()))) {
    return refuse(record, KSV_STATUS_FULL);
  }
  for (const uint32_t byte : bytes) {
    record.output[record.outputPosition++] = static_cast<uint8_t>(byte);
  }
  return unitWritten(record);
}

// Rows beyond JIS X 0208, whose first byte would be 0xFF or none of the format.
bool isUnwrittenRow(uint32_t code) {
  const uint32_t row = code >> 8 & 0xFF;
  return row >= 0x7F && row <= 0x92;
}

bool packedUnit(ConverterRecord& record, uint32_t code, uint32_t) {
  const uint32_t high = (code >> 8 & 0xFF) | 0x80;
  const uint32_t low = (code & 0xFF) | 0x80;
  switch (record.targetGroup) {
    case charset_id::kIso646Irv:
      return writeBytes(record, {code});
    case charset_id::kJisX0201Kana:
      return writeBytes(record, {kSingleShift2, code});
    case charset_id::kJisX0208:
      if (isUnwrittenRow(code)) break;
      return writeBytes(record, {high, low});
    case charset_id::kJisX0212:
      return writeBytes(record, {kSingleShift3, high, low});
    case charset_id::kJisX0213:
      if ((code & kPlane2Flag) != 0) return writeBytes(record, {kSingleShift3, high, low});
      return writeBytes(record, {high, low});
    default:
      break;
  }
  return refuse(record, KSV_STATUS_UNMAPPABLE);
}

bool fixedUnit(ConverterRecord& record, uint32_t code, uint32_t) {
  const uint32_t high = (code >> 8 & 0xFF) | 0x80;
  switch (record.targetGroup) {
    case charset_id::kIso646Irv:
    case charset_id::kJisX0201Kana:
      return writeBytes(record, {0, code});
    case charset_id::kJisX0208:
      if (isUnwrittenRow(code)) break;
      return writeBytes(record, {high, code | 0x80});
    case charset_id::kJisX0212:
      return writeBytes(record, {high, code});
    default:
      break;
  }
  return refuse(record, KSV_STATUS_UNMAPPABLE);
}

}  // namespace

void decodeEucJp(ConverterRecord& record) { decodePacked(record, kEucJpGroups); }

void decodeEucJis2004(ConverterRecord& record) { decodePacked(record, kEucJis2004Groups); }

void decodeEucJpFix(ConverterRecord& record) {
  const int64_t left = bytesLeft(record);
  if (left < 2) {
    record.status = left == 0 ? KSV_STATUS_DONE : KSV_STATUS_INCOMPLETE;
    return;
  }
  const uint8_t* bytes = record.input + record.inputPosition;
  const GroupCode found = fixedGroupCode(bytes[0], bytes[1]);
  if (found.group == 0) {
    rejectFirstByte(record);
  } else {
    deliverGroupCode(record, found);
  }
}

void encodeEucJp(ConverterRecord& record) {
  if (mapCharacter(record)) writeCharacter(record, packedUnit);
}

void encodeEucJpFix(ConverterRecord& record) {
  if (mapCharacter(record)) writeCharacter(record, fixedUnit);
}

}  // namespace ksv::codecs
