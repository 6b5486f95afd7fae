#include "cli/text/charset_judge.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/system/failure.h"
#include "cli/text/text_verdict.h"
#include "cli/text/valid_text.h"
#include "kit/judge/declared_charset.h"

namespace ksv_cli {

using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;

namespace {

std::string_view asText(const std::vector<uint8_t>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Control codes that texts do not have.
bool isOddControl(uint8_t byte) {
  constexpr std::string_view kUsual = "\b\t\n\v\f\r\x0E\x0F\x1A\x1B";
  return byte == 0x7F || (byte < 0x20 && kUsual.find(static_cast<char>(byte)) == kUsual.npos);
}

// A text with line ends in the places of its odd controls: lists of names have zero bytes between
// them, and what a terminal was sent has others.
class WithoutControls : public ByteSource {
 public:
  explicit WithoutControls(std::unique_ptr<ByteSource> source) : source_(std::move(source)) {}

  size_t read(uint8_t* buffer, size_t size) override {
    const size_t count = source_->read(buffer, size);
    std::replace_if(buffer, buffer + count, isOddControl, uint8_t{'\n'});
    return count;
  }

 private:
  const std::unique_ptr<ByteSource> source_;
};

// Whether it may be a text all the same: pictures and archives have more of them.
bool hasFewControls(const std::vector<uint8_t>& bytes) {
  constexpr size_t kAFew = 2;
  constexpr size_t kTextPerNul = 8;
  constexpr size_t kTextPerControl = 32;
  const auto nuls = static_cast<size_t>(std::count(bytes.begin(), bytes.end(), 0));
  const auto odd =
      static_cast<size_t>(std::count_if(bytes.begin(), bytes.end(), isOddControl)) - nuls;
  return nuls <= kAFew + bytes.size() / kTextPerNul &&
         odd <= kAFew + bytes.size() / kTextPerControl;
}

// Whether a text is mostly ASCII with a few bytes of something else: a word of German is
// a Chinese character to whoever supposes that language.
bool saysLittle(const std::vector<uint8_t>& bytes) {
  constexpr size_t kLeastText = 24;
  constexpr auto kFewHighBytes = 8;
  const auto isHigh = [](uint8_t byte) { return byte >= 0x80; };
  return bytes.size() >= kLeastText &&
         std::count_if(bytes.begin(), bytes.end(), isHigh) <= kFewHighBytes;
}

// What is in front of a long text may settle it; a short one is all in front.
ksv::Detection judgedAsItIs(RereadableText& text, const ksv::Hints& hints) {
  const std::vector<uint8_t>& beginning = text.beginning();
  const bool isWhole = beginning.size() < RereadableText::kBeginning;
  ksv::Detector detector(hints);
  if (detector.feed(asText(beginning)) || isWhole) return detector.verdict(isWhole);
  return detectionOf(*text.reopen(), hints);
}

bool isLikely(const ksv::Detection& found) {
  return !found.guesses.empty() && found.guesses.front().confidence >= kLeastToConvert;
}

bool hasUnits(const ksv::Guess& guess) {
  return guess.charset.starts_with("UTF-16") || guess.charset.starts_with("UTF-32");
}

// Units that are text in no language may be a text with a few zero bytes.
bool isInDoubtForControls(const ksv::Detection& found) {
  if (found.guesses.empty()) return found.content == KSV_CONTENT_BINARY;
  const ksv::Guess& best = found.guesses.front();
  return hasUnits(best) && best.mark_length == 0 && best.language.empty();
}

ksv::Detection judged(RereadableText& text, const ksv::Hints& hints) {
  ksv::Detection found = judgedAsItIs(text, hints);
  if (!isInDoubtForControls(found) || !hasFewControls(text.beginning())) return found;
  WithoutControls source(text.reopen());
  ksv::Detection without = detectionOf(source, hints);
  return found.guesses.empty() || isLikely(without) ? without : found;
}

// Words of Thai are UTF-8 of a few characters that stand together in no language.
bool mayBeUtf8ByChance(const ksv::Guess& guess, const std::vector<uint8_t>& bytes) {
  constexpr auto kFewHighBytes = 9;
  if (guess.charset != "UTF-8" || guess.mark_length != 0 || !guess.language.empty()) return false;
  const auto isHigh = [](uint8_t byte) { return byte >= 0x80; };
  const auto beginsRareCharacter = [](uint8_t byte) { return byte == 0xE0 || byte == 0xE1; };
  return std::count_if(bytes.begin(), bytes.end(), isHigh) <= kFewHighBytes &&
         std::any_of(bytes.begin(), bytes.end(), beginsRareCharacter);
}

bool isClear(const ksv::Detection& found, RereadableText& text) {
  return isLikely(found) && !mayBeUtf8ByChance(found.guesses.front(), text.beginning());
}

bool readsOtherwise(const ksv::Detection& one, const ksv::Detection& other) {
  return other.guesses.empty() || one.guesses.front().decode_as != other.guesses.front().decode_as;
}

// A declaration of a charset whose units are no bytes cannot be meant where it was read.
bool canDeclareItself(const CharsetChoice& charset) {
  return !charset.hasByteOrder() && charset.name != "euc-jp-fix" && charset.name != "oasys_online";
}

// What has the characters of vendors as well.
struct Superset {
  const char* declared;
  const char* readAs;
};
constexpr Superset kSupersets[] = {{"Shift_JIS", "WINDOWS31J"}, {"EUC-JP", "EUC-JP-MS"}};

CharsetChoice asItIsRead(const CharsetChoice& charset, const CharsetNames& names) {
  for (const Superset& row : kSupersets)
    if (charset.display == row.declared) return names.findSource(row.readAs).value_or(charset);
  return charset;
}

// "read as DISPLAY, which holds NAME: WHY"
std::string reasonFor(const std::string& name, const std::string& display, const std::string& why) {
  return "read as " + display + (name == display ? "" : ", which holds " + name) + ": " + why;
}

[[noreturn]] void failWith(const ksv::Detection& found) {
  if (found.content == KSV_CONTENT_BINARY) throw Failure("is no text; --from reads it as one");
  if (found.guesses.empty()) throw Failure("no charset fits its bytes; --from names one");
  const std::string& first = found.guesses.front().charset;
  throw Failure("may be " + joinedByOr(likelyCharsets(found, first)) +
                "; --from names one of them, --guess takes " + first);
}

}  // namespace

CharsetJudge::CharsetJudge(const CharsetNames& names, TextLanguage language, bool guess,
                           bool isSupposed)
    : names_(names), language_(language), guess_(guess), isSupposed_(isSupposed) {}

JudgedText CharsetJudge::judge(RereadableText& text) const {
  if (text.beginning().empty()) {
    const std::optional<CharsetChoice> charset = names_.findSource("UTF-8");
    if (!charset) throw Failure("is empty, and the charset directory does not have UTF-8");
    return {text.release(), {*charset, "read as UTF-8: it is empty"}};
  }
  ChosenSource chosen = choose(text);
  return {text.release(), std::move(chosen)};
}

ChosenSource CharsetJudge::choose(RereadableText& text) const {
  const Answer answer = answerFor(text);
  const std::vector<ksv::Guess>& guesses = answer.found.guesses;
  if (answer.isClear) return chosenSource(guesses.front());
  if (std::optional<ChosenSource> declared = declaredSource(text)) return *std::move(declared);
  if (guess_ && !guesses.empty()) return chosenSource(guesses.front());
  failWith(answer.found);
}

// A language that is said counts, unless the text is clearly something else without it. One that is
// only supposed is asked about texts that are not clear, and say enough.
CharsetJudge::Answer CharsetJudge::answerFor(RereadableText& text) const {
  ksv::Detection alone = judged(text, {});
  const bool isClearAlone = isClear(alone, text);
  const bool isAsked =
      language_ && (!isSupposed_ || (!isClearAlone && !saysLittle(text.beginning())));
  if (!isAsked || alone.guesses.empty()) return {std::move(alone), isClearAlone};
  ksv::Detection inLanguage = judged(text, ksv::Hints().languages(nameOfTextLanguage(language_)));
  if (isClearAlone && readsOtherwise(alone, inLanguage)) return {std::move(alone), false};
  const bool isClearInLanguage = isClear(inLanguage, text);
  return {std::move(inLanguage), isClearInLanguage};
}

// Where its bytes say too little, a text is what it declares, if all of it is valid so.
std::optional<ChosenSource> CharsetJudge::declaredSource(RereadableText& text) const {
  const std::optional<std::string> name =
      ksv_kit::judge::declaredInMarkup(asText(text.beginning()));
  if (!name) return std::nullopt;
  const std::optional<CharsetChoice> charset = names_.findSource(*name);
  if (!charset || !canDeclareItself(*charset)) return std::nullopt;
  const CharsetChoice read = asItIsRead(*charset, names_);
  if (!isWhollyOf(text, names_, read)) return std::nullopt;
  return ChosenSource{read, reasonFor(charset->display, read.display, "it declares " + *name)};
}

ChosenSource CharsetJudge::chosenSource(const ksv::Guess& guess) const {
  const std::optional<CharsetChoice> charset =
      guess.decode_as ? names_.findSource(*guess.decode_as) : std::nullopt;
  if (!charset)
    throw Failure("is " + guess.charset + ", which the charset directory does not have");
  return {*charset, reasonFor(guess.charset, *guess.decode_as, guess.reason)};
}

}  // namespace ksv_cli
