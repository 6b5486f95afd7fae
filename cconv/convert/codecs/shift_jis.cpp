#include "cconv/convert/codecs/shift_jis.h"

#include "cconv/convert/composition.h"
#include "cconv/convert/mapping.h"
#include "cconv/convert/unit_writer.h"

namespace ksv::codecs {
namespace {

constexpr uint32_t kPlane2Flag = 0x10000;
constexpr uint32_t kCellsPerRow = 94;
constexpr uint32_t kFirstPlane2Lead = 0xF0;

// JIS X 0213 plane-2 rows of a lead byte from 0xF0: the first for trail bytes up
// to 0x9E, the second for those above.
constexpr uint8_t Sjis2004Plane2Rows[13][2] = {
    {1, 8},   {3, 4},   {5, 12},  {13, 14}, {15, 78}, {79, 80}, {81, 82},
    {83, 84}, {85, 86}, {87, 88}, {89, 90}, {91, 92}, {93, 94},
};

struct RowPair {
  uint32_t index;  // which pair of rows the lead byte holds, from 0
  uint32_t half;   // 0: the first row of the pair, 1: the second
  uint32_t cell;   // from 0
};

// False when the bytes are no lead and trail byte.
bool splitPair(uint32_t pair, RowPair& position) {
  const uint32_t lead = pair >> 8;
  const uint32_t trail = pair & 0xFF;
  const bool low = lead >= 0x81 && lead <= 0x9F;
  const bool high = lead >= 0xE0 && lead <= 0xFC;
  if ((!low && !high) || trail < 0x40 || trail > 0xFC || trail == 0x7F) return false;
  position.index = lead - (low ? 0x81u : 0xC1u);
  const uint32_t cell = trail - (trail >= 0x80 ? 0x41u : 0x40u);
  position.half = cell < kCellsPerRow ? 0 : 1;
  position.cell = cell - position.half * kCellsPerRow;
  return true;
}

uint32_t jisCode(const RowPair& position) {
  return (2 * position.index + position.half + 0x21) << 8 | (position.cell + 0x21);
}

// The lead byte of a plane-2 row; 0 for a row that Shift_JIS-2004 does not hold.
uint32_t plane2Lead(uint32_t row) {
  switch (row) {
    case 1:
    case 3:
    case 4:
    case 5:
    case 8:
    case 12:
    case 13:
    case 14:
    case 15:
      return (row + 479) / 2 - 3 * (row / 8);
    default:
      return row >= 64 && row <= 94 ? (row + 411) / 2 : 0;
  }
}

uint32_t plane1Lead(uint32_t row) {
  if (row < 1 || row > 94) return 0;
  return row <= 62 ? (row + 257) / 2 : (row + 385) / 2;
}

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

uint32_t shiftJisToJisX0208(uint32_t pair) {
  if (pair < 0x100) return pair;
  RowPair position;
  // Lead bytes from 0xF0 give rows beyond 0x7E, where the extension sets stand.
  return splitPair(pair, position) ? jisCode(position) : 0;
}

uint32_t shiftJis2004ToJisX0213(uint32_t pair) {
  if (pair < 0x100) return pair;
  RowPair position;
  if (!splitPair(pair, position)) return 0;
  const uint32_t lead = pair >> 8;
  if (lead < kFirstPlane2Lead) return jisCode(position);
  const uint32_t row = Sjis2004Plane2Rows[lead - kFirstPlane2Lead][position.half] + 0x20u;
  return kPlane2Flag | row << 8 | (position.cell + 0x21);
}

uint32_t jisX0208ToShiftJis(uint32_t code) {
  if (code < 0x100) return code;
  if (code < 0x2121 || code > 0x987E) return 0;
  const uint32_t distance = code - 0x2121;
  const uint32_t rowPair = distance / 512;
  const uint32_t lead = rowPair + 0x81 + (rowPair >= 31 ? 0x40 : 0);
  // The cell is not checked: one outside 0x21-0x7E gives some other pair.
  uint32_t trail = (distance & 0xFF) + 0x40;
  if (((code >> 8) - 0x21) % 2 != 0) trail += kCellsPerRow;
  if (trail >= 0x7F) ++trail;
  return lead << 8 | (trail & 0xFF);
}

uint32_t jisX0213ToShiftJis2004(uint32_t code) {
  if (code < 0x100) return code;
  if (code > 0x1FFFF) return 0;
  const uint32_t row = ((code >> 8) & 0xFF) - 0x20;
  const uint32_t cell = code & 0xFF;
  const uint32_t lead = (code & kPlane2Flag) != 0 ? plane2Lead(row) : plane1Lead(row);
  if (lead == 0 || cell < 0x21 || cell > 0x7E) return 0;
  const uint32_t trail = row % 2 == 0 ? cell + 0x7E : cell + (cell < 0x60 ? 0x1F : 0x20);
  return lead << 8 | trail;
}

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
