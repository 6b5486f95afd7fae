// cconvChkEncode: the charset of a buffer by its mark, its declaration or its bytes.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <optional>

#include "common/byte_order.h"
#include "detect/candidate.h"
#include "detect/check_scores.h"
#include "detect/text_blocks.h"
#include "ksv_cconv.h"

namespace ksv::detect {
namespace {

constexpr char kUtf8[] = "UTF-8";
constexpr char kUtf16[] = "UTF-16";
constexpr char kUcs2[] = "ISO-10646-UCS-2";
constexpr char kUcs4[] = "ISO-10646-UCS-4";
constexpr char kEucJp[] = "EUC-JP";
constexpr char kEucJpFix[] = "EUC-JP-FIX";
constexpr char kIso2022Jp[] = "ISO-2022-JP";
constexpr char kAscii[] = "ISO-646IRV";

constexpr size_t kMostScored = 2048;
// Of the declared value, both quotation marks included.
constexpr size_t kMostValueBytes = 259;

template <size_t kSize>
void setName(EncodingCheckRecord& record, const char (&name)[kSize]) {
  std::memcpy(record.name, name, kSize);
}

bool isNamed(const EncodingCheckRecord& record, const char* name) {
  return std::strcmp(record.name, name) == 0;
}

// ---- Byte-order mark

struct Mark {
  uint8_t bytes[4];
  size_t length;
  const char* name;
  uint32_t bigEndian;
};

// The longest first: that of little-endian UCS-4 begins with that of UTF-16.
constexpr Mark kMarks[] = {
    {{0xFF, 0xFE, 0x00, 0x00}, 4, kUcs4, 0},
    {{0x00, 0x00, 0xFE, 0xFF}, 4, kUcs4, 1},
    {{0xEF, 0xBB, 0xBF}, 3, kUtf8, 1},
    {{0xFE, 0xFF}, 2, kUtf16, 1},
    {{0xFF, 0xFE}, 2, kUtf16, 0},
};

// Returns the bytes of the mark.
size_t readMark(EncodingCheckRecord& record, const uint8_t* at, size_t left) {
  for (const Mark& mark : kMarks) {
    if (left < mark.length || std::memcmp(at, mark.bytes, mark.length) != 0) continue;
    std::strcpy(record.name, mark.name);
    record.mark = 1;
    record.bigEndian = mark.bigEndian;
    return mark.length;
  }
  return 0;
}

// ---- XML declaration

// Whether the word stands at this offset in little-endian units of the width, the
// last of them without its zero bytes: so a big-endian text has it, too, at the
// offset of its first non-zero byte.
bool hasWord(const uint8_t* input, size_t end, size_t offset, const char* word, size_t width) {
  const size_t length = std::strlen(word);
  const size_t size = (length - 1) * width + 1;
  if (offset > end || end - offset < size) return false;
  for (size_t i = 0; i < size; ++i) {
    const uint8_t expected = i % width == 0 ? static_cast<uint8_t>(word[i / width]) : uint8_t{0};
    if (input[offset + i] != expected) return false;
  }
  return true;
}

// Either spelling, but no mixture of the two.
bool hasEitherWord(const uint8_t* input, size_t end, size_t offset, const char* lower,
                   const char* upper, size_t width) {
  return hasWord(input, end, offset, lower, width) || hasWord(input, end, offset, upper, width);
}

constexpr size_t kDeclarationLetters = 5;  // of "<?xml"

// The distance that the end keeps from the declaration counts from the first byte of
// the input, not from the position; texts are checked with their position at 0.
bool isDeclaredAt(const EncodingCheckRecord& record, size_t position, size_t offset, size_t width) {
  const size_t size = (kDeclarationLetters - 1) * width + 1;
  const auto isAt = [&](size_t from) {
    return hasEitherWord(record.input, record.end, from, "<?xml", "<?XML", width);
  };
  if (record.end > offset + size && isAt(position + offset)) return true;
  return record.mark != 0 && record.end > offset + size + 2 && isAt(position + offset + 2);
}

// Returns the width of the text's units.
size_t readDeclaration(EncodingCheckRecord& record, size_t position) {
  for (const size_t width : {size_t{1}, size_t{2}, size_t{4}}) {
    const bool isLittle = isDeclaredAt(record, position, 0, width);
    if (!isLittle && (width == 1 || !isDeclaredAt(record, position, width - 1, width))) continue;
    record.declared = 1;
    if (width > 1) record.bigEndian = record.input[position] == 0;
    return width;
  }
  return 1;
}

// Where the attribute begins, which stands on the first line and not at its very
// beginning.
std::optional<size_t> findEncodingAttribute(const EncodingCheckRecord& record, size_t width) {
  constexpr size_t kLetters = 8;  // of "encoding"
  const size_t size = (kLetters - 1) * width + 1;
  for (size_t i = 0; i + 1 + size < record.end; ++i) {
    const uint8_t byte = record.input[i];
    if (byte == kCarriageReturn || byte == kLineFeed) break;
    if (hasEitherWord(record.input, record.end, i, "encoding", "ENCODING", width)) {
      const size_t begin = i - i % width;
      return begin == 0 ? std::nullopt : std::optional(begin);
    }
  }
  return std::nullopt;
}

// Where the next quotation mark begins, of either kind; at the end where there is
// none.
size_t findQuote(const EncodingCheckRecord& record, size_t from, size_t width) {
  const bool bigEndian = record.bigEndian != 0;
  size_t i = from;
  for (; i + width <= record.end; i += width) {
    const uint32_t unit = readUnit(record.input + i, width, bigEndian);
    if (unit == '"' || unit == '\'') return i;
  }
  return record.end;
}

bool readDeclaredValue(EncodingCheckRecord& record, size_t width) {
  const std::optional<size_t> attribute = findEncodingAttribute(record, width);
  if (!attribute) return false;
  const size_t open = findQuote(record, *attribute, width);
  if (open == record.end) return false;
  const size_t close = findQuote(record, open + width, width);
  if (close == record.end || close - open + 1 > kMostValueBytes) return false;
  char* next = record.name;
  for (size_t i = open + width; i < close; i += width)
    *next++ = static_cast<char>(readUnit(record.input + i, width, record.bigEndian != 0));
  *next = '\0';
  return true;
}

void nameAfterDeclaration(EncodingCheckRecord& record, size_t width) {
  if (readDeclaredValue(record, width)) return;
  if (width == 2) {
    setName(record, kUtf16);
  } else if (width == 4) {
    setName(record, kUcs4);
  } else {
    setName(record, kUtf8);
  }
}

// ---- Scores

struct Scores {
  explicit Scores(const CheckedText& text)
      : iso2022Jp(checkIso2022Jp(text)),
        eucJp(checkEucJp(text)),
        eucJpFix(checkEucJpFix(text)),
        utf8(checkUtf8(text)),
        windows31j(checkWindows31j(text)),
        utf16(checkUtf16(text)),
        ucs4(checkUcs4(text)) {}

  int32_t iso2022Jp;
  int32_t eucJp;
  int32_t eucJpFix;
  Utf8Score utf8;
  Windows31jScore windows31j;
  OrderedScore utf16;
  OrderedScore ucs4;
};

void nameWindows31j(EncodingCheckRecord& record, const Windows31jScore& score) {
  if (score.doubleByte >= 1) {
    setName(record, "WINDOWS31J");
  } else if (score.high >= 1) {
    setName(record, "ISO-8859-1");
  } else {
    setName(record, kAscii);
  }
}

void nameUtf8(EncodingCheckRecord& record, const Utf8Score& score) {
  if (score.multibyte >= 1) {
    setName(record, kUtf8);
  } else {
    setName(record, kAscii);
  }
}

// Whether a name is settled by the scores above a threshold. The rules are asked in
// this order; they are not symmetrical.
bool nameAbove(EncodingCheckRecord& record, const Scores& scores, int32_t threshold) {
  const int32_t fix = scores.eucJpFix;
  const int32_t euc = scores.eucJp;
  const int32_t utf8 = scores.utf8.score;
  const int32_t utf16 = scores.utf16.score;
  const int32_t ucs4 = scores.ucs4.score;
  const int32_t sjis = scores.windows31j.score;

  if (fix > threshold && fix > std::max({utf8, euc, utf16, ucs4, sjis})) {
    setName(record, kEucJpFix);
  } else if (euc > threshold && euc >= fix && euc > std::max({utf8, utf16, ucs4, sjis})) {
    setName(record, kEucJp);
  } else if (utf16 > threshold && utf16 >= fix && utf16 > std::max({utf8, euc, ucs4, sjis})) {
    setName(record, kUtf16);
    record.bigEndian = scores.utf16.isBigEndian;
  } else if (ucs4 > threshold && ucs4 >= fix && ucs4 > std::max({utf8, euc, utf16, sjis})) {
    setName(record, kUcs4);
    record.bigEndian = scores.ucs4.isBigEndian;
  } else if (sjis > threshold && sjis >= std::max({fix, euc, utf16}) &&
             sjis > std::max(utf8, ucs4)) {
    nameWindows31j(record, scores.windows31j);
  } else if (utf8 <= threshold ||
             utf8 < std::max({fix, euc, utf16, ucs4, sjis, scores.iso2022Jp})) {
    if (scores.iso2022Jp <= threshold) return false;
    setName(record, kIso2022Jp);
  } else {
    nameUtf8(record, scores.utf8);
  }
  return true;
}

// A full score settles the name by the rules above: UTF-8 before all others, since they
// have to be above it; then Windows-31J, which need not be above EUC-JP. UTF-16 and UCS-4
// would have to be full as well to come before these two, and then hold zero bytes, which
// are good in neither. So most texts take one score, and those before it are given up at
// their first bad unit. False: all scores are needed.
bool nameFlawless(EncodingCheckRecord& record, const CheckedText& text) {
  const CheckedText trial = {text.data, text.length, 0};
  if (const Utf8Score utf8 = checkUtf8(trial); utf8.score == kFullScore) {
    nameUtf8(record, utf8);
  } else if (const Windows31jScore score = checkWindows31j(trial); score.score == kFullScore) {
    nameWindows31j(record, score);
  } else if (checkEucJp(trial) == kFullScore) {
    setName(record, kEucJp);
  } else {
    return false;
  }
  return true;
}

void nameAfterScores(EncodingCheckRecord& record, const CheckedText& text) {
  constexpr int32_t kLowestThreshold = 7000;
  constexpr int32_t kThresholdStep = 100;
  if (nameFlawless(record, text)) return;
  const Scores scores(text);
  for (int32_t threshold = kFullScore; threshold >= kLowestThreshold; threshold -= kThresholdStep) {
    if (nameAbove(record, scores, threshold)) return;
  }
}

// ---- Line ends

struct LineEndCounts {
  uint32_t crLf = 0;
  uint32_t cr = 0;
  uint32_t lf = 0;
  uint32_t lineSeparators = 0;
  uint32_t paragraphSeparators = 0;

  // Whether one of the counts is above the four others.
  bool isMost(uint32_t count) const {
    const uint32_t all[] = {crLf, cr, lf, lineSeparators, paragraphSeparators};
    return count != 0 && std::count_if(std::begin(all), std::end(all),
                                       [count](uint32_t other) { return other >= count; }) == 1;
  }
};

struct Units {
  size_t width;
  bool bigEndian;
};

Units unitsOf(const EncodingCheckRecord& record, size_t width) {
  if (isNamed(record, kEucJpFix)) return {2, true};
  const bool bigEndian = record.bigEndian != 0;
  if (isNamed(record, kUtf16)) return {2, bigEndian};
  if (isNamed(record, kUcs4)) return {4, bigEndian};
  return {width, bigEndian};
}

// Passes over blocks of bytes that are nothing to line ends, and with them over the one
// before. A byte is left where there was one.
size_t passPlainBytes(const CheckedText& text, size_t from, uint32_t& previous) {
  if (previous == kCarriageReturn || previous == kLineFeed || previous == 0xE2) return from;
  size_t i = from;
  for (; i + kBlock < text.length; i += kBlock) {
    const uint64_t block = blockAt(text.data + i);
    if (hasByte(block, kLineFeed) || hasByte(block, kCarriageReturn) || hasByte(block, 0xE2)) break;
    previous = 0;
  }
  return i;
}

// A line end is told when the unit behind it is read: one that ends the text is not
// counted, the unit behind a lone CR or LF is used up, and LF CR is a pair, too.
LineEndCounts countLineEnds(const CheckedText& text, const Units& units) {
  LineEndCounts counts;
  uint32_t previous = 0;
  for (size_t i = 0; i + units.width <= text.length;) {
    if (units.width == 1) i = passPlainBytes(text, i, previous);
    const uint32_t unit = readUnit(text.data + i, units.width, units.bigEndian);
    i += units.width;
    if (previous == kCarriageReturn || previous == kLineFeed) {
      const bool isPair = unit == (previous == kCarriageReturn ? kLineFeed : kCarriageReturn);
      ++(isPair ? counts.crLf : previous == kCarriageReturn ? counts.cr : counts.lf);
      previous = 0;
    } else if (previous == 0xE2 && unit == 0x80) {
      // The third byte of U+2028 and U+2029 in UTF-8: one byte, whatever the width.
      if (i == text.length) break;
      counts.lineSeparators += text.data[i] == 0xA8;
      counts.paragraphSeparators += text.data[i] == 0xA9;
      ++i;
      previous = 0;
    } else {
      counts.lineSeparators += unit == 0x2028;
      counts.paragraphSeparators += unit == 0x2029;
      previous = unit;
    }
  }
  return counts;
}

uint32_t mostFrequentLineEnd(const EncodingCheckRecord& record, const LineEndCounts& counts) {
  const uint32_t fallback = counts.crLf != 0 ? KSV_LINE_END_CRLF : KSV_LINE_END_NONE;
  if (isNamed(record, kIso2022Jp)) {
    if (counts.cr > counts.lf) return KSV_LINE_END_CR;
    return counts.lf > counts.cr ? uint32_t{KSV_LINE_END_LF} : fallback;
  }
  if (counts.isMost(counts.lineSeparators)) return KSV_LINE_END_LINE_SEPARATOR;
  if (counts.isMost(counts.paragraphSeparators)) return KSV_LINE_END_PARAGRAPH_SEPARATOR;
  if (counts.isMost(counts.cr)) return KSV_LINE_END_CR;
  return counts.isMost(counts.lf) ? uint32_t{KSV_LINE_END_LF} : fallback;
}

// ---- The check

void clearAnswer(EncodingCheckRecord& record) {
  std::memset(record.name, 0, sizeof record.name);
  record.declared = 0;
  record.mark = 0;
  record.bigEndian = 1;
  record.lineEnd = KSV_LINE_END_NONE;
  record.resultClass = KSV_CHECK_NOTHING;
}

void check(EncodingCheckRecord& record) {
  const size_t begin = record.position;
  const size_t length = record.end - begin;
  const size_t behindMark = begin + readMark(record, record.input + begin, length);
  const size_t width = readDeclaration(record, behindMark);
  const CheckedText text = {record.input + begin, std::min(length, kMostScored)};
  if (record.declared != 0) {
    nameAfterDeclaration(record, width);
  } else if (record.mark == 0) {
    nameAfterScores(record, text);
  }
  if (record.name[0] == '\0') return;
  record.lineEnd = mostFrequentLineEnd(record, countLineEnds(text, unitsOf(record, width)));
  const bool hasOrder = isNamed(record, kUtf16) || isNamed(record, kUcs4) || isNamed(record, kUcs2);
  record.resultClass = hasOrder ? KSV_CHECK_NAMED_WITH_ORDER : KSV_CHECK_NAMED;
}

}  // namespace
}  // namespace ksv::detect

uint32_t cconvChkEncode(EncodingCheckRecord* record) {
  if (record == nullptr) return 0;
  ksv::detect::clearAnswer(*record);
  if (record->input != nullptr && record->position < record->end) ksv::detect::check(*record);
  if (record->resultClass != KSV_CHECK_NOTHING) return 1;
  ksv::detect::setName(*record, "unknown");
  return 0;
}
