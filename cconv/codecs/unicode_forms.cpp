#include "cconv/codecs/unicode_forms.h"

#include <algorithm>

#include "cconv/engine/byte_order_mark.h"
#include "cconv/engine/composition.h"
#include "cconv/engine/language_tag.h"
#include "cconv/engine/mapping.h"
#include "cconv/engine/unit_writer.h"
#include "common/byte_order.h"
#include "common/utf16.h"
#include "common/utf8.h"

namespace ksv::codecs {
namespace {

constexpr uint32_t kFirstTagCharacter = 0xE0020;
constexpr uint32_t kLastTagCharacter = 0xE007E;

// --- Reading one value. ---
//
// A form passes over what stands for nothing, and then reads the value at a
// position and advances it. kIncomplete leaves the position as it was; kEnd says
// that nothing is left.

enum class ReadResult { kRead, kIncomplete, kEnd };

struct Utf8Form {
  static constexpr bool kComposes = true;

  static MarkResult skipMark(ConverterRecord& record) { return skipUtf8Mark(record); }

  static void passOver(const ConverterRecord& record, int32_t& position) {
    while (position < record.inputLength && record.input[position] >= 0xFE) ++position;
  }

  // Following bytes are not checked and overlong forms are accepted; a stray
  // following byte stands for its own value.
  static ReadResult read(const ConverterRecord& record, int32_t& position, uint32_t& value) {
    const uint8_t* input = record.input;
    if (position >= record.inputLength) return ReadResult::kEnd;
    const uint8_t lead = input[position];
    if (lead < 0xC0) {
      value = lead;
      ++position;
      return ReadResult::kRead;
    }
    const int32_t length = sequenceLength(lead);
    if (record.inputLength - position < length) return ReadResult::kIncomplete;
    uint32_t read = lead & (0x7Fu >> length);
    for (int32_t i = 1; i < length; ++i) read = read << 6 | (input[position + i] & 0x3Fu);
    value = read;
    position += length;
    return ReadResult::kRead;
  }

  // As UTF-8 was first defined; FE and FF begin six bytes, too.
  static int32_t sequenceLength(uint8_t lead) {
    return static_cast<int32_t>(std::min<size_t>(utf8Length(lead), 6));
  }
};

struct Utf16Form {
  static constexpr bool kComposes = true;

  static MarkResult skipMark(ConverterRecord& record) { return skipUtf16Mark(record); }
  static void passOver(const ConverterRecord&, int32_t&) {}

  // A surrogate takes the next unit whatever it is, and a pair in reversed order
  // is accepted.
  static ReadResult read(const ConverterRecord& record, int32_t& position, uint32_t& value) {
    const bool bigEndian = record.inputBigEndian != 0;
    const int32_t left = record.inputLength - position;
    if (left <= 0) return ReadResult::kEnd;
    if (left < 2) return ReadResult::kIncomplete;
    const uint8_t* at = record.input + position;
    const uint32_t unit = readUnit(at, 2, bigEndian);
    if (!isSurrogate(unit)) {
      value = unit;
      position += 2;
      return ReadResult::kRead;
    }
    if (left < 4) return ReadResult::kIncomplete;
    const uint32_t second = readUnit(at + 2, 2, bigEndian);
    value = isHighSurrogate(unit) ? joinSurrogates(unit, second) : joinSurrogates(second, unit);
    position += 4;
    return ReadResult::kRead;
  }
};

struct Ucs4Form {
  static constexpr bool kComposes = false;

  static MarkResult skipMark(ConverterRecord& record) { return skipUcs4Mark(record); }
  static void passOver(const ConverterRecord&, int32_t&) {}

  static ReadResult read(const ConverterRecord& record, int32_t& position, uint32_t& value) {
    const int32_t left = record.inputLength - position;
    if (left <= 0) return ReadResult::kEnd;
    if (left < 4) return ReadResult::kIncomplete;
    value = readUnit(record.input + position, 4, record.inputBigEndian != 0);
    position += 4;
    return ReadResult::kRead;
  }
};

// --- Finding the group of a value. ---

// Whether the group holds the value, and as which character.
bool groupHolds(const GroupDef& group, uint32_t value, uint32_t& unicode) {
  if (group.isUser()) return group.userCodeToUcs(value, unicode);
  unicode = value;
  const CodeTable::Answers answers = group.toUcs.answers();
  if (answers == CodeTable::Answers::kItself || value < 0x80) return true;
  return answers == CodeTable::Answers::kStored && group.toUcs.find(value) != 0;
}

const GroupDef* findGroup(const CharsetDef& charset, uint32_t value, uint32_t& unicode) {
  for (const GroupDef* group : charset.groups) {
    if (groupHolds(*group, value, unicode)) return group;
  }
  return nullptr;
}

// A tag character that no group holds is passed on without one, uncounted.
void deliverTagCharacter(ConverterRecord& record, uint32_t value) {
  record.decodedGroup = 0;
  record.decodedGroupType = 0;
  record.rawCode = value;
  record.groupCode = value;
  record.unicodeCode = value;
  record.status = KSV_STATUS_DECODED;
}

// --- Decoding. ---

enum class Decoded { kAnswer, kTagStart };

// The mark of a composed pair, if it follows its base.
template <typename Form>
void readCompositionMark(ConverterRecord& record, uint32_t base) {
  int32_t position = record.inputPosition;
  uint32_t mark = 0;
  Form::passOver(record, position);
  if (Form::read(record, position, mark) != ReadResult::kRead) return;
  if (findComposition(base, mark) == nullptr) return;
  record.secondCode = mark;
  record.inputPosition = position;
}

// Decodes one value, which begins at start. kTagStart: it is a U+E0001 that no group
// holds, and the status is open.
template <typename Form>
Decoded decodeValue(ConverterRecord& record, int32_t& start) {
  Form::passOver(record, record.inputPosition);
  start = record.inputPosition;
  uint32_t value = 0;
  const ReadResult result = Form::read(record, record.inputPosition, value);
  if (result != ReadResult::kRead) {
    record.status = result == ReadResult::kEnd ? KSV_STATUS_DONE : KSV_STATUS_INCOMPLETE;
    return Decoded::kAnswer;
  }
  if (Form::kComposes && mayBeCompositionBase(value)) readCompositionMark<Form>(record, value);
  uint32_t unicode = 0;
  if (const GroupDef* group = findGroup(*sourceCharset(record), value, unicode)) {
    deliverCharacter(record, *group, value, value, unicode);
  } else if (value >= kFirstTagCharacter && value <= kCancelTag) {
    deliverTagCharacter(record, value);
  } else if (value == kLanguageTag) {
    return Decoded::kTagStart;
  } else {
    record.status = KSV_STATUS_INVALID;
    if (record.skipInvalid == 0) record.inputPosition = start;
  }
  return Decoded::kAnswer;
}

// The text of a language tag.
struct TagText {
  char text[KSV_NAME_SIZE];
  size_t length = 0;

  bool isFull() const { return length == KSV_NAME_SIZE - 1; }
  void add(uint32_t tagCharacter) {
    text[length++] = static_cast<char>(tagCharacter - kTagCharacterBase);
  }
  void storeAsLanguage(ConverterRecord& record) {
    text[length] = '\0';
    copyLanguage(record.currentLanguage, text);
  }
};

// Goes back to where a tag began that yielded no character, unless that is skipped with
// what cut it.
void leaveTag(ConverterRecord& record, int32_t tagStart) {
  const bool isSkipped = record.status == KSV_STATUS_INVALID && record.skipInvalid != 0;
  if (!isSkipped) record.inputPosition = tagStart;
}

// Collects tag characters up to the character that ends the tag: U+E007F, which
// makes the tag a 13 of its own, or the first other character, which is delivered.
//
// A U+E0001 inside a tag begins another one, and what ends that one ends all around it.
// Each would store its text on the way out: behind a character the outermost text stands,
// since it is stored last. U+E007F reaches only the innermost as a character; for those
// around it it is a 13. So these two texts are kept, however many tags there are.
template <typename Form>
void readLanguageTag(ConverterRecord& record, int32_t tagStart) {
  TagText outermost;
  TagText inner;
  TagText* innermost = &outermost;
  for (;;) {
    int32_t start;
    if (decodeValue<Form>(record, start) == Decoded::kTagStart) {
      innermost = &inner;
      inner.length = 0;
      continue;
    }
    if (record.status != KSV_STATUS_DECODED) return leaveTag(record, tagStart);
    const uint32_t c = record.unicodeCode;
    const bool isTagCharacter = c >= kFirstTagCharacter && c <= kLastTagCharacter;
    if (!isTagCharacter && c != kCancelTag) return outermost.storeAsLanguage(record);
    if (isTagCharacter && !innermost->isFull()) {
      innermost->add(c);
      continue;
    }
    if (!isTagCharacter) innermost->storeAsLanguage(record);
    record.status = KSV_STATUS_INVALID;
    // By itself it has been read to its end.
    if (innermost == &inner) leaveTag(record, tagStart);
    return;
  }
}

template <typename Form>
void decodeForm(ConverterRecord& record) {
  if (Form::skipMark(record) != MarkResult::kNone) return;
  int32_t start;
  if (decodeValue<Form>(record, start) == Decoded::kTagStart) readLanguageTag<Form>(record, start);
}

// --- Writing one value. ---

bool writeUcs4Unit(ConverterRecord& record, uint32_t value, uint32_t) {
  return plainUnit(record, value, 4);
}

bool writeUtf16Unit(ConverterRecord& record, uint32_t value, uint32_t) {
  if (value <= 0xFFFF) return plainUnit(record, value, 2);
  if (value > kHighestScalar) return refuse(record, KSV_STATUS_UNMAPPABLE);
  if (!hasRoom(record, 4)) return refuse(record, KSV_STATUS_FULL);
  return plainUnit(record, highSurrogateOf(value), 2) &&
         plainUnit(record, lowSurrogateOf(value), 2);
}

// Also the forms of five and six bytes, for values that are no scalar values.
bool writeUtf8Unit(ConverterRecord& record, uint32_t value, uint32_t) {
  uint8_t* at = record.output + record.outputPosition;
  if (value < 0x80) {
    if (!hasRoom(record, 1)) return refuse(record, KSV_STATUS_FULL);
    at[0] = static_cast<uint8_t>(value);
    ++record.outputPosition;
    return unitWritten(record);
  }
  if (value >= 0x80000000) return refuse(record, KSV_STATUS_UNMAPPABLE);
  uint32_t length = 2;
  for (uint32_t limit = 0x800; value >= limit && length < 6; limit <<= 5) ++length;
  if (!hasRoom(record, length)) return refuse(record, KSV_STATUS_FULL);
  for (uint32_t i = length - 1; i > 0; --i, value >>= 6) {
    at[i] = static_cast<uint8_t>(0x80 | (value & 0x3F));
  }
  at[0] = static_cast<uint8_t>((0xFF00u >> length) | value);
  record.outputPosition += static_cast<int32_t>(length);
  return unitWritten(record);
}

// --- Encoding. ---

template <typename WriteUnit>
void encodeForm(ConverterRecord& record, WriteUnit writeUnit) {
  if (!writePendingMark(record, writeUnit)) return;
  if (mapCharacter(record) && announceLanguage(record, writeUnit)) {
    writeCharacter(record, writeUnit);
  }
}

}  // namespace

void decodeUtf8(ConverterRecord& record) { decodeForm<Utf8Form>(record); }
void decodeUtf16(ConverterRecord& record) { decodeForm<Utf16Form>(record); }
void decodeUcs4(ConverterRecord& record) { decodeForm<Ucs4Form>(record); }

void encodeUtf8(ConverterRecord& record) {
  // So that the bytes of the mark come out in order, and part of the record.
  if (record.options.writeByteOrderMark != 0) record.options.outputBigEndian = 1;
  encodeForm(record, writeUtf8Unit);
}
void encodeUtf16(ConverterRecord& record) { encodeForm(record, writeUtf16Unit); }
void encodeUcs4(ConverterRecord& record) { encodeForm(record, writeUcs4Unit); }

}  // namespace ksv::codecs
