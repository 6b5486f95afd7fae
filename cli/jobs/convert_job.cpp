// ksv convert: text files from one charset to another.

#include <memory>

#include "cli/charsets/loaded_rules.h"
#include "cli/jobs/batch.h"
#include "cli/jobs/convert_plan.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/operands.h"
#include "cli/jobs/options.h"
#include "cli/jobs/undo.h"
#include "cli/text/conversion_settings.h"
#include "kit/charsets/charset_names.h"

namespace ksv_cli {

using ksv_kit::CharsetNames;

namespace {

constexpr char kFooter[] =
    "FILE is a text file; none, or -, is standard input. Without -o, --output-dir or\n"
    "--in-place the results go to standard output, in the order of the files.\n"
    "CHARSET is a name or an alias that 'ksv charsets' lists, without regard to case and\n"
    "punctuation.\n"
    "\n"
    "Without -f the charset of each text is found out as 'ksv detect' does it, and told on\n"
    "standard error with the reason. One is taken that is likely to 0.95 and more; else what\n"
    "XML or HTML declares, if the text is valid so. Where none is clear the file fails, with\n"
    "those named that it may be in; --guess takes the first. Shift_JIS is read as WINDOWS31J\n"
    "and EUC-JP as EUC-JP-MS, which have the characters of vendors.\n"
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
    "What was left out and written otherwise is told in one line a file: skip leaves out,\n"
    "hex and decimal write &#x3042; and &#12354;, escape \\u{3042} and of bytes \\xE3, percent\n"
    "%E3%81%82, and look-alike what looks most like the character, or else as replace.\n"
    "\n"
    "--in-place keeps owner, permissions, times and extended attributes, and leaves a file\n"
    "alone that stays the same. It replaces no backup that is there already, and no file\n"
    "with several names (hard links). A symbolic link is followed to its file.\n"
    "\n"
    "Exit status: 0 all well, 1 at least one input failed (or, with --strict, lost\n"
    "something), 2 wrong usage.";

int convert(ConvertArguments arguments) {
  if (arguments.undo) return undoConversions(undoPlan(arguments), arguments.jobs);
  if (arguments.target.empty()) throw UsageError("--to is required");
  arguments.inputs = inputsNamedBy(arguments.inputOptions, arguments.outputDirectory.value_or(""));
  const OutputPlan plan = outputPlan(arguments);
  const ReportPlan reports = reportPlan(arguments);
  const RuleBase ruleBase;
  const CharsetNames names = ruleBase.names();
  const ConversionSettings settings = conversionSettings(arguments, names);
  const RunPlan run = runPlan(arguments, settings);
  return convertBatch(settings, sourceFinder(arguments, names, settings), plan, reports, run,
                      arguments.verbosity.chosen(), arguments.inputs, arguments.jobs);
}

void addCharacterOptions(Subcommand& job, ConvertArguments& arguments) {
  job.value("--newline", "FORM", arguments.newline, "Line ends of the output; default: keep",
            {.oneOf = {"keep", "lf", "crlf", "cr"}});
  job.flag("--bom", arguments.mark, "Begin Unicode output with a byte-order mark");
  job.value("--byte-order", "ORDER", arguments.byteOrder, "Byte order of Unicode output",
            {.oneOf = {"little", "big"}});
  job.value("--invalid", "ACTION", arguments.invalid, "What invalid input does; default: fail",
            {.oneOf = {"fail", "skip", "replace", "hex", "decimal", "escape", "percent"}});
  job.value(
      "--unmappable", "ACTION", arguments.unmappable,
      "What a character does that the target lacks; default: fail",
      {.oneOf = {"fail", "skip", "replace", "hex", "decimal", "escape", "percent", "look-alike"}});
  job.value("--replacement", "CHAR", arguments.replacement,
            "What replace writes; default: a geta mark or ?, of invalid input U+FFFD or ?");
  job.flag("--strict", arguments.strict,
           "Exit with 1 when something was skipped or replaced; the result is written");
  job.value("--references", "BASE", arguments.references,
            "UCS-2 output: characters outside Windows-31J as &#x...; or &#...;",
            {.oneOf = {"hex", "decimal"}});
  job.value("--language", "NAME", arguments.language,
            "UTF-8, UTF-16, UCS-4 output: announce this language in front of the text");
}

void addChangeOptions(Subcommand& job, ConvertArguments& arguments) {
  job.value("--profile", "NAME", arguments.profile,
            "The convention of mapping: windows, jis, web, iconv-glibc, or a file that holds one",
            {.usual = {"windows", "jis", "web", "iconv-glibc"}});
  job.value("--normalize", "FORM", arguments.normalize, "Normalize the text before it is written",
            {.oneOf = {"nfc", "nfd", "nfkc", "nfkd", "composed"}, .ignoresCase = true});
  job.value("--width", "WIDTHS", arguments.width,
            "Widths to change: full-katakana, half-katakana, full-ascii, half-ascii, with commas",
            {.usual = {"full-katakana", "half-katakana", "full-ascii", "half-ascii"}});
  job.flagOrValue(
      "--report", "FORM", arguments.report,
      "Tell what is lost, as a table or with =json as a line a file, on standard error");
  job.flag("--dry-run", arguments.dryRun,
           "Write nothing but the report, which goes to standard output");
}

void addDetectionOptions(Subcommand& job, ConvertArguments& arguments) {
  job.value("--detect-language", "NAME", arguments.detectLanguage,
            "Without -f: the language of the texts; default: that of LC_ALL, LC_CTYPE or LANG",
            {.oneOf = {"ja", "zh-cn", "zh-tw", "ko", "any"}, .ignoresCase = true});
  job.flag("--guess", arguments.guess, "Without -f: where no charset is clear, take the likeliest");
  job.flag("--classic", arguments.classic,
           "Without -f: detect the charset as this command did before");
  job.flag("--mixed", arguments.mixed,
           "Without -f: each part of a text by its own charset; the text is held in memory");
}

void addPlaceOptions(Subcommand& job, ConvertArguments& arguments) {
  job.value("-o,--output", "FILE", arguments.outputFile, "Write the result of one input to FILE");
  job.value("--output-dir", "DIR", arguments.outputDirectory,
            "Write each result to DIR, under the name of its input");
  job.flag("--keep-tree", arguments.keepsTree,
           "With --output-dir: each result keeps its place in the tree of its input");
  job.flagOrValue("--in-place", "SUFFIX", arguments.inPlace,
                  "Replace each input; with SUFFIX the original is kept under its name and SUFFIX");
  job.flag("--touch", arguments.touches,
           "With --in-place: the time of a converted file becomes the present one");
}

void addRunOptions(Subcommand& job, ConvertArguments& arguments) {
  job.flag("--json", arguments.json,
           "Tell what was done with each file, as one JSON object a line");
  job.value("--manifest", "FILE", arguments.manifest,
            "Write down in FILE what is done, so that nothing is lost whatever ends the run");
  job.flag("--resume", arguments.resume,
           "With --manifest: go on where an earlier run with the same options ended");
  job.value("--undo", "MANIFEST", arguments.undo,
            "Convert nothing, but give the originals that were kept their places again");
}

}  // namespace

void addConvertJob(OptionParser& parser) {
  Subcommand job =
      parser.job(groups::kTexts, "convert", "Convert text from one charset to another");
  auto arguments = std::make_shared<ConvertArguments>();
  addInputs(job, arguments->inputOptions, "The texts");
  job.value("-t,--to", "CHARSET", arguments->target,
            "The charset to write; needed for all but --undo");
  job.value("-f,--from", "CHARSET", arguments->source,
            "The charset of the input; default: each text is detected");
  addDetectionOptions(job, *arguments);
  addPlaceOptions(job, *arguments);
  addCharacterOptions(job, *arguments);
  addChangeOptions(job, *arguments);
  job.flag("--fix-declaration", arguments->fixesDeclaration,
           "Have XML, HTML and CSS declare the charset that they are written in");
  job.flag("--skip-valid", arguments->skipsValid,
           "Leave texts as they are that are valid in the target already");
  job.flag("--repair", arguments->repairs,
           "Mend lines of UTF-8 that were written as UTF-8 twice; the text is held in memory");
  addRunOptions(job, *arguments);
  addVerbosity(job, arguments->verbosity,
               "Tell what was done with each file, and the sums, on standard error");
  job.workers(arguments->jobs, "Work on N files at once");
  job.number("--block-size", "BYTES", arguments->blockSize, {16, 64 * 1024 * 1024},
             "Bytes read at once", {.hidden = true});
  job.footer(kFooter);
  job.work([arguments] { return convert(*arguments); });
}

}  // namespace ksv_cli
