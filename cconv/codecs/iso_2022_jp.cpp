#include "cconv/codecs/iso_2022_jp.h"

#include <cstring>
#include <string_view>

#include "cconv/engine/converter.h"
#include "cconv/engine/iso_2022_designations.h"
#include "cconv/engine/jis_x_0213.h"
#include "cconv/engine/mapping.h"
#include "cconv/engine/unit_writer.h"

namespace ksv::codecs {
namespace {

// The planes of JIS X 0213 as the record keeps them.
constexpr uint32_t kPlane1 = 11;
constexpr uint32_t kPlane2 = 12;

constexpr Designation kWritten[] = {
    {"(B", charset_id::kIso646Irv},
    {"(J", charset_id::kJisX0201Latin},
    // Not "(I", although only that is read back: documents have always been written so.
    {"$I", charset_id::kJisX0201Kana},
    {"$@", charset_id::kJisC6226},
    {"$B", charset_id::kJisX0208},
};
constexpr std::string_view kPlane1Designation = "$(Q";
constexpr std::string_view kPlane2Designation = "$(P";
constexpr std::string_view kAsciiDesignation = "(B";

std::string_view inputLeft(const ConverterRecord& record) {
  return {reinterpret_cast<const char*>(record.input) + record.inputPosition,
          static_cast<size_t>(bytesLeft(record))};
}

// Takes the escape sequences in front of a character. False at one that is unknown
// or not whole: it is waited for, with the position on its ESC.
bool takeDesignations(ConverterRecord& record, uint32_t& codeFlag) {
  for (;;) {
    std::string_view text = inputLeft(record);
    if (text.empty() || static_cast<uint8_t>(text[0]) != kEscape) return true;
    text.remove_prefix(1);
    const Designation* designation = designationAt(text);
    if (designation == nullptr) return false;
    record.decoderState = designation->group;
    codeFlag = designation->codeFlag;
    record.inputPosition += static_cast<int32_t>(1 + designation->bytes.size());
  }
}

// What stands behind the escape sequence of JIS X 0208.
enum class Rows {
  kOfTheStandard,
  // As mail programs have it, code page 50220: the rows that vendors have filled as well, and
  // the same behind the sequence of the edition of 1978.
  kOfVendorsToo
};

// The first group that is designated and of a width that can be read.
const GroupDef* designatedSourceGroup(const ConverterRecord& record, Rows rows) {
  const bool isFirstEdition = record.decoderState == charset_id::kJisC6226;
  const CharsetId id =
      isFirstEdition && rows == Rows::kOfVendorsToo ? charset_id::kJisX0208 : record.decoderState;
  for (const GroupDef* group : sourceCharset(record)->groups) {
    const uint32_t width = group->bytesPerCode;
    if (group->id == id && (width == 1 || width == 2 || width == 4)) return group;
  }
  return nullptr;
}

// The group that has a row of JIS X 0208: NEC's row 13, and the IBM characters that NEC
// selected, are groups of their own.
const GroupDef& groupWithRow(const CharsetDef& charset, const GroupDef& jisX0208, uint8_t row) {
  constexpr uint8_t kNecRow = 0x2D;
  constexpr uint8_t kFirstIbmRow = 0x79;
  constexpr uint8_t kLastIbmRow = 0x7C;
  const bool isIbm = row >= kFirstIbmRow && row <= kLastIbmRow;
  if (row != kNecRow && !isIbm) return jisX0208;
  const GroupDef* group =
      charset.findGroup(isIbm ? charset_id::kNecIbmExtset : charset_id::kNecExtset);
  return group == nullptr ? jisX0208 : *group;
}

bool isLayoutControl(uint8_t byte) { return byte == '\r' || byte == '\n' || byte == '\t'; }

// In text of pairs line ends and tabs stand as they are.
void deliverLayoutControl(ConverterRecord& record, uint8_t byte) {
  record.decodedGroup = charset_id::kIso646Irv;
  record.decodedGroupType = static_cast<uint32_t>(GroupKind::kBase);
  record.rawCode = byte;
  record.groupCode = byte;
  countOneMore(record.charactersRead);
  record.status = KSV_STATUS_DECODED;
}

// Puts an escape sequence out; false, with status 22, when it does not fit.
bool writeDesignation(ConverterRecord& record, std::string_view bytes) {
  const uint32_t size = static_cast<uint32_t>(1 + bytes.size());
  if (!hasRoom(record, size)) return refuse(record, KSV_STATUS_FULL);
  uint8_t* at = record.output + record.outputPosition;
  *at = kEscape;
  std::memcpy(at + 1, bytes.data(), bytes.size());
  record.outputPosition += static_cast<int32_t>(size);
  return true;
}

std::string_view designationOf(CharsetId group, CharsetId target) {
  // ISO-2022-JP-2004 has the characters of JIS X 0208 in plane 1.
  if (group == charset_id::kJisX0208 && target == charset_id::kIso2022Jp2004) {
    return kPlane1Designation;
  }
  for (const Designation& designation : kWritten) {
    if (designation.group == group) return designation.bytes;
  }
  return {};
}

bool designateGroup(ConverterRecord& record) {
  if (record.designatedGroup == record.targetGroup) return true;
  const std::string_view bytes = designationOf(record.targetGroup, record.targetCharsetId);
  if (bytes.empty()) return refuse(record, KSV_STATUS_UNMAPPABLE);
  if (!writeDesignation(record, bytes)) return false;
  record.designatedGroup = record.targetGroup;
  return true;
}

// The designated group is left as it was, on purpose: each character of JIS X 0213
// gets its escape sequence, and one of the group before follows without.
bool designatePlane(ConverterRecord& record) {
  const uint32_t plane = (record.outputCode & kPlane2Flag) != 0 ? kPlane2 : kPlane1;
  const bool isDesignated =
      record.designatedGroup == charset_id::kJisX0213 && record.designatedPlane == plane;
  const std::string_view bytes = plane == kPlane2 ? kPlane2Designation : kPlane1Designation;
  if (!isDesignated && !writeDesignation(record, bytes)) return false;
  record.designatedPlane = plane;
  return true;
}

void closeText(ConverterRecord& record) {
  const bool inAscii = record.targetGroup == charset_id::kIso646Irv;
  if (inAscii || writeDesignation(record, kAsciiDesignation)) record.status = KSV_STATUS_DONE;
}

void decode(ConverterRecord& record, Rows rows) {
  const int32_t start = record.inputPosition;
  uint32_t codeFlag = 0;  // of the first character behind its escape sequence only
  if (!takeDesignations(record, codeFlag)) {
    record.status = KSV_STATUS_INCOMPLETE;
    return;
  }
  const int64_t left = bytesLeft(record);
  if (left == 0) {
    record.status = KSV_STATUS_DONE;
    return;
  }
  const uint8_t* bytes = record.input + record.inputPosition;
  const GroupDef* group = designatedSourceGroup(record, rows);
  ++record.inputPosition;
  if (group == nullptr) {
    record.status = KSV_STATUS_INVALID;
  } else if (group->bytesPerCode == 1) {
    deliverCharacter(record, *group, bytes[0], bytes[0], 0);
  } else if (isLayoutControl(bytes[0])) {
    deliverLayoutControl(record, bytes[0]);
  } else if (left < 2) {
    record.inputPosition = start;
    record.status = KSV_STATUS_INCOMPLETE;
  } else {
    ++record.inputPosition;
    const uint32_t code = (static_cast<uint32_t>(bytes[0]) << 8 | bytes[1]) | codeFlag;
    const bool hasVendorRows = group->id == charset_id::kJisX0208 && rows == Rows::kOfVendorsToo;
    if (hasVendorRows) group = &groupWithRow(*sourceCharset(record), *group, bytes[0]);
    deliverCharacter(record, *group, code, code, 0);
  }
}

void encode(ConverterRecord& record, Rows rows) {
  if (record.status == KSV_STATUS_FLUSH) {
    closeText(record);
    return;
  }
  if (!mapCharacter(record)) return;
  const bool isVendorRow = record.targetGroup == charset_id::kNecExtset ||
                           record.targetGroup == charset_id::kNecIbmExtset;
  if (isVendorRow && rows == Rows::kOfVendorsToo) record.targetGroup = charset_id::kJisX0208;
  if (record.targetGroup != charset_id::kJisX0213) {
    if (designateGroup(record)) writeCharacter(record, plainUnit);
    return;
  }
  const OutputMark start(record);
  const uint32_t planeBefore = record.designatedPlane;
  if (!designatePlane(record)) return;
  writeCharacter(record, plainUnit);
  if (record.status == KSV_STATUS_WRITTEN) return;
  // Not remembered, so it is not left without its character either.
  start.goBack(record);
  record.designatedPlane = planeBefore;
}

}  // namespace

void decodeIso2022Jp(ConverterRecord& record) { decode(record, Rows::kOfTheStandard); }
void encodeIso2022Jp(ConverterRecord& record) { encode(record, Rows::kOfTheStandard); }

void decodeCp50220(ConverterRecord& record) { decode(record, Rows::kOfVendorsToo); }
void encodeCp50220(ConverterRecord& record) { encode(record, Rows::kOfVendorsToo); }

}  // namespace ksv::codecs
