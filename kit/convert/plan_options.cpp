#include "kit/convert/plan_options.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "kit/convert/plan.h"
#include "kit/convert/refusal_stage.h"
#include "kit/convert/results.h"
#include "kit/convert/text_change_stage.h"
#include "kit/convert/visible_replacement.h"
#include "kit/profiles/profile.h"
#include "kit/profiles/profile_change.h"
#include "kit/text/unicode_check.h"
#include "kit/unicode/look_alikes.h"
#include "kit/unicode/normalization.h"
#include "kit/unicode/normalization_system.h"
#include "kit/unicode/widths.h"

namespace ksv_kit {
namespace {

constexpr char kReplacementCharacter[] = "\uFFFD";
constexpr char kQuestionMark[] = "?";

void requireRange(int32_t value, int32_t last, const char* option) {
  if (value < 0 || value > last)
    throw BadArgument(std::string(option) + " cannot be " + std::to_string(value));
}

CharsetChoice sourceNamed(const CharsetNames& names, const char* name) {
  if (name == nullptr) throw BadArgument("no source charset is named");
  const std::optional<CharsetChoice> choice = names.findSource(name);
  if (!choice) throw UnknownCharset(names.unknown(name));
  return *choice;
}

CharsetChoice targetNamed(const CharsetNames& names, const char* name) {
  if (name == nullptr) throw BadArgument("no target charset is named");
  const std::optional<CharsetChoice> choice = names.find(name);
  if (choice) return *choice;
  if (names.findSource(name))
    throw UnknownCharset(std::string(name) + " can be read, but not written");
  throw UnknownCharset(names.unknown(name));
}

bool holds(const CharsetChoice& target, std::string_view utf8) {
  ConversionTask task;
  task.source = utf8ShownAs("UTF-8");
  task.target = target;
  Pipeline pipeline(task);
  ByteBuffer out;
  return pipeline.take(reinterpret_cast<const uint8_t*>(utf8.data()), utf8.size(), PieceEnd::kEnd,
                       out);
}

std::string givenText(const char* text, const CharsetChoice& target) {
  if (text == nullptr)
    return holds(target, kReplacementCharacter) ? kReplacementCharacter : kQuestionMark;
  const auto* bytes = reinterpret_cast<const uint8_t*>(text);
  if (scanUnicode(UnicodeForm::kUtf8, false, bytes, std::strlen(text)).end != ScanEnd::kAll)
    throw BadArgument("a replacement is not UTF-8");
  return text;
}

// The caller's function, asked about one problem.
ProblemJudge judgeOf(ksv_ask_function ask, void* context) {
  return [ask, context](const Problem& problem) -> Answer {
    const ksv_problem asked = {resultOf(problem.kind), problem.codePoint, problem.offset,
                               reinterpret_cast<const uint8_t*>(problem.bytes.data()),
                               problem.bytes.size()};
    const char* text = nullptr;
    size_t length = 0;
    const int32_t answer = ask(context, &asked, &text, &length);
    if (answer == KSV_SKIP) return {Answer::Kind::kLeaveOut, ""};
    if (answer != KSV_REPLACE || (text == nullptr && length != 0)) return {};
    const auto* bytes = reinterpret_cast<const uint8_t*>(text);
    if (scanUnicode(UnicodeForm::kUtf8, false, bytes, length).end != ScanEnd::kAll) return {};
    return {Answer::Kind::kWrite, std::string(text == nullptr ? "" : text, length)};
  };
}

Policy policyOf(int32_t policy, const char* text, const ksv_options& options,
                const CharsetChoice& target) {
  Policy result;
  result.kind = static_cast<PolicyKind>(policy);
  if (policy == KSV_REPLACE || policy == KSV_LOOK_ALIKE) result.text = givenText(text, target);
  if (policy != KSV_ASK) return result;
  if (options.ask == nullptr) throw BadArgument("there is no function to ask");
  result.judge = judgeOf(options.ask, options.ask_context);
  return result;
}

ConvertOptions engineOptions(const ksv_options& options, const CharsetChoice& target) {
  ConvertOptions result{};
  const bool isBig = target.order == ByteOrder::kOpen ? options.byte_order == KSV_BIG_ENDIAN
                                                      : target.order == ByteOrder::kBig;
  result.outputBigEndian = !target.hasByteOrder() || isBig;
  result.writeByteOrderMark = options.mark == KSV_ADD_MARK;
  result.convertNewlines = options.newlines != KSV_KEEP_NEWLINES;
  result.newlineForm = options.newlines == KSV_NEWLINES_LF   ? KSV_NEWLINE_LF
                       : options.newlines == KSV_NEWLINES_CR ? KSV_NEWLINE_CR
                                                             : KSV_NEWLINE_CRLF;
  result.replaceUnmappable = options.unmappable == KSV_BUILT_IN;
  if (result.replaceUnmappable != 0) makeReplacementVisible(target.name, result);
  return result;
}

void checkRanges(const ksv_options& options) {
  requireRange(options.invalid, KSV_ASK, "invalid");
  requireRange(options.unmappable, KSV_ASK, "unmappable");
  requireRange(options.newlines, KSV_NEWLINES_CR, "newlines");
  requireRange(options.mark, KSV_KEEP_MARK, "mark");
  requireRange(options.byte_order, KSV_BIG_ENDIAN, "byte_order");
  requireRange(options.normalization, KSV_COMPOSED, "normalization");
  if (options.invalid == KSV_LOOK_ALIKE || options.invalid == KSV_BUILT_IN)
    throw BadArgument("this policy is for characters, not for bytes that are none");
}

using SharedProfile = std::shared_ptr<const Profile>;

SharedProfile profileNamed(const char* name) {
  // It is built in, and lives as long as the library.
  const Profile* profile = Profile::named(name);
  if (profile != nullptr) return SharedProfile(SharedProfile(), profile);
  std::string known;
  for (const std::string_view other : Profile::names())
    known += (known.empty() ? "" : ", ") + std::string(other);
  throw BadArgument("there is no profile " + std::string(name) + "; there are " + known);
}

SharedProfile profileOf(const ksv_options& options) {
  if (options.profile != nullptr && options.profile_text != nullptr)
    throw BadArgument("of profile and profile_text only one can be given");
  if (options.profile != nullptr) return profileNamed(options.profile);
  if (options.profile_text == nullptr) return nullptr;
  ProfileError error;
  std::optional<Profile> profile = Profile::fromText(options.profile_text, error);
  if (!profile)
    throw BadArgument("line " + std::to_string(error.line) + " of the profile: " + error.message);
  return std::make_shared<const Profile>(std::move(*profile));
}

void add(ConversionTask& task, std::function<std::unique_ptr<TextChange>()> makeChange) {
  if (makeChange() == nullptr) return;
  task.changes.push_back([makeChange](const ConversionTask&) {
    return std::make_unique<TextChangeStage>(makeChange());
  });
}

void addRefusal(ConversionTask& task, RefusedCharacters refused, ProblemKind kind) {
  if (refused.isEmpty()) return;
  task.changes.push_back([refused = std::move(refused), kind](const ConversionTask& of) {
    const bool isOfSource = kind == ProblemKind::kInvalid;
    return std::make_unique<RefusalStage>(refused, kind, isOfSource ? of.invalid : of.unmappable,
                                          (isOfSource ? of.source : of.target).display,
                                          of.lookAlikes);
  });
}

Width widthOf(uint32_t widths, uint32_t narrow, uint32_t wide, const char* what) {
  if ((widths & narrow) != 0 && (widths & wide) != 0)
    throw BadArgument(std::string(what) + " cannot become both narrow and wide");
  return (widths & narrow) != 0 ? Width::kHalf : (widths & wide) != 0 ? Width::kFull : Width::kKept;
}

void addWidths(ConversionTask& task, uint32_t widths) {
  constexpr uint32_t kKnown =
      KSV_WIDEN_KATAKANA | KSV_NARROW_KATAKANA | KSV_NARROW_ASCII | KSV_WIDEN_ASCII;
  if ((widths & ~kKnown) != 0) throw BadArgument("widths has bits that mean nothing");
  WidthChoices choices;
  choices.katakana = widthOf(widths, KSV_NARROW_KATAKANA, KSV_WIDEN_KATAKANA, "katakana");
  choices.ascii = widthOf(widths, KSV_NARROW_ASCII, KSV_WIDEN_ASCII, "ASCII");
  choices.space = choices.ascii;
  add(task, [choices] { return widthChange(choices); });
}

void addNormalization(ConversionTask& task, int32_t form) {
  constexpr NormalizationForm kForms[] = {NormalizationForm::kNfc, NormalizationForm::kNfd,
                                          NormalizationForm::kNfkc, NormalizationForm::kNfkd,
                                          NormalizationForm::kComposed};
  if (form == KSV_NO_NORMALIZATION) return;
  if (!canNormalize()) throw BadArgument("this library was built without normalization");
  const NormalizationForm chosen = kForms[form - 1];
  add(task, [chosen] { return normalization(chosen); });
}

// A profile may read or write a charset as another one of the directory.
CharsetChoice replacedCharset(const CharsetNames& names, CharsetChoice choice,
                              std::string_view name) {
  if (name == choice.name) return choice;
  const std::optional<CharsetChoice> other = names.find(name);
  if (!other)
    throw UnknownCharset("the charset " + std::string(name) + ", which the profile takes for " +
                         choice.display + ", is not there");
  CharsetChoice replaced = *other;
  replaced.display = choice.display;
  return replaced;
}

// What a text goes through in this order: the profile of its source, widths, normalization, the
// profile of its target.
void addChanges(const CharsetNames& names, const ksv_options& options, ConversionTask& task) {
  const SharedProfile profile = profileOf(options);
  const std::string from = task.source.name;
  const std::string to = task.target.name;
  if (profile != nullptr) {
    addRefusal(task, refusedAfterDecoding(*profile, from), ProblemKind::kInvalid);
    add(task, [profile, from] { return changeAfterDecoding(*profile, from); });
  }
  addWidths(task, options.widths);
  addNormalization(task, options.normalization);
  if (profile == nullptr) return;
  addRefusal(task, refusedBeforeEncoding(*profile, to), ProblemKind::kUnmappable);
  add(task, [profile, to] { return changeBeforeEncoding(*profile, to); });
  task.source = replacedCharset(names, task.source, profile->charsetToRead(from));
  task.target = replacedCharset(names, task.target, profile->charsetToWrite(to));
}

}  // namespace

ksv_options knownOptions(const ksv_options* options) {
  ksv_options known = KSV_OPTIONS_INIT;
  if (options == nullptr) return known;
  constexpr size_t kLeast = offsetof(ksv_options, invalid_text);
  if (options->size < kLeast) throw BadArgument("the options do not say their size");
  std::memcpy(&known, options, std::min<size_t>(options->size, sizeof known));
  return known;
}

ConversionTask taskOf(const CharsetNames& names, const char* from, const char* to,
                      const ksv_options* given) {
  const ksv_options options = knownOptions(given);
  return taskBetween(names, sourceNamed(names, from), targetNamed(names, to), options);
}

ConversionTask taskBetween(const CharsetNames& names, const CharsetChoice& from,
                           const CharsetChoice& to, const ksv_options& options) {
  checkRanges(options);
  ConversionTask task;
  task.source = from;
  task.target = to;
  addChanges(names, options, task);
  task.options = engineOptions(options, task.target);
  task.invalid = policyOf(options.invalid, options.invalid_text, options, task.target);
  task.unmappable = policyOf(options.unmappable, options.unmappable_text, options, task.target);
  task.lookAlikes = lookAlikes;
  task.keepsMark = options.mark == KSV_KEEP_MARK && task.target.form != UnicodeForm::kNone;
  return task;
}

void checkReplacements(const ConversionTask& task) {
  for (const Policy* policy : {&task.invalid, &task.unmappable})
    if (!policy->text.empty() && !holds(task.target, policy->text))
      throw BadArgument("the replacement " + policy->text + " is not in " + task.target.display);
}

}  // namespace ksv_kit
