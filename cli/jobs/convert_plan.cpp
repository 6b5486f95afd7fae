#include "cli/jobs/convert_plan.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "cli/charsets/rule_source.h"
#include "cli/jobs/kept_tree.h"
#include "cli/system/failure.h"
#include "cli/system/inputs.h"
#include "cli/system/sha256.h"
#include "cli/text/charset_judge.h"
#include "cli/text/detection.h"
#include "cli/text/held_text.h"
#include "cli/text/policy_names.h"
#include "cli/text/rereadable_text.h"
#include "cli/text/text_conversion.h"
#include "cli/text/text_language.h"
#include "cli/text/text_repair.h"
#include "cli/text/text_segments.h"
#include "cli/text/valid_text.h"
#include "kit/charsets/name_matching.h"
#include "kit/convert/plan.h"
#include "kit/convert/plan_options.h"
#include "kit/convert/visible_replacement.h"
#include "kit/profiles/profile.h"
#include "kit/repertoire/charset_facts.h"
#include "kit/text/unicode_check.h"
#include "ksv_cconv.h"

namespace ksv_cli {

using ksv_kit::ByteOrder;
using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;
using ksv_kit::ScanEnd;
using ksv_kit::scanUnicode;
using ksv_kit::UnicodeForm;

namespace {

// Tags that go back to the default language are written as "no language", which
// is what this default stands for.
constexpr char kUndeterminedLanguage[] = "und";

CharsetChoice findSource(const CharsetNames& names, const std::string& name) {
  const std::optional<CharsetChoice> choice = names.findSource(name);
  if (!choice) throw UsageError(names.unknown(name));
  return *choice;
}

CharsetChoice findTarget(const CharsetNames& names, const std::string& name) {
  const std::optional<CharsetChoice> choice = names.find(name);
  if (choice) return *choice;
  if (names.findSource(name)) throw UsageError(name + " can be read, but not written");
  throw UsageError(names.unknown(name));
}

// A character of one to three bytes of UTF-8 is one of the first 65,536.
uint16_t replacementUnit(const std::string& text) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const size_t length = text.size();
  const bool isWellFormed =
      scanUnicode(UnicodeForm::kUtf8, false, bytes, length).end == ScanEnd::kAll;
  const size_t expected = length == 0 ? 0 : bytes[0] < 0x80 ? 1 : bytes[0] < 0xE0 ? 2 : 3;
  if (!isWellFormed || length == 0 || length != expected)
    throw UsageError("--replacement takes one character up to U+FFFF");
  if (length == 1) return bytes[0];
  if (length == 2) return static_cast<uint16_t>((bytes[0] & 0x1F) << 6 | (bytes[1] & 0x3F));
  return static_cast<uint16_t>((bytes[0] & 0x0F) << 12 | (bytes[1] & 0x3F) << 6 |
                               (bytes[2] & 0x3F));
}

bool writesBigEndian(const ConvertArguments& arguments, const CharsetChoice& target) {
  if (!target.hasByteOrder()) return true;
  if (arguments.byteOrder.empty()) return target.order == ByteOrder::kBig;
  const ByteOrder asked = arguments.byteOrder == "big" ? ByteOrder::kBig : ByteOrder::kLittle;
  if (target.order != ByteOrder::kOpen && target.order != asked)
    throw UsageError("--byte-order " + arguments.byteOrder + " contradicts the charset " +
                     arguments.target);
  return asked == ByteOrder::kBig;
}

void setNewlines(const std::string& newline, ConvertOptions& options) {
  options.convertNewlines = newline != "keep";
  options.newlineForm = newline == "lf"   ? KSV_NEWLINE_LF
                        : newline == "cr" ? KSV_NEWLINE_CR
                                          : KSV_NEWLINE_CRLF;
}

void setReferences(const ConvertArguments& arguments, const CharsetChoice& target,
                   ConvertOptions& options) {
  if (arguments.references.empty()) return;
  if (target.form != UnicodeForm::kUcs2) throw UsageError("--references is for UCS-2 targets only");
  options.supplementaryMode = arguments.references == "hex" ? 1 : 2;
}

void setLanguage(const std::string& language, ConversionSettings& settings) {
  const bool isPrintable =
      std::all_of(language.begin(), language.end(), [](char c) { return c > ' ' && c <= '~'; });
  if (language.empty() || language.size() >= KSV_NAME_SIZE || !isPrintable)
    throw UsageError("--language takes a name in printable ASCII, at most 259 characters");
  settings.language = language;
  std::memcpy(settings.options.defaultLanguage, kUndeterminedLanguage,
              sizeof kUndeterminedLanguage);
}

struct NamedForm {
  const char* name;
  ksv_normalization form;
};
constexpr NamedForm kForms[] = {{"nfc", KSV_NFC},
                                {"nfd", KSV_NFD},
                                {"nfkc", KSV_NFKC},
                                {"nfkd", KSV_NFKD},
                                {"composed", KSV_COMPOSED}};

ksv_normalization formNamed(const std::string& name) {
  for (const NamedForm& row : kForms)
    if (name == row.name) return row.form;
  return KSV_NO_NORMALIZATION;
}

struct NamedWidth {
  const char* name;
  uint32_t width;
};
constexpr NamedWidth kWidths[] = {{"full-katakana", KSV_WIDEN_KATAKANA},
                                  {"half-katakana", KSV_NARROW_KATAKANA},
                                  {"full-ascii", KSV_WIDEN_ASCII},
                                  {"half-ascii", KSV_NARROW_ASCII}};

uint32_t widthNamed(std::string_view name) {
  for (const NamedWidth& row : kWidths)
    if (name == row.name) return row.width;
  throw UsageError("--width takes full-katakana, half-katakana, full-ascii and half-ascii, not '" +
                   std::string(name) + "'");
}

uint32_t widthsNamed(std::string_view list) {
  uint32_t widths = 0;
  while (!list.empty()) {
    const size_t end = std::min(list.find(','), list.size());
    widths |= widthNamed(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return widths;
}

// A name that is none of those that are built in is that of a file.
void setProfile(const std::string& profile, ksv::Options& changes) {
  if (ksv_kit::Profile::named(profile) != nullptr) {
    changes.profile(profile);
    return;
  }
  std::optional<std::vector<uint8_t>> bytes;
  try {
    bytes = fileBytes(profile);
  } catch (const Failure& failure) {
    throw UsageError("--profile " + profile + ": " + failure.what());
  }
  if (!bytes) throw UsageError("--profile " + profile + " is neither a known one nor a file");
  changes.profile_text(std::string(bytes->begin(), bytes->end()));
}

// What is replaced by the engine's own character stands in the other options.
void setChanges(const ConvertArguments& arguments, ConversionSettings& settings) {
  ksv::Options& changes = settings.changes;
  changes.invalid(policyOfName(arguments.invalid));
  changes.unmappable(policyOfName(arguments.unmappable));
  if (arguments.invalid == "replace" && arguments.replacement)
    changes.invalid(*arguments.replacement);
  if (!arguments.normalize.empty())
    changes.normalization(formNamed(ksv_kit::lowered(arguments.normalize)));
  changes.widths(widthsNamed(arguments.width));
  if (arguments.profile) setProfile(*arguments.profile, changes);
  const bool isUsual = !arguments.profile && arguments.normalize.empty() &&
                       arguments.width.empty() && arguments.invalid != "replace" &&
                       arguments.unmappable != "look-alike";
  if (isUsual) return;
  ConversionSettings trial = settings;
  if (trial.source.name.empty()) trial.source = *settings.names->find("UTF-8");
  try {
    ksv_kit::checkReplacements(conversionTask(trial));
  } catch (const ksv_kit::BadArgument& bad) {
    throw UsageError(bad.what());
  }
}

// By IANA's name, or by that of browsers where it has none. A text without a mark names its byte
// order, since it could be read in the other.
std::string registeredName(const CharsetChoice& charset, const ConvertOptions& options) {
  const std::string order = options.writeByteOrderMark != 0 ? ""
                            : options.outputBigEndian != 0  ? "BE"
                                                            : "LE";
  if (charset.form == UnicodeForm::kUtf16) return "UTF-16" + order;
  if (charset.form == UnicodeForm::kUcs4) return "UTF-32" + order;
  const ksv_kit::RegistryEntry* const entry = ksv_kit::registryEntryOf(charset.name);
  if (entry != nullptr && entry->mimeName != nullptr) return entry->mimeName;
  return entry != nullptr && entry->webName != nullptr ? entry->webName : charset.display;
}

// XML is in UTF-8 or UTF-16 unless it says something else.
ksv_kit::DeclaredName declaredName(const CharsetChoice& charset, const ConvertOptions& options) {
  const bool isUsual = charset.form == UnicodeForm::kUtf8 || charset.form == UnicodeForm::kUtf16;
  return {registeredName(charset, options), !isUsual && charset.name != kAsciiName};
}

// A converter that takes another replacement than the one asked for shows that
// the target has no such character.
void checkReplacement(const ConversionSettings& settings, const std::string& replacement) {
  ConverterRecord record{};
  ConvertOptions options = settings.options;
  options.replaceUnmappable = 1;
  cconvInitConvert(&record, &options, settings.target.name.c_str());
  if (record.options.narrowReplacement != options.narrowReplacement)
    throw UsageError("the replacement " + replacement + " is not in " + settings.target.display);
}

SourceFinder classicFinder(const CharsetNames& names) {
  return [&names](const std::string& input) {
    DetectedText text = openAndDetect(input, nullptr);
    ChosenSource chosen = chooseSource(text, names);
    return FoundText{std::move(text.source), std::move(chosen)};
  };
}

bool readsStandardInput(const ConvertArguments& arguments) {
  return std::ranges::find(arguments.inputs.paths, kStandardStream) != arguments.inputs.paths.end();
}

// How a run is written down that can be gone on with: what is as it usually is, is left out.
class OptionWriter {
 public:
  void add(const char* name, const std::string& value, const std::string& usual = "") {
    if (value != usual) options_.emplace_back(name, value);
  }
  void add(const char* name, const std::optional<std::string>& value) {
    if (value) options_.emplace_back(name, *value);
  }
  void add(const char* name, bool isGiven) {
    if (isGiven) options_.emplace_back(name, "yes");
  }
  OptionList take() { return std::move(options_); }

 private:
  OptionList options_;
};

void addSource(const ConvertArguments& arguments, const ConversionSettings& settings,
               OptionWriter& options) {
  options.add("from", settings.source.display);
  if (arguments.source) return;
  const std::optional<std::string>& language = arguments.detectLanguage;
  options.add("detect-language",
              std::string(nameOfTextLanguage(language ? textLanguageNamed(*language)
                                                      : textLanguageOfUser())));
  options.add("guess", arguments.guess);
  options.add("classic", arguments.classic);
}

// One that is a file is known by its bytes as well.
void addProfile(const std::optional<std::string>& profile, OptionWriter& options) {
  options.add("profile", profile);
  if (profile && ksv_kit::Profile::named(*profile) == nullptr)
    options.add("profile-sum", sumOf(*openInput(*profile)));
}

// What is found out of the text goes by the rest.
void checkMending(const ConvertArguments& arguments, const CharsetChoice& source) {
  if (!arguments.mixed && !arguments.repairs) return;
  if (arguments.mixed && arguments.repairs)
    throw UsageError("--mixed and --repair do not go together");
  const std::string option = arguments.mixed ? "--mixed" : "--repair";
  if (arguments.classic) throw UsageError("--classic does not go with " + option);
  if (arguments.mixed && arguments.source)
    throw UsageError("--mixed finds out the charsets itself: it goes without --from");
  if (arguments.mixed && (arguments.report || arguments.dryRun))
    throw UsageError("--mixed has no report: it goes with neither --report nor --dry-run");
  if (arguments.repairs && arguments.skipsValid)
    throw UsageError("--repair is for texts that are valid: it goes without --skip-valid");
  if (arguments.repairs && arguments.source && !canBeRepaired(source))
    throw UsageError("--repair is for UTF-8, not for " + source.display);
}

OptionList decidingOptions(const ConvertArguments& arguments, const ConversionSettings& settings) {
  OptionWriter options;
  options.add("to", settings.target.display);
  addSource(arguments, settings, options);
  options.add("output", arguments.outputFile);
  options.add("output-dir", arguments.outputDirectory);
  options.add("keep-tree", arguments.keepsTree);
  options.add("in-place", arguments.inPlace);
  options.add("touch", arguments.touches);
  options.add("newline", arguments.newline, "keep");
  options.add("bom", arguments.mark);
  options.add("byte-order", arguments.byteOrder);
  options.add("invalid", arguments.invalid, "fail");
  options.add("unmappable", arguments.unmappable, "fail");
  options.add("replacement", arguments.replacement);
  options.add("references", arguments.references);
  options.add("language", arguments.language);
  addProfile(arguments.profile, options);
  options.add("normalize", ksv_kit::lowered(arguments.normalize));
  options.add("width", arguments.width);
  options.add("fix-declaration", arguments.fixesDeclaration);
  options.add("skip-valid", arguments.skipsValid);
  options.add("mixed", arguments.mixed);
  options.add("repair", arguments.repairs);
  return options.take();
}

// How texts are read whose parts are in different charsets.
struct MixedReading {
  bool isAsked;
  bool guesses;
  ksv::Hints hints;
};

ksv::Hints hintsOf(const std::optional<std::string>& languageName) {
  constexpr char kAnyLanguage[] = "any";
  ksv::Hints hints;
  if (languageName && ksv_kit::lowered(*languageName) != kAnyLanguage)
    hints.languages(*languageName);
  return hints;
}

// A text without segments is empty.
FoundText foundMixed(const std::string& input, RereadableText& opened, const MixedReading& mixed,
                     const CharsetNames& names) {
  ksv::Hints hints = mixed.hints;
  if (!isStandardStream(input)) hints.file_name(input);
  std::string text = heldText(*opened.release(), knownSize(input));
  std::vector<TextSegment> segments = readableSegments(text, hints, names, mixed.guesses);
  const CharsetChoice charset =
      segments.empty() ? ksv_kit::utf8ShownAs("UTF-8") : segments.front().charset;
  const std::string reason =
      segments.empty() ? "read as UTF-8: it is empty" : segmentsInWords(segments);
  return FoundText{
      std::make_unique<HeldSource>(std::move(text)), {charset, reason}, false, std::move(segments)};
}

ChosenSource validAlready(const CharsetChoice& target) {
  return {target, "it is valid " + target.display + " already"};
}

OutputPlan directoryPlan(const ConvertArguments& arguments) {
  OutputPlan plan{OutputPlan::Kind::kDirectory, *arguments.outputDirectory, arguments.keepsTree};
  const Inputs& inputs = arguments.inputs;
  for (size_t i = 0; plan.keepsTree && i < inputs.paths.size(); ++i)
    plan.placesInTree.emplace(inputs.paths[i], placeInTree(inputs.paths[i], inputs.belowAt[i]));
  return plan;
}

OutputPlan inPlacePlan(const ConvertArguments& arguments) {
  if (arguments.inPlace->find_first_of("/\\") != std::string::npos)
    throw UsageError("the suffix of --in-place holds a path separator");
  OutputPlan plan{.kind = OutputPlan::Kind::kInPlace};
  plan.backupSuffix = *arguments.inPlace;
  plan.keepsTimes = !arguments.touches;
  return plan;
}

void checkThatPlacesGoTogether(const ConvertArguments& arguments) {
  const std::optional<std::string>& file = arguments.outputFile;
  const std::optional<std::string>& directory = arguments.outputDirectory;
  const std::optional<std::string>& inPlace = arguments.inPlace;
  if (file.has_value() + directory.has_value() + inPlace.has_value() > 1)
    throw UsageError("of -o, --output-dir and --in-place only one can be given");
  if (arguments.keepsTree && !directory) throw UsageError("--keep-tree is for --output-dir only");
  if (arguments.touches && !inPlace) throw UsageError("--touch is for --in-place only");
  if (file && arguments.inputs.paths.size() > 1)
    throw UsageError("-o takes one input; --output-dir takes several");
  if (readsStandardInput(arguments) && (inPlace || directory))
    throw UsageError("standard input has no name for --output-dir or --in-place");
}

}  // namespace

OutputPlan outputPlan(const ConvertArguments& arguments) {
  checkThatPlacesGoTogether(arguments);
  const std::optional<std::string>& file = arguments.outputFile;
  if (arguments.outputDirectory) return directoryPlan(arguments);
  if (arguments.inPlace) return inPlacePlan(arguments);
  if (file && *file != kStandardStream) return {.kind = OutputPlan::Kind::kFile, .path = *file};
  return {};
}

ReportPlan reportPlan(const ConvertArguments& arguments) {
  if (arguments.report && !arguments.report->empty() && *arguments.report != "json")
    throw UsageError("--report takes =json or nothing");
  const bool writes = arguments.outputFile || arguments.outputDirectory || arguments.inPlace;
  if (arguments.dryRun && writes)
    throw UsageError("--dry-run writes no file: it goes without -o, --output-dir and --in-place");
  if (!arguments.report)
    return {arguments.dryRun ? ReportForm::kTable : ReportForm::kNone, arguments.dryRun};
  return {arguments.report->empty() ? ReportForm::kTable : ReportForm::kJson, arguments.dryRun};
}

UndoPlan undoPlan(const ConvertArguments& arguments) {
  const InputOptions& named = arguments.inputOptions;
  if (!named.operands.empty() || !named.list.path.empty() || named.entersDirectories)
    throw UsageError("--undo takes no files");
  const bool converts = !arguments.target.empty() || arguments.source || arguments.outputFile ||
                        arguments.outputDirectory || arguments.inPlace || arguments.manifest ||
                        arguments.resume || arguments.report;
  if (converts) throw UsageError("--undo goes with --dry-run, --json and --jobs only");
  return {*arguments.undo, arguments.dryRun, arguments.json};
}

RunPlan runPlan(const ConvertArguments& arguments, const ConversionSettings& settings) {
  const bool writes = outputPlan(arguments).kind != OutputPlan::Kind::kStandardOutput;
  if (arguments.json && !writes)
    throw UsageError(
        "--json needs -o, --output-dir or --in-place: standard output has the results");
  if (!arguments.manifest) {
    if (arguments.resume) throw UsageError("--resume needs --manifest");
    return {arguments.json, "", false, {}};
  }
  if (!writes) throw UsageError("--manifest needs -o, --output-dir or --in-place");
  if (readsStandardInput(arguments)) throw UsageError("standard input has no name for --manifest");
  return {arguments.json, *arguments.manifest, arguments.resume,
          decidingOptions(arguments, settings)};
}

ConversionSettings conversionSettings(const ConvertArguments& arguments,
                                      const CharsetNames& names) {
  ConversionSettings settings;
  settings.target = findTarget(names, arguments.target);
  if (arguments.source) settings.source = findSource(names, *arguments.source);
  checkMending(arguments, settings.source);
  settings.repairs = arguments.repairs;
  settings.skipInvalid = arguments.invalid == "skip";
  settings.names = &names;
  setChanges(arguments, settings);
  settings.isStrict = arguments.strict;
  settings.blockSize = arguments.blockSize;

  ConvertOptions& options = settings.options;
  options.outputBigEndian = writesBigEndian(arguments, settings.target);
  options.writeByteOrderMark = arguments.mark;
  options.replaceUnmappable = arguments.unmappable == "replace";
  if (arguments.replacement) {
    options.narrowReplacement = replacementUnit(*arguments.replacement);
    options.wideReplacement = options.narrowReplacement;
  } else if (options.replaceUnmappable != 0) {
    ksv_kit::makeReplacementVisible(settings.target.name, options);
  }
  setNewlines(arguments.newline, options);
  setReferences(arguments, settings.target, options);
  if (arguments.language) setLanguage(*arguments.language, settings);
  if (arguments.fixesDeclaration) settings.declared = declaredName(settings.target, options);
  if (arguments.replacement) checkReplacement(settings, *arguments.replacement);
  return settings;
}

SourceFinder sourceFinder(const ConvertArguments& arguments, const CharsetNames& names,
                          const ConversionSettings& settings) {
  const std::optional<std::string>& languageName = arguments.detectLanguage;
  if (arguments.classic && (arguments.guess || languageName))
    throw UsageError("--classic goes with neither --guess nor --detect-language");
  if (arguments.classic && arguments.skipsValid)
    throw UsageError("--classic does not go with --skip-valid");
  if (arguments.source && !arguments.skipsValid) return nullptr;
  if (arguments.classic) return classicFinder(names);
  const TextLanguage language =
      languageName ? textLanguageNamed(*languageName) : textLanguageOfUser();
  const auto judge =
      std::make_shared<CharsetJudge>(names, language, arguments.guess, !languageName);
  const bool skipsValid = arguments.skipsValid;
  const MixedReading mixed{arguments.mixed, arguments.guess, hintsOf(languageName)};
  return [judge, skipsValid, mixed, &names, &settings](const std::string& input) {
    RereadableText text(input);
    if (skipsValid && isTextOf(text, names, settings))
      return FoundText{text.release(), validAlready(settings.target), true};
    if (!settings.source.name.empty()) return FoundText{text.release(), {settings.source, ""}};
    if (mixed.isAsked) return foundMixed(input, text, mixed, names);
    JudgedText judged = judge->judge(text);
    return FoundText{std::move(judged.source), std::move(judged.chosen)};
  };
}

}  // namespace ksv_cli
