#include "cli/text/text_readings.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "cli/system/failure.h"
#include "cli/system/streams.h"
#include "cli/text/conversion_settings.h"
#include "cli/text/language_model.h"
#include "cli/text/text_conversion.h"
#include "kit/text/utf8_characters.h"

namespace ksv_cli {

using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;
using ksv_kit::Utf8Characters;

namespace {

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

// Collects the readings of one text.
class Readings {
 public:
  Readings(RereadableText& text, const ByteFacts& facts, const CharsetNames& names,
           TextLanguage language)
      : text_(text), facts_(facts), names_(names), language_(language) {}

  void addUnicodeForms() {
    if (facts_.isUtf8)
      if (const auto charset = names_.findSource(facts_.isAscii() ? kAscii : kUtf8))
        addUnicode(charset->display, *charset, true);
    for (const UnicodeCandidate& candidate : kUnicodeCandidates) {
      const bool mayBe = facts_.isUsed[0] || (candidate.unit == 2 && facts_.size <= kLongestLine);
      const std::optional<CharsetChoice> charset = names_.findSource(candidate.name);
      if (!mayBe || facts_.size % candidate.unit != 0 || !charset) continue;
      addUnicode(candidate.name, *charset, facts_.isUsed[0]);
    }
  }

  void addCharsetsOfPairs() {
    if (facts_.isAscii()) return;
    for (const PairCharset& known : kPairCharsets) {
      const auto isHeld = [&](const TextReading& reading) { return reading.name == known.butFor; };
      if (known.isUnits && (facts_.size % 2 != 0 || !facts_.isUsed[0])) continue;
      if (known.butFor != nullptr && std::any_of(readings_.begin(), readings_.end(), isHeld))
        continue;
      const std::optional<CharsetChoice> charset = names_.findSource(readAs(known, names_));
      TextWeighing weighing({known.language});
      if (!charset || !weigh(text_, names_, *charset, weighing)) continue;
      const bool isAllowed = !language_ || *language_ == known.language;
      readings_.push_back(
          {known.name, *charset, isAllowed, false, weighing.leastCost(), weighing.hash(), nullptr});
    }
  }

  void addSingleByteCharsets(const SingleByteTables& tables) {
    if (facts_.isAscii()) return;
    for (const SingleByteTable& table : tables.all(names_))
      if (table.holds(facts_))
        readings_.push_back({table.name, *names_.findSource(table.name), !language_, false,
                             table.cost(facts_), 0, &table});
  }

  std::vector<TextReading> take() {
    std::stable_sort(readings_.begin(), readings_.end(),
                     [](const TextReading& a, const TextReading& b) { return a.cost < b.cost; });
    return std::move(readings_);
  }

 private:
  void addUnicode(const std::string& shown, const CharsetChoice& charset, bool isAllowed) {
    TextWeighing weighing(allLanguages());
    if (weigh(text_, names_, charset, weighing))
      readings_.push_back(
          {shown, charset, isAllowed, true, weighing.leastCost(), weighing.hash(), nullptr});
  }

  RereadableText& text_;
  const ByteFacts& facts_;
  const CharsetNames& names_;
  const TextLanguage language_;
  std::vector<TextReading> readings_;
};

}  // namespace

bool TextReading::isSameText(const TextReading& other, const ByteFacts& facts) const {
  if (table != nullptr && other.table != nullptr)
    return table->differingBytes(*other.table, facts) == 0;
  return table == nullptr && other.table == nullptr && hash == other.hash;
}

std::vector<TextReading> readingsOf(RereadableText& text, const ByteFacts& facts,
                                    const CharsetNames& names, TextLanguage language,
                                    const SingleByteTables& singleBytes) {
  Readings readings(text, facts, names, language);
  readings.addUnicodeForms();
  readings.addCharsetsOfPairs();
  readings.addSingleByteCharsets(singleBytes);
  return readings.take();
}

bool isWhollyOf(RereadableText& text, const CharsetNames& names, const CharsetChoice& charset) {
  TextWeighing unused({});
  return weigh(text, names, charset, unused);
}

CharsetChoice asItIsRead(const CharsetChoice& charset, const CharsetNames& names) {
  for (const PairCharset& known : kPairCharsets)
    if (charset.display == known.name) return *names.findSource(readAs(known, names));
  return charset;
}

}  // namespace ksv_cli
