// ksv check: the charset of a text, by its mark, its XML declaration or its bytes.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/jobs/jobs.h"
#include "cli/jobs/operands.h"
#include "cli/jobs/options.h"
#include "cli/jobs/result_line.h"
#include "cli/jobs/work_list.h"
#include "cli/system/escapes.h"
#include "cli/system/failure.h"
#include "cli/system/inputs.h"
#include "cli/system/resource_limits.h"
#include "ksv_cconv.h"

namespace ksv_cli {
namespace {

constexpr char kFooter[] =
    "FILE is a text; none, or -, is standard input. A line a text, in the order of the\n"
    "texts: its path; the charset that its byte-order mark, the encoding of its XML\n"
    "declaration or, without either, its first 2,048 bytes tell (or 'unknown'); declared,\n"
    "where it has an XML declaration; bom, where it has a byte-order mark; its byte order\n"
    "(big, little); its most frequent line end (crlf, lf, cr, U+2028, U+2029). They are\n"
    "separated by tabs, - where there is nothing to tell.\n"
    "\n"
    "The first MiB of a text is looked at.\n"
    "\n"
    "Exit status: 0 all well, 1 at least one input failed, 2 wrong usage.";

struct CheckArguments {
  InputOptions inputs;
  VerbosityOptions verbosity;
  bool json = false;
  bool classic = false;
  uint64_t jobs = 1;
};

EncodingCheckRecord check(const std::string& input) {
  const std::unique_ptr<ByteSource> source = openInput(input);
  const std::vector<uint8_t> text = readAtMost(*source, limits::kMostChecked);
  EncodingCheckRecord record{};
  record.input = text.data();
  record.end = static_cast<uint32_t>(text.size());
  cconvChkEncode(&record);
  record.input = nullptr;
  return record;
}

// Of charsets made of bytes every text is big-endian, which says nothing.
const char* byteOrder(const EncodingCheckRecord& record) {
  if (record.bigEndian == 0) return "little";
  return record.resultClass == KSV_CHECK_NAMED_WITH_ORDER ? "big" : nullptr;
}

const char* lineEnd(const EncodingCheckRecord& record) {
  constexpr const char* kNames[] = {nullptr, "crlf", "cr", "lf", "U+2028", "U+2029"};
  return kNames[record.lineEnd];
}

std::string asJson(const std::string& path, const EncodingCheckRecord& record, ResultForm form) {
  nlohmann::ordered_json line = recordOf(path, form);
  line["charset"] = orNull(record.resultClass == KSV_CHECK_NOTHING ? nullptr : record.name);
  line["declared"] = record.declared != 0;
  line["byteOrderMark"] = record.mark != 0;
  line["byteOrder"] = orNull(byteOrder(record));
  line["lineEnd"] = orNull(lineEnd(record));
  return jsonLine(line);
}

// A declared name may hold anything; on a line of text it takes no part in the layout.
std::string charsetField(const EncodingCheckRecord& record, ResultForm form) {
  std::string name = record.name;
  if (form == ResultForm::kFull) return escaped(name, Backslash::kIsDoubled);
  std::replace_if(name.begin(), name.end(), isAsciiControl, '?');
  return name;
}

std::string asText(const EncodingCheckRecord& record, ResultForm form) {
  return textLine({charsetField(record, form), record.declared != 0 ? "declared" : "-",
                   record.mark != 0 ? "bom" : "-", orHyphen(byteOrder(record)),
                   orHyphen(lineEnd(record))});
}

int checkAll(const CheckArguments& arguments) {
  const Inputs inputs = inputsNamedBy(arguments.inputs);
  const ResultForm form = arguments.classic ? ResultForm::kClassic : ResultForm::kFull;
  const bool namesPath = !arguments.classic || inputs.paths.size() > 1;
  WorkList list(inputs.paths, inputs.refused);
  list.tell(arguments.verbosity.chosen());
  if (arguments.json && !arguments.classic) list.recordFailures();
  return list.run(arguments.jobs, [&](size_t index) {
    list.countWhole(index);
    const std::string& input = inputs.paths[index];
    const EncodingCheckRecord record = check(input);
    const std::string path = namesPath ? nameField(input, form) + "\t" : "";
    list.write(index, arguments.json ? asJson(input, record, form) : path + asText(record, form));
  });
}

}  // namespace

void addCheckJob(OptionParser& parser) {
  Subcommand job =
      parser.job(groups::kJudging, "check", "Name the charset of a text as it declares it");
  auto arguments = std::make_shared<CheckArguments>();
  addInputs(job, arguments->inputs, "The texts");
  job.flag("--json", arguments->json, "One JSON object a line");
  job.flag("--classic", arguments->classic,
           "Exactly what the library answers, in the form that programs rely on");
  addVerbosity(job, arguments->verbosity, kTellsSums);
  job.workers(arguments->jobs, "Work on N files at once");
  job.footer(kFooter);
  job.work([arguments] { return checkAll(*arguments); });
}

}  // namespace ksv_cli
