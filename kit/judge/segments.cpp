#include "kit/judge/segments.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>

#include "kit/judge/detector.h"
#include "kit/judge/text_cost.h"
#include "kit/text/unicode_check.h"

namespace ksv_kit::judge {
namespace {

// What it takes to believe in a change of charset, and what a line costs that is no text in it.
constexpr int64_t kChange = 24 * kBit;
constexpr int64_t kInvalidLine = 48 * kBit;
// A line of UTF-8 is that whatever its language.
constexpr int64_t kUtf8Character = 2 * kBit;

constexpr size_t kMostStates = 12;
// The text is asked for its charsets in this many places, and of what fits in none of them, as
// many lines again.
constexpr size_t kMostPlaces = 64;
constexpr size_t kPlace = 1024;

struct Line {
  size_t offset;
  size_t length;
};

// A charset with a language that it is written in.
struct State {
  std::string charset;
  std::string decodeAs;
  Language language;
};

bool isTelling(Bytes line) {
  return std::any_of(line.begin(), line.end(),
                     [](uint8_t byte) { return byte >= 0x80 || byte == 0x1B; });
}

std::optional<int64_t> costIn(const State& state, Bytes line) {
  if (state.decodeAs == "UTF-8") {
    const ScanResult found = scanUnicode(UnicodeForm::kUtf8, false, line.data(), line.size());
    if (found.end != ScanEnd::kAll) return std::nullopt;
    return kUtf8Character *
           std::count_if(line.begin(), line.end(), [](uint8_t byte) { return byte >= 0xC0; });
  }
  const auto text = decodeSound(state.decodeAs.c_str(), line, false);
  if (!text) return std::nullopt;
  if (state.language == kNoLanguage) return unknownCost(*text);
  if (languageFacts(state.language).script == Script::kEastAsian)
    return eastAsianCost(state.language, *text, kNoLimit);
  const AlphabetModel& model = AlphabetModel::of(state.language);
  int64_t cost = 0;
  uint8_t before = AlphabetModel::kSpace;
  bool wasPlain = true;
  for (const char16_t c : *text) {
    const uint8_t symbol = model.symbolOf(c);
    if (c >= 0x80 || !wasPlain) cost += model.cost(before, symbol);
    before = symbol;
    wasPlain = c < 0x80;
  }
  return cost;
}

// The likeliest way through the lines.
class Segmentation {
 public:
  Segmentation(Bytes text, const Hints& hints) : text_(text), hints_(hints) {}

  std::vector<Segment> take() {
    cutLines();
    propose();
    if (states_.size() < 2) return {};
    walk();
    return segments();
  }

 private:
  // Lines that tell something; those between belong to the one in front.
  void cutLines() {
    for (size_t at = 0; at < text_.size();) {
      const void* const found = std::memchr(text_.data() + at, '\n', text_.size() - at);
      const size_t end =
          found == nullptr
              ? text_.size()
              : static_cast<size_t>(static_cast<const uint8_t*>(found) - text_.data()) + 1;
      if (isTelling(text_.subspan(at, end - at))) lines_.push_back({at, end - at});
      at = end;
    }
  }

  Bytes bytesOf(const Line& line) const { return text_.subspan(line.offset, line.length); }

  void propose() {
    const size_t step = std::max<size_t>(1, lines_.size() / kMostPlaces);
    for (size_t i = 0; i < lines_.size(); i += step) proposeFrom(place(i));
    size_t asked = 0;
    const size_t strangers = std::max<size_t>(1, lines_.size() / (8 * kMostPlaces));
    for (size_t i = 0; i < lines_.size() && asked < kMostPlaces; ++i) {
      const bool fits = std::any_of(states_.begin(), states_.end(), [&](const State& state) {
        return costIn(state, bytesOf(lines_[i])).has_value();
      });
      if (fits) continue;
      proposeFrom(bytesOf(lines_[i]));
      ++asked;
      i += strangers - 1;
    }
  }

  // Some lines that follow each other, as long as they are not too much.
  Bytes place(size_t first) const {
    return bytesOf(lines_[first]).first(std::min(lines_[first].length, kPlace));
  }

  void proposeFrom(Bytes bytes) {
    if (states_.size() == kMostStates) return;
    Detector detector(hints_);
    detector.take(bytes.data(), bytes.size());
    const Detection detection = detector.verdict(false);
    size_t taken = 0;
    for (const Guess& guess : detection.guesses) {
      if (guess.decodeAs.empty() || guess.confidence < kWorthProposing || taken == 2) break;
      ++taken;
      add({guess.charset, guess.decodeAs, languageNamed(guess.language)});
    }
  }

  void add(State state) {
    const auto isSame = [&](const State& other) {
      return other.decodeAs == state.decodeAs &&
             (other.language == state.language || state.decodeAs == "UTF-8");
    };
    if (std::none_of(states_.begin(), states_.end(), isSame) && states_.size() < kMostStates)
      states_.push_back(std::move(state));
  }

  void walk() {
    std::array<int64_t, kMostStates> costs{};
    came_.resize(lines_.size());
    for (size_t i = 0; i < lines_.size(); ++i) {
      const auto best = std::min_element(costs.begin(), costs.begin() + states());
      const auto bestState = static_cast<uint8_t>(best - costs.begin());
      const int64_t changed = *best + kChange;
      for (size_t state = 0; state < states_.size(); ++state) {
        came_[i][state] = static_cast<uint8_t>(state);
        if (i != 0 && changed < costs[state]) {
          costs[state] = changed;
          came_[i][state] = bestState;
        }
      }
      for (size_t state = 0; state < states_.size(); ++state)
        costs[state] +=
            costIn(states_[state], bytesOf(lines_[i]))
                .value_or(kInvalidLine + 8 * kBit * static_cast<int64_t>(lines_[i].length));
    }
    auto state = static_cast<uint8_t>(std::min_element(costs.begin(), costs.begin() + states()) -
                                      costs.begin());
    chosen_.resize(lines_.size());
    for (size_t i = lines_.size(); i-- > 0;) {
      chosen_[i] = state;
      state = came_[i][state];
    }
  }

  std::ptrdiff_t states() const { return static_cast<std::ptrdiff_t>(states_.size()); }

  std::vector<Segment> segments() const {
    std::vector<Segment> found;
    for (size_t i = 0; i < lines_.size(); ++i) {
      const State& state = states_[chosen_[i]];
      if (!found.empty() && found.back().decodeAs == state.decodeAs) continue;
      const uint64_t offset = found.empty() ? 0 : lines_[i].offset;
      found.push_back({offset, 0, state.charset, state.decodeAs, 0});
    }
    for (size_t i = 0; i < found.size(); ++i) {
      const uint64_t end = i + 1 < found.size() ? found[i + 1].offset : text_.size();
      found[i].length = end - found[i].offset;
    }
    return found;
  }

  static constexpr double kWorthProposing = 0.2;

  const Bytes text_;
  const Hints& hints_;
  std::vector<Line> lines_;
  std::vector<State> states_;
  std::vector<std::array<uint8_t, kMostStates>> came_;
  std::vector<uint8_t> chosen_;
};

Segment wholeText(Bytes text, const Detection& detection) {
  Segment whole;
  whole.length = text.size();
  if (!detection.guesses.empty()) {
    const Guess& best = detection.guesses.front();
    whole.charset = best.charset;
    whole.decodeAs = best.decodeAs;
    whole.confidence = best.confidence;
  }
  return whole;
}

// What the part says of itself, if it says the same.
void judgeAlone(Segment& segment, Bytes text, const Hints& hints) {
  const Detection alone =
      detect(text.subspan(static_cast<size_t>(segment.offset), static_cast<size_t>(segment.length)),
             hints);
  for (const Guess& guess : alone.guesses) {
    if (guess.decodeAs != segment.decodeAs) continue;
    segment.charset = guess.charset;
    segment.confidence = guess.confidence;
    return;
  }
}

// Units of several bytes have no lines of bytes.
bool hasUnits(const Detection& detection) {
  if (detection.guesses.empty()) return detection.content != KSV_CONTENT_UNKNOWN;
  const Guess& best = detection.guesses.front();
  return best.charset.starts_with("UTF-16") || best.charset.starts_with("UTF-32");
}

}  // namespace

std::vector<Segment> segmentsOf(Bytes text, const Hints& hints) {
  if (text.empty()) return {};
  const Detection detection = detect(text, hints);
  const bool isOne = hasUnits(detection) ||
                     (!detection.guesses.empty() && detection.guesses.front().charset == "UTF-8" &&
                      detection.guesses.front().invalidOffset == KSV_NO_OFFSET);
  std::vector<Segment> segments;
  if (!isOne) segments = Segmentation(text, hints).take();
  if (segments.size() < 2) return {wholeText(text, detection)};
  for (Segment& segment : segments) judgeAlone(segment, text, hints);
  return segments;
}

}  // namespace ksv_kit::judge
