#include "kit/judge/verdict.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "kit/charsets/name_matching.h"
#include "kit/engine.h"
#include "kit/judge/binary_content.h"
#include "kit/judge/confidence.h"
#include "kit/judge/declared_charset.h"
#include "kit/judge/misreading.h"

namespace ksv_kit::judge {
namespace {

constexpr double kSure = 0.9999;
constexpr char kAsciiName[] = "ISO-646IRV";
constexpr char kUtf8Name[] = "UTF-8";

// What a name that a text declares itself is worth, and one in its file name.
constexpr int64_t kDeclaredIsWorth = 40 * kBit;
constexpr int64_t kFileNameIsWorth = 8 * kBit;
constexpr int32_t kLanguageInFileNameIsWorth = 6 * kBit;

constexpr double kLeastTold = 0.0001;
constexpr size_t kMostGuesses = 16;

// From here on a text that is more than this of the sample is settled.
constexpr size_t kEnoughTelling = 2048;
constexpr double kSettled = 0.999;

// ---- Marks ----

struct Mark {
  std::string_view bytes;
  const char* charset;
};
// That of UTF-32 begins like that of UTF-16.
constexpr Mark kMarks[] = {
    {"\xEF\xBB\xBF", kUtf8Name},       {{"\xFF\xFE\0\0", 4}, "UTF-32LE"},
    {{"\0\0\xFE\xFF", 4}, "UTF-32BE"}, {"\xFF\xFE", "UTF-16LE"},
    {"\xFE\xFF", "UTF-16BE"},          {"\x84\x31\x95\x33", "GB18030"},
};

const Mark* markOf(Bytes head) {
  for (const Mark& mark : kMarks)
    if (head.size() >= mark.bytes.size() &&
        std::memcmp(head.data(), mark.bytes.data(), mark.bytes.size()) == 0)
      return &mark;
  return nullptr;
}

// ---- Names ----

// The charset of any of its names as the library spells it; as it is where it has none.
std::string canonical(const std::string& name) {
  const auto found = Engine::instance().names().findSource(name);
  return found ? found->display : name;
}

bool isCalled(const Reading& reading, const std::string& name) {
  const auto is = [&](const std::string& own) {
    return isSameButForCase(own, name) || (!own.empty() && isSameButForCase(canonical(own), name));
  };
  if (is(reading.charset) || is(reading.decodeAs)) return true;
  // The order of the bytes may be left open.
  return name.starts_with("UTF-16") && reading.charset.starts_with(name.substr(0, 6));
}

// ---- Line ends ----

ksv_line_end lineEndOf(uint64_t lineFeeds, uint64_t carriageReturns, uint64_t both) {
  const bool hasPairs = both != 0;
  const bool hasLineFeeds = lineFeeds > both;
  const bool hasReturns = carriageReturns > both;
  if (hasPairs + hasLineFeeds + hasReturns > 1) return KSV_LINE_ENDS_MIXED;
  if (hasPairs) return KSV_LINE_ENDS_CRLF;
  if (hasLineFeeds) return KSV_LINE_ENDS_LF;
  return hasReturns ? KSV_LINE_ENDS_CR : KSV_LINE_ENDS_NONE;
}

// In units of several bytes, of the beginning.
ksv_line_end lineEndOfUnits(Bytes head, size_t unit, bool bigEndian) {
  uint64_t lineFeeds = 0;
  uint64_t returns = 0;
  uint64_t both = 0;
  bool wasReturn = false;
  for (size_t at = 0; at + unit <= head.size(); at += unit) {
    const size_t low = bigEndian ? at + unit - 1 : at;
    bool isPlain = true;
    for (size_t i = 0; i < unit; ++i) isPlain = isPlain && (at + i == low || head[at + i] == 0);
    const bool isReturn = isPlain && head[low] == '\r';
    const bool isLineFeed = isPlain && head[low] == '\n';
    returns += isReturn;
    lineFeeds += isLineFeed;
    both += isLineFeed && wasReturn;
    wasReturn = isReturn;
  }
  return lineEndOf(lineFeeds, returns, both);
}

ksv_line_end lineEndIn(const std::string& charset, Bytes head, const TextFacts& facts) {
  if (charset.starts_with("UTF-16")) return lineEndOfUnits(head, 2, charset.ends_with("BE"));
  if (charset.starts_with("UTF-32")) return lineEndOfUnits(head, 4, charset.ends_with("BE"));
  return lineEndOf(facts.lineFeeds(), facts.carriageReturns(), facts.pairsOfBoth());
}

size_t countHigh(Bytes bytes) {
  return static_cast<size_t>(
      std::count_if(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte >= 0x80; }));
}

// ---- The verdict ----

class Verdict {
 public:
  Verdict(const TextSample& sample, const TextFacts& facts, const Hints& hints, bool isWhole)
      : sample_(sample),
        lines_(sample.lines(joined_)),
        head_(sample.head()),
        facts_(facts),
        hints_(hints),
        isUtf8_(facts.isUtf8() && (!isWhole || facts.utf8Waiting() == 0)),
        highBytes_(facts.isAscii() ? 0 : countHigh(lines_)),
        unknownCost_(facts.isAscii() ? kNoLimit : unknownCost(lines_)),
        evidence_{head_,
                  lines_,
                  sample.endsAnywhere() || !isWhole,
                  isWhole && facts.size() <= head_.size(),
                  facts,
                  priors_} {
    if (!hints.languages.empty()) priors_.expect(hints.languages);
    for (const std::string& word : wordsOfFileName(hints.fileName)) useWordOfFileName(word);
    findDeclared();
  }

  Detection take() {
    Detection detection;
    detection.bytes = facts_.size();
    if (facts_.size() == 0) {
      detection.content = KSV_CONTENT_EMPTY;
      return detection;
    }
    if (!addMarked()) addAll();
    keepAllowed();
    if (isBinary()) {
      detection.content = KSV_CONTENT_BINARY;
      return detection;
    }
    tell(detection);
    return detection;
  }

 private:
  void useWordOfFileName(const std::string& word) {
    std::string name = word;
    std::replace(name.begin(), name.end(), '_', '-');
    const Language language = languageNamed(name);
    if (language != kNoLanguage) priors_.favour(language, kLanguageInFileNameIsWorth);
    if (name.size() > 3 && Engine::instance().names().findSource(word))
      inFileName_ = canonical(word);
  }

  void findDeclared() {
    const auto found = declaredCharset({reinterpret_cast<const char*>(head_.data()), head_.size()});
    if (found)
      declared_ = {canonical(found->name), found->where};
    else if (!hints_.declared.empty())
      declared_ = {canonical(hints_.declared), "what is known of it"};
  }

  bool addMarked() {
    const Mark* const mark = markOf(head_);
    if (mark == nullptr) return false;
    Reading reading;
    reading.charset = reading.decodeAs = mark->charset;
    reading.ground = "it begins with a byte-order mark";
    if (reading.charset == kUtf8Name) {
      Readings found;
      addUtf8Reading(evidence_, found);
      if (!found.empty()) reading.language = found.front().language;
      reading.invalid = isUtf8_ ? 0 : 1;
    }
    readings_.push_back(std::move(reading));
    markLength_ = static_cast<uint32_t>(mark->bytes.size());
    isSure_ = true;
    return true;
  }

  void addAll() {
    if (facts_.hasNuls()) addUnitReadings(evidence_, readings_);
    if (facts_.hasNuls() && !readings_.empty() && leastCostIsText()) return sort();
    if (facts_.isAscii()) {
      addEscapedReadings(evidence_, readings_);
      if (!facts_.hasNuls() && readings_.empty() && hasControlsOfNoText())
        addUnitReadings(evidence_, readings_);
      if (readings_.empty() || !readings_.front().decodeAs.starts_with("CP5")) addAscii();
    } else {
      addOfBytes();
    }
    addDeclared();
    sort();
  }

  // Digits and capitals may be halves of kana, and never are: units of ASCII bytes are believed in
  // only where there are bytes among them that stand in no text.
  bool hasControlsOfNoText() const {
    return std::any_of(head_.begin(), head_.end(), [](uint8_t byte) {
      return byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r' && byte != '\f' &&
             byte != 0x1B;
    });
  }

  // Whether units are text, and not numbers that happen to be well-formed.
  bool leastCostIsText() const {
    return std::any_of(readings_.begin(), readings_.end(),
                       [](const Reading& reading) { return reading.language != kNoLanguage; });
  }

  void addAscii() {
    Reading reading;
    reading.charset = kAsciiName;
    reading.decodeAs = kUtf8Name;
    const PlainCosts plain(lines_);
    LanguageCost best;
    for (size_t i = 0; i < languageCount(); ++i) {
      const auto language = static_cast<Language>(i);
      if (languageFacts(language).script == Script::kLatin)
        best.improve({language, plain.of(language) + priors_.of(language)});
    }
    reading.language = isClear(best, plain) ? best.language : kNoLanguage;
    reading.ground = "all of its bytes are ASCII";
    readings_.push_back(std::move(reading));
  }

  // A word or two say nothing of a language.
  bool isClear(const LanguageCost& best, const PlainCosts& plain) const {
    constexpr int64_t kClear = 5 * kBit;
    for (size_t i = 0; i < languageCount(); ++i) {
      const auto language = static_cast<Language>(i);
      if (language == best.language || languageFacts(language).script != Script::kLatin) continue;
      if (plain.of(language) + priors_.of(language) < best.cost + kClear) return false;
    }
    return true;
  }

  void addOfBytes() {
    addUtf8Reading(evidence_, readings_);
    const bool isSurelyUtf8 = !readings_.empty() && isUtf8_ && highBytes_ >= kManyHigh;
    if (!isSurelyUtf8) {
      addCharsetReadings();
      if (!facts_.hasNuls()) addUnitReadings(evidence_, readings_);
    }
    if (isImplausible()) addDamagedReadings(evidence_, readings_);
  }

  // What is tried later is given up sooner: where no two bytes above ASCII follow each other the
  // text is hardly made of pairs, and where all go by pairs it hardly is of single bytes.
  void addCharsetReadings() {
    const auto follow = std::adjacent_find(
        lines_.begin(), lines_.end(), [](uint8_t a, uint8_t b) { return a >= 0x80 && b >= 0x80; });
    if (follow == lines_.end()) {
      addSingleByteReadings(evidence_, readings_);
      addMultiByteReadings(evidence_, readings_);
      return;
    }
    addMultiByteReadings(evidence_, readings_);
    if (!isPlainlyOfPairs()) addSingleByteReadings(evidence_, readings_);
  }

  // Text in an alphabet costs more than this for a byte, when its bytes are single.
  bool isPlainlyOfPairs() const {
    if (highBytes_ < kManyPairs) return false;
    return std::any_of(readings_.begin(), readings_.end(), [&](const Reading& reading) {
      return reading.charset != kUtf8Name &&
             reading.cost * 2 < static_cast<int64_t>(highBytes_) * kPlainlyOfPairs;
    });
  }

  bool isImplausible() const {
    return std::none_of(readings_.begin(), readings_.end(),
                        [&](const Reading& reading) { return reading.cost < unknownCost_; });
  }

  // What is declared and does not come by itself: other charsets that the library can read.
  void addDeclared() {
    if (declared_.name.empty()) return;
    const auto is = [&](const Reading& reading) { return isCalled(reading, declared_.name); };
    if (std::any_of(readings_.begin(), readings_.end(), is) || declared_.name.starts_with("UTF-16"))
      return;
    const auto text = decodeInSteps(declared_.name.c_str(), lines_);
    if (!text) return;
    const LanguageCost best = bestLanguage(*text, priors_);
    Reading reading;
    reading.charset = reading.decodeAs = declared_.name;
    reading.language = best.language;
    reading.cost = best.cost + kUndeclaredIsUnlikely;
    reading.sameText = hashOf(*text);
    readings_.push_back(std::move(reading));
  }

  void favourNamed(Reading& reading) const {
    if (!declared_.name.empty() && isCalled(reading, declared_.name)) {
      reading.cost -= kDeclaredIsWorth;
      if (reading.ground.empty())
        reading.ground = std::string(declared_.where) + " says so, and its bytes are that";
    }
    if (!inFileName_.empty() && isCalled(reading, inFileName_)) reading.cost -= kFileNameIsWorth;
  }

  void sort() {
    for (Reading& reading : readings_) favourNamed(reading);
    std::stable_sort(readings_.begin(), readings_.end(),
                     [](const Reading& a, const Reading& b) { return a.cost < b.cost; });
  }

  void keepAllowed() {
    if (hints_.charsets.empty()) return;
    std::erase_if(readings_, [&](const Reading& reading) {
      return std::none_of(
          hints_.charsets.begin(), hints_.charsets.end(),
          [&](const std::string& name) { return isCalled(reading, canonical(name)); });
    });
  }

  bool isBinary() const {
    if (markLength_ != 0) return false;
    if (looksBinary(head_)) return true;
    const bool hasUnits = !readings_.empty() && readings_.front().charset.starts_with("UTF-") &&
                          readings_.front().charset != kUtf8Name;
    if (hasUnits) return false;
    return facts_.nuls() * kTextPerNul > facts_.size() ||
           facts_.oddControls() * kTextPerControl > facts_.size();
  }

  void tell(Detection& detection) {
    if (readings_.empty()) {
      detection.content = KSV_CONTENT_UNKNOWN;
      return;
    }
    const std::vector<double> confidences = confidences_();
    for (size_t i = 0; i < readings_.size() && detection.guesses.size() < kMostGuesses; ++i)
      if (i == 0 || confidences[i] >= kLeastTold)
        detection.guesses.push_back(guessOf(readings_[i], confidences[i]));
    if (detection.guesses.front().charset == kUtf8Name && isUtf8_)
      detection.misreadAs = misreadingOf(lines_);
  }

  std::vector<double> confidences_() const {
    if (isSure_) return {kSure};
    return confidencesOf(readings_, highBytes_, facts_.hasNuls() ? kNoLimit : unknownCost_);
  }

  Guess guessOf(const Reading& reading, double confidence) const {
    Guess guess;
    guess.charset = reading.charset;
    guess.decodeAs = reading.decodeAs;
    if (reading.language != kNoLanguage) guess.language = languageFacts(reading.language).name;
    guess.confidence = std::min(confidence, kSure);
    guess.reason = reasonOf(reading);
    guess.invalidOffset = invalidOffsetOf(reading);
    guess.lineEnd = lineEndIn(reading.charset, head_, facts_);
    guess.markLength = markLength_;
    return guess;
  }

  // Of what was looked at.
  uint64_t invalidOffsetOf(const Reading& reading) const {
    if (reading.invalid == 0) return KSV_NO_OFFSET;
    const auto inLines = firstInvalid(reading.decodeAs.c_str(), lines_);
    return inLines ? sample_.placeOf(static_cast<size_t>(*inLines)) : KSV_NO_OFFSET;
  }

  std::string reasonOf(const Reading& reading) const {
    if (!reading.ground.empty()) return reading.ground;
    if (reading.invalid != 0)
      return "its characters are text, but for " + std::to_string(reading.invalid) +
             " places that are damaged";
    if (reading.charset == kUtf8Name) return "all of its bytes are UTF-8";
    if (reading.language == kNoLanguage) return "its bytes fit";
    return std::string("its characters are those of text in ") +
           languageFacts(reading.language).name;
  }

  // So many bytes above ASCII are UTF-8 by chance in no text.
  static constexpr size_t kManyHigh = 64;
  static constexpr size_t kManyPairs = 160;
  static constexpr int64_t kPlainlyOfPairs = 9 * kBit;  // for two bytes
  static constexpr int64_t kUndeclaredIsUnlikely = 4 * kBit;
  static constexpr uint64_t kTextPerControl = 24;
  static constexpr uint64_t kTextPerNul = 64;

  struct Declared {
    std::string name;
    const char* where = "";
  };

  const TextSample& sample_;
  std::vector<uint8_t> joined_;
  const Bytes lines_;
  const Bytes head_;
  const TextFacts& facts_;
  const Hints& hints_;
  const bool isUtf8_;
  const size_t highBytes_;
  const int64_t unknownCost_;  // of the lines, in a charset that nobody knows
  LanguagePriors priors_;
  const Evidence evidence_;
  Declared declared_;
  std::string inFileName_;
  Readings readings_;
  uint32_t markLength_ = 0;
  bool isSure_ = false;
};

}  // namespace

Detection verdictOn(const TextSample& sample, const TextFacts& facts, const Hints& hints,
                    bool isWhole) {
  return Verdict(sample, facts, hints, isWhole).take();
}

bool isSettledBy(const Detection& detection, const TextSample& sample, const TextFacts& facts) {
  if (detection.content == KSV_CONTENT_BINARY) return facts.size() >= TextSample::kHead;
  if (detection.guesses.empty()) return false;
  const Guess& best = detection.guesses.front();
  if (best.confidence < kSettled || best.charset == kAsciiName) return false;
  const bool isOfHead = best.markLength != 0 || best.charset.starts_with("UTF-16") ||
                        best.charset.starts_with("UTF-32");
  return (isOfHead ? facts.size() : sample.telling()) >= kEnoughTelling;
}

}  // namespace ksv_kit::judge
