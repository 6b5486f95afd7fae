// ksv detect: in which encodings text files are written, a line each.

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
#include "cli/jobs/work_list.h"
#include "cli/system/escapes.h"
#include "cli/system/failure.h"
#include "cli/text/detection.h"

namespace ksv_cli {
namespace {

constexpr char kFooter[] =
    "FILE is a text file; -, or none, is standard input. A line a file, in the order of\n"
    "the files: its path, the charsets that fit (joined by commas, or 'undetermined'), the\n"
    "byte order of UTF-16 and UCS-4 (big, little), the line end (crlf, lf, cr, and U+2028\n"
    "and U+2029 where they occur), bom where there is a byte-order mark, and the result\n"
    "word in hexadecimal; separated by tabs, - where there is nothing to tell. A file\n"
    "without bytes is 'empty'.\n"
    "\n"
    "NAME is Japanese, 'Simplified Chinese', 'Traditional Chinese' or Korean: encodings of\n"
    "this language come first where several fit. Any other name prefers none. Without it\n"
    "the environment variable LANG decides.\n"
    "\n"
    "A tree of files: ksv detect -r -j 4 DIR, or with a choice of its own\n"
    "find DIR -type f -print0 | ksv detect --files-from - --null -j 4\n"
    "\n"
    "Exit status: 0 all well, 1 at least one input failed, 2 wrong usage.";

struct Arguments {
  InputOptions inputs;
  std::string language;
  VerbosityOptions verbosity;
  bool json = false;
  bool classic = false;
  uint64_t jobs = 1;
};

std::string hexadecimal(uint32_t word) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "0x%08X", static_cast<unsigned>(word));
  return digits;
}

std::string asJson(const std::string& path, const Detection& detection, ResultForm form) {
  nlohmann::ordered_json line = recordOf(path, form);
  line["encodings"] = detection.charsets();
  line["byteOrder"] = orNull(detection.byteOrder());
  line["lineEnd"] = orNull(detection.lineEnd());
  line["separators"] = detection.separators();
  line["byteOrderMark"] = detection.hasMark();
  line["result"] = hexadecimal(detection.word);
  if (form == ResultForm::kFull) line["empty"] = false;
  return jsonLine(line);
}

// A text without bytes has nothing that could be told.
std::string emptyAsJson(const std::string& path) {
  nlohmann::ordered_json line = recordOf(path, ResultForm::kFull);
  line["encodings"] = nlohmann::json::array();
  line["byteOrder"] = nullptr;
  line["lineEnd"] = nullptr;
  line["separators"] = nlohmann::json::array();
  line["byteOrderMark"] = false;
  line["result"] = nullptr;
  line["empty"] = true;
  return jsonLine(line);
}

std::string asText(const std::string& path, const Detection& detection, ResultForm form) {
  const std::vector<std::string> charsets = detection.charsets();
  std::vector<std::string> lineEnds = detection.separators();
  if (detection.lineEnd() != nullptr) lineEnds.insert(lineEnds.begin(), detection.lineEnd());
  return textLine({nameField(path, form),
                   charsets.empty() ? "undetermined" : joinedByCommas(charsets),
                   orHyphen(detection.byteOrder()), joinedByCommas(lineEnds),
                   detection.hasMark() ? "bom" : "-", hexadecimal(detection.word)});
}

std::string emptyAsText(const std::string& path) {
  return textLine({shownName(path), "empty", "-", "-", "-", "-"});
}

std::string resultOf(const std::string& input, const Arguments& arguments) {
  const char* language = arguments.language.empty() ? nullptr : arguments.language.c_str();
  const std::optional<Detection> detection = detectUnlessEmpty(input, language);
  if (!detection && arguments.classic) throw Failure("is empty");
  if (!detection) return arguments.json ? emptyAsJson(input) : emptyAsText(input);
  const ResultForm form = arguments.classic ? ResultForm::kClassic : ResultForm::kFull;
  return arguments.json ? asJson(input, *detection, form) : asText(input, *detection, form);
}

int detect(const Arguments& arguments) {
  const Inputs inputs = inputsNamedBy(arguments.inputs);
  WorkList list(inputs.paths, inputs.refused);
  list.tell(arguments.verbosity.chosen());
  if (arguments.json && !arguments.classic) list.recordFailures();
  return list.run(arguments.jobs, [&](size_t index) {
    list.countWhole(index);
    list.write(index, resultOf(inputs.paths[index], arguments));
  });
}

}  // namespace

void addDetectJob(OptionParser& parser) {
  Subcommand job =
      parser.job(groups::kJudging, "detect", "Tell in which encodings text files are written");
  auto arguments = std::make_shared<Arguments>();
  addInputs(job, arguments->inputs, "The texts");
  job.value("--language", "NAME", arguments->language, "The language of the texts",
            {.usual = {"Japanese", "Simplified Chinese", "Traditional Chinese", "Korean"}});
  job.flag("--json", arguments->json, "One JSON object a line");
  job.flag("--classic", arguments->classic,
           "Exactly what the library answers, in the form that programs rely on");
  addVerbosity(job, arguments->verbosity, kTellsSums);
  job.workers(arguments->jobs, "Work on N files at once");
  job.footer(kFooter);
  job.work([arguments] { return detect(*arguments); });
}

}  // namespace ksv_cli
