#include "cli/text/reading_choice.h"

#include <algorithm>
#include <utility>

#include "cli/system/failure.h"
#include "cli/text/language_model.h"

namespace ksv_cli {

using ksv_kit::ByteOrder;
using ksv_kit::CharsetChoice;

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
// another reading.
constexpr uint64_t kBeliefInUtf8 = 4 * kBit;

// What text costs in a charset that nobody here knows: a byte above 7F the seven bits that
// one in 128 takes, and a change from ASCII and back hardly less than in any
// language. A reading that is no better is none.
constexpr uint64_t kCostOfUnknownByte = 7 * kBit;
constexpr uint64_t kCostOfLeavingAscii = 14;
constexpr uint64_t kCostOfReturn = 1 * kBit;

constexpr size_t kMostNamed = 8;

constexpr char kAnother[] = "another charset";

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

// What a reading has to lead the others by, and which it does not lead.
class Leads {
 public:
  Leads(const ByteFacts& facts, TextLanguage language) : facts_(facts), language_(language) {}

  // The names of the readings that the best one does not clearly lead.
  std::vector<std::string> rivals(const std::vector<TextReading>& readings,
                                  const TextReading& best) const {
    std::vector<std::string> names;
    for (const TextReading& reading : readings)
      if (isRival(reading, best)) names.push_back(reading.name);
    const bool mayBeUnknown = !language_ || best.isUnicode;
    if (mayBeUnknown && costOfUnknown(facts_) < best.cost + leadOverUnknown())
      names.push_back(kAnother);
    return names;
  }

 private:
  bool isRival(const TextReading& reading, const TextReading& best) const {
    if (&reading == &best || reading.isSameText(best, facts_)) return false;
    if (reading.isAllowed)
      return reading.isUtf8() || reading.cost < best.cost + clearLead(best, reading);
    return facts_.size >= kLeastToSee && reading.cost + kBeliefInLanguage < best.cost;
  }

  // Between two charsets of one byte only the bytes count that are different characters in them.
  uint64_t clearLead(const TextReading& best, const TextReading& other) const {
    if (best.table != nullptr && other.table != nullptr)
      return least() +
             best.table->differingBytes(*other.table, facts_) * kBit / kSingleBytesPerBitOfLead;
    const uint64_t bytesPerBit =
        best.table != nullptr ? kSingleBytesPerBitOfLead : kBytesPerBitOfLead;
    return least() + facts_.highBytes() * kBit / bytesPerBit;
  }

  uint64_t leadOverUnknown() const {
    return least() + facts_.highBytes() * kBit / kBytesPerBitOfLead;
  }

  uint64_t least() const { return language_ ? kClearLeadInLanguage : kClearLead; }

  const ByteFacts& facts_;
  const TextLanguage language_;
};

ChosenSource chosenReading(const TextReading& reading) {
  const CharsetChoice& charset = reading.charset;
  const std::string& held = reading.isUnicode ? charset.display : reading.name;
  return {charset, reasonFor(held, charset.display, charset.order, kItsBytesFit)};
}

[[noreturn]] void failWith(std::vector<std::string> names) {
  if (names.size() > kMostNamed) {
    names.resize(kMostNamed);
    names.back() = kAnother;
  }
  throw Failure("may be " + joinedByOr(names) + "; --from names one of them, --guess takes " +
                names.front());
}

}  // namespace

ChosenSource chooseReading(const std::vector<TextReading>& readings, const ByteFacts& facts,
                           TextLanguage language, bool guess) {
  const auto plain = std::find_if(readings.begin(), readings.end(),
                                  [](const TextReading& reading) { return reading.isPlain(); });
  if (plain != readings.end() && plain->cost <= readings.front().cost + kBeliefInUtf8)
    return chosenReading(*plain);
  const auto best = std::find_if(readings.begin(), readings.end(),
                                 [](const TextReading& reading) { return reading.isAllowed; });
  if (best == readings.end()) throw Failure("no charset fits its bytes; --from names one");
  std::vector<std::string> names = Leads(facts, language).rivals(readings, *best);
  if (names.empty() || guess) return chosenReading(*best);
  names.insert(names.begin(), best->name);
  failWith(std::move(names));
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

}  // namespace ksv_cli
