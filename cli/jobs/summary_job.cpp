// ksv summary: the properties of compound documents.

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/charsets/loaded_rules.h"
#include "cli/jobs/classic_summary.h"
#include "cli/jobs/document_summary.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/operands.h"
#include "cli/jobs/options.h"
#include "cli/jobs/output_plan.h"
#include "cli/jobs/overwriting.h"
#include "cli/jobs/property_edits.h"
#include "cli/jobs/result_line.h"
#include "cli/jobs/result_places.h"
#include "cli/jobs/summary_lines.h"
#include "cli/jobs/work_list.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/inputs.h"
#include "cli/system/named_input.h"
#include "cli/text/output_charset.h"
#include "kit/charsets/charset_names.h"

namespace ksv_cli {
namespace {

struct SummaryArguments {
  InputOptions inputs;
  std::string charset = "UTF-8";
  VerbosityOptions verbosity;
  bool json = false;
  bool classic = false;
  bool all = false;
  PropertyOptions edits;
  std::optional<std::string> output;
  std::optional<std::string> inPlace;
  uint64_t jobs = 1;
};

std::string classicLines(const std::string& name, const std::vector<ClassicProperty>& found) {
  std::string text = name + "\n";
  for (const ClassicProperty& property : found) text += labelled(property.label, property.value);
  return text;
}

// All values are texts.
std::string classicRecord(const std::string& path, const std::vector<ClassicProperty>& found) {
  nlohmann::ordered_json line = recordOf(path, ResultForm::kClassic);
  for (const ClassicProperty& property : found) line[property.key] = property.value;
  return jsonLine(line);
}

std::string classicResult(const std::string& input, bool json) {
  const NamedInput named(input);
  const std::vector<ClassicProperty> found = readClassicSummary(named.path());
  if (json) return classicRecord(input, found);
  return classicLines(nameField(nameForMessages(input), ResultForm::kClassic), found);
}

std::string lineFor(const OutputCharset& output, const nlohmann::ordered_json& record) {
  return output.hasEverything() ? jsonLine(record) : asciiJsonLine(record);
}

// What is told of a document whose result has been written all the same; empty: all is well.
std::string complaintAbout(const DocumentSummary& summary, const std::string& text,
                           const OutputCharset& output) {
  if (const std::optional<std::string> loss = lossOf(summary)) return "is damaged: " + *loss;
  if (output.holds(text)) return "";
  return "holds characters that are not in " + output.display() + "; they are replaced";
}

int runClassic(const SummaryArguments& arguments, const Inputs& inputs, const RuleBase& ruleBase) {
  const OutputCharset output(ruleBase.names(), arguments.charset,
                             OutputCharset::Lacking::kIsLeftToLibrary);
  WorkList list(inputs.paths, inputs.refused);
  list.tell(arguments.verbosity.chosen());
  return list.run(arguments.jobs, [&](size_t index) {
    list.write(index, output.encoded(classicResult(inputs.paths[index], arguments.json)));
    list.countWhole(index);
  });
}

int show(const SummaryArguments& arguments, const Inputs& inputs, const RuleBase& ruleBase) {
  const OutputCharset output(ruleBase.names(), arguments.charset, OutputCharset::Lacking::kIsShown);
  const SummaryForm form = arguments.all ? SummaryForm::kAll : SummaryForm::kKnown;
  const auto which = arguments.all ? properties::WhichSets::kAll : properties::WhichSets::kKnown;
  WorkList list(inputs.paths, inputs.refused);
  list.tell(arguments.verbosity.chosen());
  if (arguments.json)
    list.recordFailures(
        [&](const auto& record) { return output.encoded(lineFor(output, record)); });
  return list.run(arguments.jobs, [&](size_t index) {
    const std::string& input = inputs.paths[index];
    const DocumentSummary summary = readSummary(input, which);
    std::string text;
    if (arguments.json) {
      nlohmann::ordered_json record = recordOf(input, ResultForm::kFull);
      addSummary(record, summary, form);
      text = lineFor(output, record);
    } else {
      text = summaryLines(nameField(nameForMessages(input), ResultForm::kFull), summary, form);
    }
    const std::string complaint = complaintAbout(summary, text, output);
    list.write(index, output.encoded(text));
    list.countWhole(index);
    if (complaint.empty()) return;
    list.console().report(nameForMessages(input), complaint);
    throw Failure(complaint, true);
  });
}

// ---- Changing ----

OutputPlan planOf(const SummaryArguments& arguments, const Inputs& inputs) {
  if (arguments.all || arguments.classic)
    throw UsageError("--set, --set-custom and --remove go without --all and --classic");
  if (arguments.output.has_value() == arguments.inPlace.has_value())
    throw UsageError("--set, --set-custom and --remove need one of -o and --in-place");
  OutputPlan plan;
  if (arguments.output) {
    if (inputs.paths.size() != 1) throw UsageError("-o takes one document");
    if (isStandardStream(*arguments.output)) return plan;
    plan.kind = OutputPlan::Kind::kFile;
    plan.path = *arguments.output;
    return plan;
  }
  plan.kind = OutputPlan::Kind::kInPlace;
  plan.backupSuffix = *arguments.inPlace;
  if (plan.backupSuffix.find_first_of("/\\") != std::string::npos)
    throw UsageError("the suffix of --in-place holds a path separator");
  if (std::any_of(inputs.paths.begin(), inputs.paths.end(), isStandardStream))
    throw UsageError("standard input has no name for --in-place");
  return plan;
}

// facts: of the document as it was before it was read.
std::unique_ptr<Result> resultFor(const OutputPlan& plan, const std::string& input,
                                  const platform::FileFacts& facts, WorkList& list, size_t index) {
  if (plan.kind == OutputPlan::Kind::kStandardOutput)
    return standardOutputResult(list.standardOutput(), index);
  if (plan.kind == OutputPlan::Kind::kFile) return fileResult(plan.path);
  return inPlaceResult(input, {facts, backupPath(plan, input), plan.keepsTimes});
}

// True: the document is another one than before.
bool changeDocument(const std::vector<PropertyEdit>& edits, const OutputPlan& plan,
                    const std::string& input, WorkList& list, size_t index) {
  const platform::FileFacts facts = inputFacts(input);
  if (plan.kind == OutputPlan::Kind::kInPlace && facts.kind == platform::FileKind::kOther)
    throw Failure("is not a regular file");
  std::unique_ptr<Result> result;
  {  // a document that is open keeps its place on Windows
    const OpenedDocument document(input);
    result = resultFor(plan, input, facts, list, index);
    writeEdited(*document, edits, *result);
  }
  return result->complete();
}

int change(const SummaryArguments& arguments, const Inputs& inputs) {
  const std::vector<PropertyEdit> edits = propertyEdits(arguments.edits);
  const OutputPlan plan = planOf(arguments, inputs);
  if (arguments.json && plan.kind == OutputPlan::Kind::kStandardOutput)
    throw UsageError("--json needs -o FILE or --in-place: standard output has the document");
  WorkList list(inputs.paths, checkThatNothingIsOverwritten(plan, inputs));
  list.tell(arguments.verbosity.chosen());
  if (arguments.json) list.recordFailures();
  return list.run(arguments.jobs, [&](size_t index) {
    const std::string& input = inputs.paths[index];
    const bool isChanged = changeDocument(edits, plan, input, list, index);
    list.countWhole(index);
    if (!arguments.json) return;
    nlohmann::ordered_json record = recordOf(input, ResultForm::kFull);
    addPath(record, "output", outputPath(plan, input));
    record["changed"] = isChanged;
    list.write(index, jsonLine(record));
  });
}

int summarise(const SummaryArguments& arguments) {
  const Inputs inputs = inputsNamedBy(arguments.inputs);
  const RuleBase ruleBase;
  if (arguments.edits.areGiven()) return change(arguments, inputs);
  if (arguments.output || arguments.inPlace)
    throw UsageError("-o and --in-place go with --set, --set-custom and --remove");
  return arguments.classic ? runClassic(arguments, inputs, ruleBase)
                           : show(arguments, inputs, ruleBase);
}

}  // namespace

void addSummaryJob(OptionParser& parser) {
  Subcommand job =
      parser.job(groups::kDocuments, "summary", "Show the properties of compound documents");
  auto arguments = std::make_shared<SummaryArguments>();
  addInputs(job, arguments->inputs, "The documents; none, or -, is standard input");
  job.value("-t,--to", "CHARSET", arguments->charset, "Charset of the output; default: UTF-8");
  job.flag("--json", arguments->json, "One JSON object a line, with the properties it has");
  job.flag("--classic", arguments->classic,
           "Exactly what the library answers, in the form that programs rely on");
  job.flag("--all", arguments->all, "Every property of every set, as it stands there");
  job.values("--set", "NAME=VALUE", arguments->edits.set,
             "Write the document with this property, such as title=Letter");
  job.values("--set-custom", "NAME=VALUE", arguments->edits.custom,
             "The same of a property with a name of your own. VALUE may end with its type: :text, "
             ":number, :boolean, :time");
  job.values("--remove", "NAME", arguments->edits.removed,
             "Write the document without this property, or the one with a name of your own");
  job.value("-o,--output", "FILE", arguments->output, "Where the changed document goes to");
  job.flagOrValue("--in-place", "SUFFIX", arguments->inPlace,
                  "The changed document replaces the old one, which is kept under its name with "
                  "SUFFIX if there is one");
  addVerbosity(job, arguments->verbosity, kTellsSums);
  job.workers(arguments->jobs, "Work on N documents at once");
  job.footer(
      "Each document is a line with its name and a line for each property that it has, by the "
      "names\n"
      "that people know, with the kind of document in front and the properties with names of "
      "users\n"
      "behind. Texts are whole, in whatever code page they are; times are as ISO 8601 has them, in "
      "UTC.\n"
      "A text that is in another code page than the document says is read all the same, and that "
      "is told\n"
      "behind it.\n"
      "\n"
      "A character that CHARSET lacks is replaced in text, which is told on standard error and "
      "gives\n"
      "exit status 1, and escaped in JSON. So does damage: what is sound is shown.\n"
      "\n"
      "Exit status: 0 all well, 1 at least one document failed, 2 wrong usage.");
  job.work([arguments] { return summarise(*arguments); });
}

}  // namespace ksv_cli
