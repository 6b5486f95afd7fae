// The forms of Unicode.
#include <algorithm>
#include <iterator>

#include "kit/judge/reading.h"
#include "kit/text/unicode_check.h"

namespace ksv_kit::judge {
namespace {

// So many units of a text tell its language.
constexpr size_t kTellsLanguage = 480;

// What speaks for UTF-8 for each of its characters of several bytes beyond what they are: in other
// charsets such sequences are chance. No more than so much, or else damage could not be seen.
constexpr int64_t kForTwoBytes = 2 * kBit;
constexpr int64_t kForMore = 4 * kBit;
constexpr int64_t kMostForUtf8 = 60 * kBit;
constexpr int64_t kUtf8IsUsual = 6 * kBit;

constexpr char16_t kReplacement = 0xFFFD;

void append(std::u16string& text, char32_t character) {
  if (character < 0x10000) {
    text.push_back(static_cast<char16_t>(character));
    return;
  }
  text.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
  text.push_back(static_cast<char16_t>(0xDC00 + (character & 0x3FF)));
}

struct DecodedUtf8 {
  std::u16string text;
  int64_t bonus = 0;
  size_t sequences = 0;  // of several bytes
  size_t damages = 0;
};

void decodeWellFormed(Bytes bytes, DecodedUtf8& decoded) {
  for (size_t at = 0; at < bytes.size() && decoded.text.size() < kTellsLanguage;) {
    const uint8_t lead = bytes[at];
    const size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i) character = character << 6 | (bytes[at + i] & 0x3Fu);
    append(decoded.text, character);
    if (length > 1) decoded.bonus += length == 2 ? kForTwoBytes : kForMore;
    at += length;
  }
}

// Bytes that are none become U+FFFD. What may be completed yet is left over at the end.
DecodedUtf8 decodeUtf8(Bytes bytes, bool mayEndInside) {
  DecodedUtf8 decoded;
  const size_t characters = bytes.size();
  decoded.text.reserve(std::min(bytes.size(), kTellsLanguage) + 4);
  while (!bytes.empty()) {
    const ScanResult found = scanUnicode(UnicodeForm::kUtf8, false, bytes.data(), bytes.size());
    const Bytes wellFormed = bytes.first(found.wellFormed);
    decodeWellFormed(wellFormed, decoded);
    decoded.sequences += static_cast<size_t>(std::count_if(
        wellFormed.begin(), wellFormed.end(), [](uint8_t byte) { return byte >= 0xC0; }));
    if (found.end == ScanEnd::kAll || (found.end == ScanEnd::kIncomplete && mayEndInside)) break;
    decoded.text.push_back(kReplacement);
    if (isTooDamaged(++decoded.damages, characters)) break;
    bytes = bytes.subspan(found.wellFormed + found.badLength);
  }
  return decoded;
}

// Of scripts that no model knows, characters stand together as well.
int64_t costOfUnknownScripts(std::span<const char16_t> text) {
  constexpr int64_t kSameScript = 6 * kBit;
  constexpr int64_t kAnotherScript = 16 * kBit;
  int64_t cost = 0;
  int before = -1;
  for (const char16_t c : text) {
    if (c < 0x80) continue;
    const int block = c >> 7;
    cost += block == before ? kSameScript : kAnotherScript;
    before = block;
  }
  return cost;
}

// ---- Units ----

struct UnitForm {
  const char* name;
  UnicodeForm form;
  bool bigEndian;
  size_t unit;
};
constexpr UnitForm kUnitForms[] = {
    {"UTF-16LE", UnicodeForm::kUtf16, false, 2},
    {"UTF-16BE", UnicodeForm::kUtf16, true, 2},
    {"UTF-32LE", UnicodeForm::kUcs4, false, 4},
    {"UTF-32BE", UnicodeForm::kUcs4, true, 4},
};

// What it takes to believe in units where no NUL says so.
constexpr int64_t kWithoutNul = 8 * kBit;
constexpr int64_t kAgainstAscii = 24 * kBit;
// Units that mean nothing cost more than this.
constexpr int64_t kMostForAUnit = 11 * kBit;
// Of the units of a text that no model knows at least one in so many has a NUL.
constexpr uint64_t kUnitsPerNul = 8;
constexpr int64_t kUnlikelyInText = 10 * kBit;

char32_t unitAt(Bytes bytes, size_t at, const UnitForm& form) {
  char32_t value = 0;
  for (size_t i = 0; i < form.unit; ++i)
    value = value << 8 | bytes[at + (form.bigEndian ? i : form.unit - 1 - i)];
  return value;
}

std::u16string unitsOf(Bytes bytes, const UnitForm& form) {
  std::u16string text;
  for (size_t at = 0; at + form.unit <= bytes.size(); at += form.unit)
    append(text, unitAt(bytes, at, form));
  return text;
}

// Codes that no text has: control codes, and such as nobody has given a meaning.
size_t countUnlikely(const std::u16string& text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char16_t c) {
    if (c < 0x20) return c != '\t' && c != '\n' && c != '\r' && c != '\f';
    return (c >= 0x7F && c < 0xA0) || (c >= 0xE000 && c < 0xF900) || c >= 0xFFF0;
  }));
}

// Whether one byte in twenty is a blank of ASCII: half of a unit hardly ever is.
bool hasBlanks(Bytes bytes) {
  return static_cast<size_t>(std::count(bytes.begin(), bytes.end(), ' ')) * 20 > bytes.size();
}

// Where they would stand in ASCII.
bool hasManyNuls(const Evidence& evidence, const UnitForm& form) {
  const TextFacts& facts = evidence.facts;
  uint64_t right = 0;
  uint64_t wrong = 0;
  for (size_t place = 0; place < 4; ++place) {
    const bool isHigh = (place % form.unit == (form.bigEndian ? 0 : form.unit - 1));
    (isHigh ? right : wrong) += facts.nuls(place);
  }
  if (form.unit == 4) return right * form.unit * 2 > facts.size();
  return right * form.unit * kUnitsPerNul > facts.size() && wrong * 8 < right;
}

// The NULs of ASCII in units stand where the order of the bytes says.
bool mayHaveUnits(const Evidence& evidence, const UnitForm& form) {
  const TextFacts& facts = evidence.facts;
  if (facts.size() % form.unit != 0 && evidence.headIsWhole) return false;
  return facts.hasNuls() || (form.unit == 2 && evidence.headIsWhole);
}

}  // namespace

void addUtf8Reading(const Evidence& evidence, Readings& readings) {
  if (!evidence.facts.isUtf8() && !looksLikeUtf8(evidence.lines)) return;
  const DecodedUtf8 decoded = decodeUtf8(evidence.lines, evidence.mayEndInside);
  if (isTooDamaged(decoded.damages, evidence.lines.size()) || decoded.sequences < decoded.damages)
    return;
  const LanguageCost best = bestLanguage(decoded.text, evidence.priors);
  Reading reading;
  reading.charset = reading.decodeAs = "UTF-8";
  reading.language = best.language;
  reading.invalid = decoded.damages;
  const int64_t known = best.cost - std::min(decoded.bonus, kMostForUtf8);
  const int64_t unknown = costOfUnknownScripts(decoded.text);
  if (unknown < known) reading.language = kNoLanguage;
  reading.cost = std::min(known, unknown) - kUtf8IsUsual + damageCost(decoded.damages);
  reading.sameText = hashOf(decoded.text);
  readings.push_back(std::move(reading));
}

void addUnitReadings(const Evidence& evidence, Readings& readings) {
  if (!evidence.facts.hasNuls() && hasBlanks(evidence.head)) return;
  TellableCosts tellable(readings, evidence.head.size());
  const int64_t plain =
      plainCost(evidence.head.first(std::min(evidence.head.size(), 2 * kTellsLanguage)));
  for (const UnitForm& form : kUnitForms) {
    if (!mayHaveUnits(evidence, form)) continue;
    const Bytes bytes = evidence.head.first(evidence.head.size() / form.unit * form.unit);
    const ScanResult found = scanUnicode(form.form, form.bigEndian, bytes.data(), bytes.size());
    if (found.end == ScanEnd::kInvalid) continue;
    const std::u16string text =
        unitsOf(bytes.first(std::min(bytes.size(), kTellsLanguage * form.unit)), form);
    const size_t unlikely = countUnlikely(text);
    if (unlikely * 10 > text.size()) continue;
    const int64_t against = evidence.facts.hasNuls()   ? 0
                            : evidence.facts.isAscii() ? kAgainstAscii
                                                       : kWithoutNul;
    const int64_t prior = static_cast<int64_t>(unlikely) * kUnlikelyInText + against - plain;
    const LanguageCost best = bestLanguage(text, evidence.priors, tellable.most() - prior);
    const int64_t unknown = unknownCost(text);
    const bool isKnown = best.isFound() && best.cost <= unknown;
    if (!isKnown && !hasManyNuls(evidence, form)) continue;
    if (isKnown && best.cost > static_cast<int64_t>(text.size()) * kMostForAUnit) continue;
    const int64_t cost = std::min(unknown, best.cost);
    if (cost > tellable.most() - prior) continue;
    Reading reading;
    reading.charset = reading.decodeAs = form.name;
    reading.language = unknown < best.cost ? kNoLanguage : best.language;
    reading.cost = cost + prior;
    tellable.take(reading.cost);
    reading.sameText = hashOf(text);
    readings.push_back(std::move(reading));
  }
}

}  // namespace ksv_kit::judge
