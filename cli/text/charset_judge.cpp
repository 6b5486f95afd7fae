#include "cli/text/charset_judge.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "cli/system/failure.h"
#include "cli/system/process.h"
#include "cli/text/file_converter.h"
#include "cli/text/text_conversion.h"
#include "cli/text/text_declaration.h"
#include "cli/text/utf8_characters.h"

namespace ksv_cli {
namespace {

// How many bits a reading has to lead by: 12 bits mean that it is 4,096 times likelier. A
// long text has to show more, since no model is quite true, and most in the charsets of
// one byte: text all in capitals reads as small letters in a charset that has them swapped.
constexpr uint64_t kClearLead = 12 * kBit;
constexpr uint64_t kClearLeadInLanguage = 8 * kBit;
constexpr uint64_t kBytesPerBitOfLead = 5;
constexpr uint64_t kSingleBytesPerBitOfLead = 1;

// What a reading in another language has to be better by to be believed against the
// language that was named.
constexpr uint64_t kBeliefInLanguage = 4 * kBit;
// In fewer bytes there is nothing to be seen, and the language alone has to do.
constexpr uint64_t kLeastToSee = 6;

// What UTF-8 with but a few characters, which other charsets have by chance, may cost more than
// another reading; and how many bytes above 7F are few, without any character of three bytes and
// with.
constexpr uint64_t kBeliefInUtf8 = 4 * kBit;
constexpr uint64_t kFewShortBytes = 32;
constexpr uint64_t kFewLongBytes = 9;

// What text costs in a charset that nobody here knows: a byte above 7F the seven bits that
// one in 128 takes, and a change from ASCII and back hardly less than in any
// language. A reading that is no better is none.
constexpr uint64_t kCostOfUnknownByte = 7 * kBit;
constexpr uint64_t kCostOfLeavingAscii = 14;
constexpr uint64_t kCostOfReturn = 1 * kBit;

constexpr size_t kMostNamed = 8;

// A text without a NUL would be UTF-16 without a blank or a line end. That is not read, but up
// to this length it can speak against other readings.
constexpr uint64_t kLongestLine = 4096;

struct PairCharset {
  const char* name;    // as users know it
  const char* readAs;  // what has its vendors' characters as well; null: itself
  Language language;
  const char* butFor;  // only if that one does not hold the text
  bool isUnits;        // of two bytes, ASCII too
};
constexpr PairCharset kPairCharsets[] = {
    {"Shift_JIS", "WINDOWS31J", Language::kJapanese, nullptr, false},
    {"EUC-JP", "EUC-JP-MS", Language::kJapanese, nullptr, false},
    {"EUC-JP-FIX", nullptr, Language::kJapanese, nullptr, true},
    {"ChineseGBK", nullptr, Language::kSimplifiedChinese, nullptr, false},
    {"GB18030", nullptr, Language::kSimplifiedChinese, "ChineseGBK", false},
    {"ChineseBIG5", nullptr, Language::kTraditionalChinese, nullptr, false},
    {"Big5-HKSCS", nullptr, Language::kTraditionalChinese, "ChineseBIG5", false},
    {"KoreanKSC", nullptr, Language::kKorean, nullptr, false},
};

struct UnicodeCandidate {
  const char* name;
  uint64_t unit;
};
constexpr UnicodeCandidate kUnicodeCandidates[] = {
    {"UTF-16LE", 2}, {"UTF-16BE", 2}, {"UCS-4LE", 4}, {"UCS-4BE", 4}};

constexpr char kAscii[] = "ISO-646IRV";
constexpr char kUtf8[] = "UTF-8";
// Of mail the form that has the characters of vendors comes first.
constexpr char kMail[] = "ISO-2022-JP";
constexpr char kMailAsRead[] = "CP50220";
constexpr char kMailWithPlanes[] = "ISO-2022-JP-2004";
constexpr char kAnother[] = "another charset";
constexpr char kItsBytesFit[] = "its bytes fit best";

// A source that remembers that it failed itself, whatever becomes of the failure.
class WatchedSource : public ByteSource {
 public:
  explicit WatchedSource(ByteSource& source) : source_(source) {}
  size_t read(uint8_t* buffer, size_t size) override {
    try {
      return source_.read(buffer, size);
    } catch (const Failure&) {
      hasFailed_ = true;
      throw;
    }
  }
  bool hasFailed() const { return hasFailed_; }

 private:
  ByteSource& source_;
  bool hasFailed_ = false;
};

// What a text costs in each of some languages, and a number by which equal texts are known.
class TextWeighing : public ByteSink {
 public:
  explicit TextWeighing(const std::vector<Language>& languages)
      : costs_(languages.begin(), languages.end()) {}

  void write(const uint8_t* bytes, size_t size) override {
    for (size_t i = 0; i < size; ++i) {
      hash_ = (hash_ ^ bytes[i]) * 0x100000001B3u;
      characters_.take(bytes[i], [this](uint32_t character) {
        for (TextCost& cost : costs_) cost.take(character);
      });
    }
  }

  uint64_t leastCost() const {
    uint64_t least = UINT64_MAX;
    for (const TextCost& cost : costs_) least = std::min(least, cost.cost());
    return least;
  }
  uint64_t hash() const { return hash_; }

 private:
  std::vector<TextCost> costs_;
  Utf8Characters characters_;
  uint64_t hash_ = 0xCBF29CE484222325u;
};

// False when the text is not wholly of the charset.
bool weigh(RereadableText& text, const CharsetNames& names, const CharsetChoice& charset,
           ByteSink& weighing) {
  ConversionSettings settings;
  const std::optional<CharsetChoice> utf8 = names.find(kUtf8);
  if (!utf8) return false;
  settings.source = charset;
  settings.target = *utf8;
  settings.blockSize = 64 * 1024;
  const std::unique_ptr<ByteSource> opened = text.reopen();
  WatchedSource source(*opened);
  try {
    convertText(settings, source, weighing);
    return true;
  } catch (const Failure&) {
    if (source.hasFailed()) throw;
    return false;
  }
}

std::vector<Language> allLanguages() {
  std::vector<Language> languages;
  for (size_t i = 0; i < kLanguageCount; ++i) languages.push_back(static_cast<Language>(i));
  return languages;
}

const char* readAs(const PairCharset& charset, const CharsetNames& names) {
  const bool hasMore = charset.readAs != nullptr && names.find(charset.readAs);
  return hasMore ? charset.readAs : charset.name;
}

std::string reasonFor(const std::string& name, const std::string& display, ByteOrder order,
                      const std::string& why) {
  std::string reason = "read as " + display;
  if (name != display) reason += ", which holds " + name;
  reason += ": " + why;
  if (order != ByteOrder::kOpen)
    reason += order == ByteOrder::kBig ? ", big-endian" : ", little-endian";
  return reason;
}

// A declaration of a charset whose units are no bytes cannot be meant where it was read.
bool canDeclareItself(const CharsetChoice& charset) {
  return !charset.hasByteOrder() && charset.name != "euc-jp-fix" && charset.name != "oasys_online";
}

// ASCII costs what it does in every language, or long texts of it would decide.
uint64_t costOfUnknown(const ByteFacts& facts) {
  const LanguageModel& model = LanguageModel::of(Language::kLatin);
  const auto costOf = [&](uint8_t before, uint8_t byte) -> uint64_t {
    const bool isBehindAscii = before < 0x80;
    if (byte >= 0x80) return kCostOfUnknownByte + (isBehindAscii ? kCostOfLeavingAscii : 0);
    const uint8_t group = LanguageModel::groupOf(byte);
    const uint64_t cost = model.cost(LanguageModel::kStart, byte, group);
    return cost + (isBehindAscii ? 0 : kCostOfReturn);
  };
  uint64_t total = costOf(' ', facts.first);
  for (const BytePair& pair : facts.pairs) total += pair.count * costOf(pair.before, pair.byte);
  return total;
}

// Whether UTF-8 has but so few characters that bytes in another charset may look like them: of
// three bytes each that is rarer, but there are Thai words that do.
bool mayBeChance(const ByteFacts& facts) {
  const auto isUsed = [&](size_t first, size_t end) {
    return std::find(facts.isUsed + first, facts.isUsed + end, true) != facts.isUsed + end;
  };
  if (isUsed(0xF0, 0x100)) return false;
  return facts.highBytes() <= (isUsed(0xE0, 0xF0) ? kFewLongBytes : kFewShortBytes);
}

// Whether a text is mostly ASCII with a few bytes of something else: a word of German is
// a Chinese character to whoever supposes that language.
bool saysLittle(const ByteFacts& facts) {
  constexpr uint64_t kLeastText = 24;
  constexpr uint64_t kFewHighBytes = 8;
  return facts.size >= kLeastText && facts.highBytes() <= kFewHighBytes;
}

}  // namespace

struct CharsetJudge::Reading {
  std::string name;
  CharsetChoice charset;
  bool isAllowed;  // of the language that is known, or of none
  bool isUnicode;
  uint64_t cost;
  uint64_t hash;
  const SingleByteTable* table;

  // What is valid as UTF-8 is never read as anything else, though it may be refused.
  bool isUtf8() const { return name == kUtf8; }

  bool isSameText(const Reading& other, const ByteFacts& facts) const {
    if (table != nullptr && other.table != nullptr)
      return table->differingBytes(*other.table, facts) == 0;
    return table == nullptr && other.table == nullptr && hash == other.hash;
  }
};

TextLanguage textLanguageNamed(std::string_view name) {
  if (name == "ja") return Language::kJapanese;
  if (name == "zh-cn") return Language::kSimplifiedChinese;
  if (name == "zh-tw") return Language::kTraditionalChinese;
  if (name == "ko") return Language::kKorean;
  return std::nullopt;
}

TextLanguage textLanguageOfUser() {
  std::string locale;
  for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"})
    if (locale.empty()) locale = platform::environmentValue(variable);
  const auto isOf = [&](const char* language) {
    const size_t length = std::strlen(language);
    return locale.starts_with(language) &&
           (locale.size() == length || std::strchr("_-.@", locale[length]) != nullptr);
  };
  if (isOf("ja")) return Language::kJapanese;
  if (isOf("ko")) return Language::kKorean;
  if (isOf("zh_TW") || isOf("zh_HK") || isOf("zh_MO") || isOf("zh_Hant"))
    return Language::kTraditionalChinese;
  if (isOf("zh_CN") || isOf("zh_SG") || isOf("zh_Hans")) return Language::kSimplifiedChinese;
  return std::nullopt;
}

CharsetJudge::CharsetJudge(const CharsetNames& names, TextLanguage language, bool guess,
                           bool isSupposed)
    : names_(names),
      language_(language),
      guess_(guess),
      withoutLanguage_(isSupposed ? std::make_unique<const CharsetJudge>(names, std::nullopt, guess)
                                  : nullptr) {}

JudgedText CharsetJudge::judge(const std::string& input) const {
  RereadableText text(input);
  if (text.beginning().empty()) {
    const std::optional<CharsetChoice> charset = names_.findSource(kUtf8);
    if (!charset) throw Failure("is empty, and the charset directory does not have UTF-8");
    return {text.release(), {*charset, "read as UTF-8: it is empty"}};
  }
  std::optional<ChosenSource> chosen = byMark(text.beginning());
  if (!chosen) chosen = byDeclaration(text);
  if (chosen) return {text.release(), *chosen};
  const ByteFacts facts = byteFacts(*text.reopen());
  chosen = byForm(facts);
  if (!chosen && withoutLanguage_ != nullptr && saysLittle(facts))
    chosen = withoutLanguage_->byReadings(text, facts);
  if (!chosen) chosen = byReadings(text, facts);
  return {text.release(), *chosen};
}

std::optional<ChosenSource> CharsetJudge::byMark(const std::vector<uint8_t>& beginning) const {
  // The mark of UCS-4 begins like that of UTF-16.
  for (const char* name : {kUtf8, "ISO-10646-UCS-4", "UTF-16"}) {
    std::optional<CharsetChoice> charset = names_.findSource(name);
    bool bigEndian = false;
    if (!charset ||
        byteOrderMark(charset->form, false, beginning.data(), beginning.size(), bigEndian) == 0)
      continue;
    if (charset->hasByteOrder()) charset->order = bigEndian ? ByteOrder::kBig : ByteOrder::kLittle;
    return ChosenSource{*charset, reasonFor(charset->display, charset->display, charset->order,
                                            "it begins with a byte-order mark")};
  }
  return std::nullopt;
}

std::optional<ChosenSource> CharsetJudge::byDeclaration(RereadableText& text) const {
  const std::vector<uint8_t>& beginning = text.beginning();
  const std::optional<std::string> name =
      declaredCharset({reinterpret_cast<const char*>(beginning.data()), beginning.size()});
  if (!name) return std::nullopt;
  std::optional<CharsetChoice> charset = names_.findSource(*name);
  if (!charset || !canDeclareItself(*charset)) return std::nullopt;
  std::string shown = charset->display;
  for (const PairCharset& known : kPairCharsets)
    if (shown == known.name) charset = names_.findSource(readAs(known, names_));
  TextWeighing unused({});
  if (!weigh(text, names_, *charset, unused)) return std::nullopt;
  return ChosenSource{*charset,
                      reasonFor(shown, charset->display, ByteOrder::kOpen, "it declares " + *name)};
}

std::optional<ChosenSource> CharsetJudge::byForm(const ByteFacts& facts) const {
  const auto chosen = [&](const char* name, const char* read) -> std::optional<ChosenSource> {
    const std::optional<CharsetChoice> charset = names_.findSource(read);
    if (!charset) return std::nullopt;
    return ChosenSource{*charset, reasonFor(name, read, ByteOrder::kOpen, kItsBytesFit)};
  };
  // Text whose escape sequences name pairs is mail, though it be damaged: then it is told
  // where.
  if (facts.isIso2022 || (facts.designatesPairs && facts.isAscii())) {
    if (facts.designatesPlanes) return chosen(kMailWithPlanes, kMailWithPlanes);
    return chosen(kMail, names_.find(kMailAsRead) ? kMailAsRead : kMail);
  }
  if (facts.hasOddControls()) return std::nullopt;
  if (facts.isAscii()) return chosen(kAscii, kAscii);
  if (facts.isUtf8 && !mayBeChance(facts)) return chosen(kUtf8, kUtf8);
  return std::nullopt;
}

ChosenSource CharsetJudge::byReadings(RereadableText& text, const ByteFacts& facts) const {
  std::vector<Reading> found = readings(text, facts);
  std::stable_sort(found.begin(), found.end(),
                   [](const Reading& a, const Reading& b) { return a.cost < b.cost; });
  return choose(found, facts);
}

std::vector<CharsetJudge::Reading> CharsetJudge::readings(RereadableText& text,
                                                          const ByteFacts& facts) const {
  std::vector<Reading> result;
  addUnicodeForms(text, facts, result);
  addCharsetsOfPairs(text, facts, result);
  addSingleByteCharsets(facts, result);
  return result;
}

void CharsetJudge::addCharsetsOfPairs(RereadableText& text, const ByteFacts& facts,
                                      std::vector<Reading>& readings) const {
  if (facts.isAscii()) return;
  for (const PairCharset& known : kPairCharsets) {
    const auto isHeld = [&](const Reading& reading) { return reading.name == known.butFor; };
    if (known.isUnits && (facts.size % 2 != 0 || !facts.isUsed[0])) continue;
    if (known.butFor != nullptr && std::any_of(readings.begin(), readings.end(), isHeld)) continue;
    const std::optional<CharsetChoice> charset = names_.findSource(readAs(known, names_));
    TextWeighing weighing({known.language});
    if (!charset || !weigh(text, names_, *charset, weighing)) continue;
    const bool isAllowed = !language_ || *language_ == known.language;
    readings.push_back(
        {known.name, *charset, isAllowed, false, weighing.leastCost(), weighing.hash(), nullptr});
  }
}

void CharsetJudge::addUnicodeForms(RereadableText& text, const ByteFacts& facts,
                                   std::vector<Reading>& readings) const {
  const auto add = [&](const std::string& shown, const CharsetChoice& charset, bool isAllowed) {
    TextWeighing weighing(allLanguages());
    if (weigh(text, names_, charset, weighing))
      readings.push_back(
          {shown, charset, isAllowed, true, weighing.leastCost(), weighing.hash(), nullptr});
  };
  if (facts.isUtf8)
    if (const auto charset = names_.findSource(facts.isAscii() ? kAscii : kUtf8))
      add(charset->display, *charset, true);
  for (const UnicodeCandidate& candidate : kUnicodeCandidates) {
    const bool mayBe = facts.isUsed[0] || (candidate.unit == 2 && facts.size <= kLongestLine);
    const std::optional<CharsetChoice> charset = names_.findSource(candidate.name);
    if (!mayBe || facts.size % candidate.unit != 0 || !charset) continue;
    add(candidate.name, *charset, facts.isUsed[0]);
  }
}

void CharsetJudge::addSingleByteCharsets(const ByteFacts& facts,
                                         std::vector<Reading>& readings) const {
  if (facts.isAscii()) return;
  for (const SingleByteTable& table : singleBytes_.all(names_))
    if (table.holds(facts))
      readings.push_back({table.name, *names_.findSource(table.name), !language_, false,
                          table.cost(facts), 0, &table});
}

uint64_t CharsetJudge::leastLead() const { return language_ ? kClearLeadInLanguage : kClearLead; }

// Between two charsets of one byte only the bytes count that are different characters in them.
uint64_t CharsetJudge::clearLead(const Reading& best, const Reading& other,
                                 const ByteFacts& facts) const {
  if (best.table != nullptr && other.table != nullptr)
    return leastLead() +
           best.table->differingBytes(*other.table, facts) * kBit / kSingleBytesPerBitOfLead;
  const uint64_t bytesPerBit =
      best.table != nullptr ? kSingleBytesPerBitOfLead : kBytesPerBitOfLead;
  return leastLead() + facts.highBytes() * kBit / bytesPerBit;
}

uint64_t CharsetJudge::leadOverUnknown(const ByteFacts& facts) const {
  return leastLead() + facts.highBytes() * kBit / kBytesPerBitOfLead;
}

// The names of the readings that the best one does not clearly lead.
std::vector<std::string> CharsetJudge::rivals(const std::vector<Reading>& readings,
                                              const Reading& best, const ByteFacts& facts) const {
  std::vector<std::string> names;
  for (const Reading& reading : readings) {
    if (&reading == &best || reading.isSameText(best, facts)) continue;
    const bool isStranger = !reading.isAllowed && facts.size >= kLeastToSee;
    const bool isRival =
        reading.isAllowed
            ? reading.isUtf8() || reading.cost < best.cost + clearLead(best, reading, facts)
            : isStranger && reading.cost + kBeliefInLanguage < best.cost;
    if (isRival) names.push_back(reading.name);
  }
  const bool mayBeUnknown = !language_ || best.isUnicode;
  if (mayBeUnknown && costOfUnknown(facts) < best.cost + leadOverUnknown(facts))
    names.push_back(kAnother);
  return names;
}

ChosenSource CharsetJudge::choose(const std::vector<Reading>& readings,
                                  const ByteFacts& facts) const {
  const auto isPlain = [](const Reading& reading) {
    return reading.isUtf8() || reading.name == kAscii;
  };
  const auto utf8 = std::find_if(readings.begin(), readings.end(), isPlain);
  if (utf8 != readings.end() && utf8->cost <= readings.front().cost + kBeliefInUtf8)
    return chosenReading(*utf8);
  const auto best = std::find_if(readings.begin(), readings.end(),
                                 [](const Reading& reading) { return reading.isAllowed; });
  if (best == readings.end()) throw Failure("no charset fits its bytes; --from names one");
  std::vector<std::string> names = rivals(readings, *best, facts);
  if (!names.empty() && !guess_) {
    names.insert(names.begin(), best->name);
    if (names.size() > kMostNamed) {
      names.resize(kMostNamed);
      names.back() = kAnother;
    }
    throw Failure("may be " + joinedByOr(names) + "; --from names one of them, --guess takes " +
                  names.front());
  }
  return chosenReading(*best);
}

ChosenSource CharsetJudge::chosenReading(const Reading& reading) {
  const CharsetChoice& charset = reading.charset;
  const std::string& held = reading.isUnicode ? charset.display : reading.name;
  return {charset, reasonFor(held, charset.display, charset.order, kItsBytesFit)};
}

}  // namespace ksv_cli
