// ksv detect: in which charsets text files are written, a line each.

#include <atomic>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/jobs/jobs.h"
#include "cli/jobs/operands.h"
#include "cli/jobs/options.h"
#include "cli/jobs/result_line.h"
#include "cli/jobs/verdict_lines.h"
#include "cli/jobs/work_list.h"
#include "cli/system/failure.h"
#include "cli/system/inputs.h"
#include "cli/text/detection.h"
#include "cli/text/held_text.h"
#include "cli/text/text_verdict.h"

namespace ksv_cli {
namespace {

constexpr char kFooter[] =
    "FILE is a text file; -, or none, is standard input. A line a file, in the order of\n"
    "the files: its path, the charset, how likely that is (from 0 to 1), the language, the\n"
    "line end (lf, crlf, cr, mixed), bom where there is a byte-order mark, and\n"
    "misread=CHARSET where the text is UTF-8 that was taken for this charset and written as\n"
    "UTF-8 once more; separated by tabs, - where there is nothing to tell. In the place of\n"
    "the charset stands empty, binary, or undetermined where none is likelier than 0.5.\n"
    "With --all each charset that the text may be in is such a line, the likeliest first,\n"
    "with the reason behind it. With --segments each part of a text in one charset is a\n"
    "line: the path, its offset and its length in bytes, the charset, and how likely it is.\n"
    "\n"
    "LIST of --language are names as in ja,zh-TW, or Japanese, 'Simplified Chinese',\n"
    "'Traditional Chinese' and Korean. LIST of --charsets are charsets: nothing else is\n"
    "answered.\n"
    "\n"
    "--classic tells what the library's dtctText answers. --language is then one of the\n"
    "four described names, and any other prefers none; without it LANG decides.\n"
    "\n"
    "A tree of files: ksv detect -r -j 4 DIR, or with a choice of its own\n"
    "find DIR -type f -print0 | ksv detect --files-from - --null -j 4\n"
    "\n"
    "Exit status: 0 all well, 1 at least one input failed, 2 wrong usage, 3 at least one\n"
    "file is undetermined, and none failed.";

struct Arguments {
  InputOptions inputs;
  std::string language;
  std::string charsets;
  std::optional<std::string> declared;
  bool tellsAll = false;
  bool tellsSegments = false;
  VerbosityOptions verbosity;
  bool json = false;
  bool classic = false;
  uint64_t jobs = 1;
};

// ---- What the library's dtctText answers ----

std::string hexadecimal(uint32_t word) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "0x%08X", static_cast<unsigned>(word));
  return digits;
}

std::string classicRecord(const std::string& path, const Detection& detection) {
  nlohmann::ordered_json line = recordOf(path, ResultForm::kClassic);
  line["encodings"] = detection.charsets();
  line["byteOrder"] = orNull(detection.byteOrder());
  line["lineEnd"] = orNull(detection.lineEnd());
  line["separators"] = detection.separators();
  line["byteOrderMark"] = detection.hasMark();
  line["result"] = hexadecimal(detection.word);
  return jsonLine(line);
}

std::string classicLine(const std::string& path, const Detection& detection) {
  const std::vector<std::string> charsets = detection.charsets();
  std::vector<std::string> lineEnds = detection.separators();
  if (detection.lineEnd() != nullptr) lineEnds.insert(lineEnds.begin(), detection.lineEnd());
  return textLine({nameField(path, ResultForm::kClassic),
                   charsets.empty() ? "undetermined" : joinedByCommas(charsets),
                   orHyphen(detection.byteOrder()), joinedByCommas(lineEnds),
                   detection.hasMark() ? "bom" : "-", hexadecimal(detection.word)});
}

std::string classicResult(const std::string& input, const Arguments& arguments) {
  const char* language = arguments.language.empty() ? nullptr : arguments.language.c_str();
  const std::optional<Detection> detection = detectUnlessEmpty(input, language);
  if (!detection) throw Failure("is empty");
  return arguments.json ? classicRecord(input, *detection) : classicLine(input, *detection);
}

// ---- What the judge finds out ----

// To be asked in front of the work: a name that is wrong is so for every input. Whether the
// directory of charsets can be read is told of the inputs.
void checkCharsets(const std::string& list) {
  for (const std::string_view name : namesIn(list)) {
    try {
      ksv::Plan(std::string(name), "UTF-8");
    } catch (const ksv::Error& error) {
      if (error.result() == KSV_UNKNOWN_CHARSET) throw UsageError(error.what());
    }
  }
}

ksv::Hints hintsOf(const Arguments& arguments) {
  ksv::Hints hints;
  if (!arguments.language.empty()) {
    const std::optional<std::string> languages = judgedLanguages(arguments.language);
    if (!languages)
      throw UsageError("--language takes names as in ja,zh-TW, not '" + arguments.language + "'");
    hints.languages(*languages);
  }
  if (!arguments.charsets.empty()) {
    checkCharsets(arguments.charsets);
    hints.charsets(arguments.charsets);
  }
  if (arguments.declared) hints.declared(*arguments.declared);
  return hints;
}

Verdict verdictOn(const std::string& input, ksv::Hints hints, bool findsSegments) {
  if (!isStandardStream(input)) hints.file_name(input);
  const std::unique_ptr<ByteSource> source = openInput(input);
  if (!findsSegments) return {detectionOf(*source, hints), std::nullopt};
  const std::string text = heldText(*source, inputFacts(input).size);
  Verdict verdict = {ksv::detect(text, hints), std::vector<ksv::Segment>()};
  if (verdict.detection.content != KSV_CONTENT_BINARY)
    verdict.segments = ksv::segments(text, hints);
  return verdict;
}

std::string resultOf(const std::string& input, const Verdict& verdict, const Arguments& arguments) {
  if (arguments.json) return verdictRecord(input, verdict, arguments.tellsAll);
  if (arguments.tellsSegments) return segmentLines(input, verdict);
  return verdictLines(input, verdict, arguments.tellsAll);
}

void checkThatOptionsGoTogether(const Arguments& arguments) {
  const bool asksJudge = arguments.tellsAll || arguments.tellsSegments || arguments.declared ||
                         !arguments.charsets.empty();
  if (arguments.classic && asksJudge)
    throw UsageError("--classic goes with none of --all, --segments, --charsets and --declared");
  if (arguments.tellsAll && arguments.tellsSegments && !arguments.json)
    throw UsageError("--all and --segments go together with --json only");
}

int detect(const Arguments& arguments) {
  checkThatOptionsGoTogether(arguments);
  const ksv::Hints hints = arguments.classic ? ksv::Hints() : hintsOf(arguments);
  const Inputs inputs = inputsNamedBy(arguments.inputs);
  WorkList list(inputs.paths, inputs.refused);
  list.tell(arguments.verbosity.chosen());
  if (arguments.json && !arguments.classic) list.recordFailures();
  std::atomic<bool> isAnyUndetermined = false;
  const int status = list.run(arguments.jobs, [&](size_t index) {
    const std::string& input = inputs.paths[index];
    list.countWhole(index);
    if (arguments.classic) return list.write(index, classicResult(input, arguments));
    const Verdict verdict = verdictOn(input, hints, arguments.tellsSegments);
    list.write(index, resultOf(input, verdict, arguments));
    if (verdict.isUndetermined()) isAnyUndetermined = true;
  });
  return status == kExitDone && isAnyUndetermined ? kExitUndetermined : status;
}

}  // namespace

void addDetectJob(OptionParser& parser) {
  Subcommand job =
      parser.job(groups::kJudging, "detect", "Tell in which charsets text files are written");
  auto arguments = std::make_shared<Arguments>();
  addInputs(job, arguments->inputs, "The texts");
  job.flag("--all", arguments->tellsAll, "Tell every charset that a text may be in, and why");
  job.flag("--segments", arguments->tellsSegments,
           "Tell where a text changes its charset; it is held in memory");
  job.value("--language", "LANGUAGES", arguments->language, "The languages of the texts",
            {.usual = {"ja", "zh-CN", "zh-TW", "ko", "Japanese", "Simplified Chinese",
                       "Traditional Chinese", "Korean"}});
  job.value("--charsets", "CHARSETS", arguments->charsets,
            "What the texts may be in, with commas between");
  job.value("--declared", "CHARSET", arguments->declared,
            "The charset that a header names from outside the text");
  job.flag("--json", arguments->json, "One JSON object a line");
  job.flag("--classic", arguments->classic,
           "Exactly what the library's dtctText answers, in the form that programs rely on");
  addVerbosity(job, arguments->verbosity, kTellsSums);
  job.workers(arguments->jobs, "Work on N files at once");
  job.footer(kFooter);
  job.work([arguments] { return detect(*arguments); });
}

}  // namespace ksv_cli
