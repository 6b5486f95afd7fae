// ksv convert: text files from one charset to another.

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/charsets/charset_names.h"
#include "cli/charsets/rule_base.h"
#include "cli/jobs/batch.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/operands.h"
#include "cli/jobs/options.h"
#include "cli/system/failure.h"
#include "cli/system/inputs.h"
#include "cli/text/charset_judge.h"
#include "cli/text/file_converter.h"
#include "cli/text/unicode_check.h"
#include "cli/text/visible_replacement.h"
#include "ksv_cconv.h"

namespace ksv_cli {
namespace {

// Tags that go back to the default language are written as "no language", which
// is what this default stands for.
constexpr char kUndeterminedLanguage[] = "und";

constexpr char kFooter[] =
    "FILE is a text file; none, or -, is standard input. Without -o, --output-dir or\n"
    "--in-place the results go to standard output, in the order of the files.\n"
    "CHARSET is a name or an alias that 'ksv charsets' lists, without regard to case and\n"
    "punctuation.\n"
    "\n"
    "Without -f the charset of each text is found out from all of it, and told on standard\n"
    "error with the reason: a byte-order mark; else what XML or HTML declares, if the text is\n"
    "valid so; else escape sequences of ISO-2022-JP; else UTF-8 and ASCII; else the charset\n"
    "in which the text is clearly the most usual one in its language. Where none is clear the\n"
    "file fails, with those named that it may be in; --guess takes the first. Shift_JIS is\n"
    "read as WINDOWS31J and EUC-JP as EUC-JP-MS, which have the characters of vendors.\n"
    "\n"
    "Byte order: a byte-order mark at the beginning of Unicode input decides and is left\n"
    "out. Input without one is read in the order that the name gives (UTF-16BE, UCS-4LE),\n"
    "and little-endian when the name gives none. Output is written in the order of\n"
    "--byte-order, else of the name, else little-endian. UTF-8 and the charsets made of\n"
    "bytes have no byte order.\n"
    "\n"
    "UTF-7 and HZ-GB-2312 can be read only. ISO-2022-JP is read with half-width katakana.\n"
    "\n"
    "Unicode input has to be well-formed; UCS-2 has no surrogates. A bad or unmappable\n"
    "character ends the conversion of its file; its offset counts bytes from 0, a\n"
    "byte-order mark included. A file is written under a passing name and takes its place\n"
    "when it is complete; standard output keeps what was converted before.\n"
    "What --invalid skip and --unmappable replace did is told in one line a file.\n"
    "\n"
    "--in-place keeps owner, permissions, times and extended attributes, and leaves a file\n"
    "alone that stays the same. It replaces no backup that is there already, and no file\n"
    "with several names (hard links). A symbolic link is followed to its file.\n"
    "\n"
    "Exit status: 0 all well, 1 at least one input failed (or, with --strict, lost\n"
    "something), 2 wrong usage.";

struct Arguments {
  std::vector<std::string> inputs;
  std::string target;
  std::optional<std::string> source;
  std::optional<std::string> outputFile;
  std::optional<std::string> outputDirectory;
  std::optional<std::string> inPlace;
  bool touches = false;
  std::string newline = "keep";
  bool mark = false;
  std::string byteOrder;
  std::string invalid = "fail";
  std::string unmappable = "fail";
  std::optional<std::string> replacement;
  std::string references;
  std::optional<std::string> language;
  std::optional<std::string> detectLanguage;
  bool guess = false;
  bool classic = false;
  bool strict = false;
  uint64_t jobs = 1;
  uint64_t blockSize = ConversionSettings{}.blockSize;
};

OutputPlan outputPlan(const Arguments& arguments) {
  const std::optional<std::string>& file = arguments.outputFile;
  const std::optional<std::string>& directory = arguments.outputDirectory;
  const std::optional<std::string>& inPlace = arguments.inPlace;
  if (file.has_value() + directory.has_value() + inPlace.has_value() > 1)
    throw UsageError("of -o, --output-dir and --in-place only one can be given");
  if (arguments.touches && !inPlace) throw UsageError("--touch is for --in-place only");
  if (file && arguments.inputs.size() > 1)
    throw UsageError("-o takes one input; --output-dir takes several");
  const bool readsStandardInput = std::find(arguments.inputs.begin(), arguments.inputs.end(),
                                            kStandardStream) != arguments.inputs.end();
  if (readsStandardInput && (inPlace || directory))
    throw UsageError("standard input has no name for --output-dir or --in-place");

  if (directory) return {OutputPlan::Kind::kDirectory, *directory, ""};
  if (file && *file != kStandardStream) return {OutputPlan::Kind::kFile, *file, ""};
  if (!inPlace) return {};
  if (inPlace->find_first_of("/\\") != std::string::npos)
    throw UsageError("the suffix of --in-place holds a path separator");
  return {OutputPlan::Kind::kInPlace, "", *inPlace, !arguments.touches};
}

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

bool writesBigEndian(const Arguments& arguments, const CharsetChoice& target) {
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

void setReferences(const Arguments& arguments, const CharsetChoice& target,
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

ConversionSettings conversionSettings(const Arguments& arguments, const CharsetNames& names) {
  ConversionSettings settings;
  settings.target = findTarget(names, arguments.target);
  if (arguments.source) settings.source = findSource(names, *arguments.source);
  settings.skipInvalid = arguments.invalid == "skip";
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
    makeReplacementVisible(settings.target.name, options);
  }
  setNewlines(arguments.newline, options);
  setReferences(arguments, settings.target, options);
  if (arguments.language) setLanguage(*arguments.language, settings);
  return settings;
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

// How the charset of a text is found out that -f does not name.
SourceFinder sourceFinder(const Arguments& arguments, const CharsetNames& names) {
  const std::optional<std::string>& languageName = arguments.detectLanguage;
  if (arguments.classic && (arguments.guess || languageName))
    throw UsageError("--classic goes with neither --guess nor --detect-language");
  if (arguments.classic)
    return [&names](const std::string& input) {
      DetectedText text = openAndDetect(input, nullptr);
      ChosenSource chosen = chooseSource(text, names);
      return JudgedText{std::move(text.source), std::move(chosen)};
    };
  const TextLanguage language =
      languageName ? textLanguageNamed(*languageName) : textLanguageOfUser();
  const auto judge =
      std::make_shared<CharsetJudge>(names, language, arguments.guess, !languageName);
  return [judge](const std::string& input) { return judge->judge(input); };
}

int convert(Arguments arguments) {
  arguments.inputs = inputsNamedBy(arguments.inputs);
  const OutputPlan plan = outputPlan(arguments);
  const RuleBase ruleBase;
  const CharsetNames names = ruleBase.names();
  const ConversionSettings settings = conversionSettings(arguments, names);
  if (arguments.replacement) checkReplacement(settings, *arguments.replacement);
  return convertBatch(settings, sourceFinder(arguments, names), plan, arguments.inputs,
                      arguments.jobs);
}

void addCharacterOptions(Subcommand& job, Arguments& arguments) {
  job.value("--newline", "FORM", arguments.newline, "Line ends of the output; default: keep",
            {.oneOf = {"keep", "lf", "crlf", "cr"}});
  job.flag("--bom", arguments.mark, "Begin Unicode output with a byte-order mark");
  job.value("--byte-order", "ORDER", arguments.byteOrder, "Byte order of Unicode output",
            {.oneOf = {"little", "big"}});
  job.value("--invalid", "ACTION", arguments.invalid, "What invalid input does; default: fail",
            {.oneOf = {"fail", "skip"}});
  job.value("--unmappable", "ACTION", arguments.unmappable,
            "What a character does that the target lacks; default: fail",
            {.oneOf = {"fail", "replace"}});
  job.value("--replacement", "CHAR", arguments.replacement,
            "What --unmappable replace writes; default: a geta mark or ?");
  job.flag("--strict", arguments.strict,
           "Exit with 1 when something was skipped or replaced; the result is written");
  job.value("--references", "BASE", arguments.references,
            "UCS-2 output: characters outside Windows-31J as &#x...; or &#...;",
            {.oneOf = {"hex", "decimal"}});
  job.value("--language", "NAME", arguments.language,
            "UTF-8, UTF-16, UCS-4 output: announce this language in front of the text");
}

void addDetectionOptions(Subcommand& job, Arguments& arguments) {
  job.value("--detect-language", "NAME", arguments.detectLanguage,
            "Without -f: the language of the texts; default: that of LC_ALL, LC_CTYPE or LANG",
            {.oneOf = {"ja", "zh-cn", "zh-tw", "ko", "any"}, .ignoresCase = true});
  job.flag("--guess", arguments.guess, "Without -f: where no charset is clear, take the likeliest");
  job.flag("--classic", arguments.classic,
           "Without -f: detect the charset as this command did before");
}

void addPlaceOptions(Subcommand& job, Arguments& arguments) {
  job.value("-o,--output", "FILE", arguments.outputFile, "Write the result of one input to FILE");
  job.value("--output-dir", "DIR", arguments.outputDirectory,
            "Write each result to DIR, under the name of its input");
  job.flagOrValue("--in-place", "SUFFIX", arguments.inPlace,
                  "Replace each input; with SUFFIX the original is kept under its name and SUFFIX");
  job.flag("--touch", arguments.touches,
           "With --in-place: the time of a converted file becomes the present one");
}

}  // namespace

void addConvertJob(OptionParser& parser) {
  Subcommand job = parser.job("convert", "Convert text from one charset to another");
  auto arguments = std::make_shared<Arguments>();
  job.operands("FILE", arguments->inputs, "The texts");
  job.value("-t,--to", "CHARSET", arguments->target, "The charset to write", {.required = true});
  job.value("-f,--from", "CHARSET", arguments->source,
            "The charset of the input; default: each text is detected");
  addDetectionOptions(job, *arguments);
  addPlaceOptions(job, *arguments);
  addCharacterOptions(job, *arguments);
  job.workers(arguments->jobs, "Work on N files at once");
  job.number("--block-size", "BYTES", arguments->blockSize, {16, 64 * 1024 * 1024},
             "Bytes read at once", {.hidden = true});
  job.footer(kFooter);
  job.work([arguments] { return convert(*arguments); });
}

}  // namespace ksv_cli
