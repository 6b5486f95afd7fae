#include "cconv/codecs/shift_jis.h"

#include "cconv/engine/composition.h"
#include "cconv/engine/mapping.h"
#include "cconv/engine/shift_jis_codes.h"
#include "cconv/engine/unit_writer.h"

namespace ksv::codecs {
namespace {

// A single byte from 0x80 up outside the katakana begins a pair.
constexpr bool isKatakanaByte(uint8_t byte) { return byte >= 0xA1 && byte <= 0xDF; }

void decodeSingleByte(ConverterRecord& record, uint8_t byte) {
  const bool latin = byte < 0x80;
  const GroupDef* group =
      findGroupById(latin ? charset_id::kJisX0201Latin : charset_id::kJisX0201Kana);
  ++record.inputPosition;
  uint32_t unicode = 0;
  if (group != nullptr && !tableLookup(group->toUcs, byte, unicode)) unicode = 0;
  // A Latin byte without a character is one all the same, of Unicode code 0.
  if (group == nullptr || (!latin && unicode == 0)) {
    record.status = KSV_STATUS_INVALID;
    return;
  }
  deliverCharacter(record, *group, byte, byte, unicode);
}

// The group that holds the code of a pair, and the character; null: none does.
const GroupDef* findIn(CharsetId id, uint32_t code, uint32_t& unicode) {
  const GroupDef* group = findGroupById(id);
  if (group == nullptr || !tableLookup(group->toUcs, code, unicode) || unicode == 0) {
    return nullptr;
  }
  return group;
}

const GroupDef* findJisX0208(ConverterRecord&, uint32_t code, uint32_t& unicode) {
  return findIn(charset_id::kJisX0208, code, unicode);
}

const GroupDef* findJisX0213(ConverterRecord& record, uint32_t code, uint32_t& unicode) {
  if (const Composition* composed = findComposition(code)) {
    const GroupDef* group = findGroupById(charset_id::kJisX0213);
    if (group != nullptr) {
      unicode = composed->base;
      record.secondCode = composed->mark;
    }
    return group;
  }
  return findIn(charset_id::kJisX0213, code, unicode);
}

const GroupDef* findWindows31J(ConverterRecord&, uint32_t code, uint32_t& unicode) {
  for (const CharsetId id : {charset_id::kJisX0208, charset_id::kNecExtset, charset_id::kIbmExtset,
                             charset_id::kNecIbmExtset, charset_id::kWindows31JUser}) {
    if (const GroupDef* group = findIn(id, code, unicode)) return group;
  }
  return nullptr;
}

// One character. Groups are those of the whole rule base, by their number, not
// only the source charset's own.
template <typename FindGroup>
void decodeCharacter(ConverterRecord& record, uint32_t (*toJis)(uint32_t), FindGroup findGroup) {
  const int64_t left = bytesLeft(record);
  if (left == 0) {
    record.status = KSV_STATUS_DONE;
    return;
  }
  const uint8_t lead = record.input[record.inputPosition];
  if (lead < 0x80 || isKatakanaByte(lead)) {
    decodeSingleByte(record, lead);
    return;
  }
  if (left < 2) {
    record.status = KSV_STATUS_INCOMPLETE;
    return;
  }
  const uint32_t pair = static_cast<uint32_t>(lead) << 8 | record.input[record.inputPosition + 1];
  const uint32_t code = toJis(pair);
  uint32_t unicode = 0;
  const GroupDef* group = code != 0 ? findGroup(record, code, unicode) : nullptr;
  if (group == nullptr) {
    ++record.inputPosition;
    record.status = KSV_STATUS_INVALID;
    return;
  }
  record.inputPosition += 2;
  deliverCharacter(record, *group, pair, code, unicode);
}

}  // namespace

void decodeShiftJis(ConverterRecord& record) {
  if (record.sourceCharsetId == charset_id::kShiftJis2004) {
    decodeCharacter(record, shiftJis2004ToJisX0213, findJisX0213);
  } else {
    decodeCharacter(record, shiftJisToJisX0208, findJisX0208);
  }
}

void decodeWindows31J(ConverterRecord& record) {
  decodeCharacter(record, shiftJisToJisX0208, findWindows31J);
}

void encodeShiftJis(ConverterRecord& record) {
  if (mapCharacter(record)) writeCharacter(record, transformedUnit(jisX0208ToShiftJis));
}

void encodeShiftJis2004(ConverterRecord& record) {
  if (mapCharacter(record)) writeCharacter(record, transformedUnit(jisX0213ToShiftJis2004));
}

void encodeWindows31J(ConverterRecord& record) { encodeShiftJis(record); }

}  // namespace ksv::codecs
