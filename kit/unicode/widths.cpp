#include "kit/unicode/widths.h"

#include <string_view>
#include <vector>

#include "kit/unicode/character_replacement.h"

namespace ksv_kit {
namespace {

// The characters of JIS X 0201's katakana in the order of their codes, A1 to DF, which are FF61
// to FF9F in Unicode's block "Halfwidth and Fullwidth Forms": what JIS X 0208 has for each.
constexpr char32_t kFirstHalf = 0xFF61;
constexpr std::u32string_view kFullOfHalf =
    U"。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチツテトナニヌネノハヒフヘホ"
    U"マミムメモヤユヨラリルレロワン゛゜";
static_assert(kFullOfHalf.size() == 0xFF9F - 0xFF61 + 1);

constexpr char32_t kVoicedMark = 0xFF9E;
constexpr char32_t kSemiVoicedMark = 0xFF9F;

// The sounds that JIS X 0208 has as one character, row 5: with the mark behind them and without.
constexpr std::u32string_view kVoiceless = U"ウカキクケコサシスセソタチツテトハヒフヘホ";
constexpr std::u32string_view kVoiced = U"ヴガギグゲゴザジズゼゾダヂヅデドバビブベボ";
constexpr std::u32string_view kBeforeSemiVoiced = U"ハヒフヘホ";
constexpr std::u32string_view kSemiVoiced = U"パピプペポ";
static_assert(kVoiceless.size() == kVoiced.size());

// Unicode's block has the printable characters of ASCII at this distance, in their order.
constexpr char32_t kFirstAscii = 0x21;
constexpr char32_t kLastAscii = 0x7E;
constexpr char32_t kToFullWidth = 0xFF01 - kFirstAscii;

class Replacements {
 public:
  explicit Replacements(Width width) : width_(width) {}

  void add(std::u32string half, std::u32string full) {
    if (width_ == Width::kFull) {
      all_.push_back({std::move(half), std::move(full)});
    } else {
      all_.push_back({std::move(full), std::move(half)});
    }
  }

  void add(char32_t half, char32_t full) { add(std::u32string(1, half), std::u32string(1, full)); }

  const std::vector<Replacement>& all() const { return all_; }

 private:
  Width width_;
  std::vector<Replacement> all_;
};

char32_t halfOf(char32_t full) {
  return kFirstHalf + static_cast<char32_t>(kFullOfHalf.find(full));
}

void addSounds(std::u32string_view without, std::u32string_view with, char32_t mark,
               Replacements& replacements) {
  for (size_t at = 0; at < without.size(); ++at) {
    replacements.add(std::u32string{halfOf(without[at]), mark}, std::u32string{with[at]});
  }
}

std::vector<Replacement> katakana(Width width) {
  Replacements replacements(width);
  for (size_t at = 0; at < kFullOfHalf.size(); ++at) {
    replacements.add(kFirstHalf + static_cast<char32_t>(at), kFullOfHalf[at]);
  }
  addSounds(kVoiceless, kVoiced, kVoicedMark, replacements);
  addSounds(kBeforeSemiVoiced, kSemiVoiced, kSemiVoicedMark, replacements);
  return replacements.all();
}

std::vector<Replacement> ascii(Width width) {
  Replacements replacements(width);
  for (char32_t half = kFirstAscii; half <= kLastAscii; ++half) {
    replacements.add(half, half + kToFullWidth);
  }
  return replacements.all();
}

std::vector<Replacement> space(Width width) {
  Replacements replacements(width);
  replacements.add(0x20, 0x3000);
  return replacements.all();
}

}  // namespace

std::unique_ptr<TextChange> widthChange(const WidthChoices& choices) {
  std::vector<Replacement> all;
  const auto add = [&all](Width width, std::vector<Replacement> (*table)(Width)) {
    if (width == Width::kKept) return;
    const std::vector<Replacement> more = table(width);
    all.insert(all.end(), more.begin(), more.end());
  };
  add(choices.katakana, katakana);
  add(choices.ascii, ascii);
  add(choices.space, space);
  if (all.empty()) return nullptr;
  return std::make_unique<CharacterReplacement>(all);
}

}  // namespace ksv_kit
