// ksv summary: the properties of compound documents.

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/charsets/loaded_rules.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/ole_tree.h"
#include "cli/jobs/operands.h"
#include "cli/jobs/options.h"
#include "cli/jobs/result_line.h"
#include "cli/jobs/summary_values.h"
#include "cli/jobs/work_list.h"
#include "cli/system/failure.h"
#include "cli/system/inputs.h"
#include "cli/system/named_input.h"
#include "cli/system/process.h"
#include "cli/system/system_faults.h"
#include "cli/text/output_charset.h"
#include "kit/charsets/charset_names.h"
#include "ksv_ole.h"

namespace ksv_cli {
namespace {

struct SummaryArguments {
  InputOptions inputs;
  std::string charset = "UTF-8";
  VerbosityOptions verbosity;
  bool json = false;
  bool classic = false;
  uint64_t jobs = 1;

  ResultForm form() const { return classic ? ResultForm::kClassic : ResultForm::kFull; }
};

// The kinds of documents that together have all properties: one of presentations, and the
// one that has the times and the application.
constexpr uint16_t kMostProperties = 7000;
constexpr uint16_t kTimes = 10002;

// Until a document tells its code page.
constexpr uint16_t kInitialCodePage = 932;

struct NamedProperty {
  const char* label;
  const char* key;
  uint16_t kind;
  size_t offset;
  ValueType type = ValueType::kText;
};

// In the order in which a person reads them.
constexpr NamedProperty kProperties[] = {
    {"Title", "title", kMostProperties, KSV_SUMMARY_TITLE},
    {"Subject", "subject", kMostProperties, KSV_SUMMARY_SUBJECT},
    {"Author", "author", kMostProperties, KSV_SUMMARY_AUTHOR},
    {"Keywords", "keywords", kMostProperties, KSV_SUMMARY_KEYWORDS},
    {"Comments", "comments", kMostProperties, KSV_SUMMARY_COMMENTS},
    {"Category", "category", kMostProperties, KSV_SUMMARY_CATEGORY},
    {"Manager", "manager", kMostProperties, KSV_SUMMARY_MANAGER},
    {"Company", "company", kMostProperties, KSV_SUMMARY_COMPANY},
    {"Created", "created", kTimes, KSV_SUMMARY_CREATED, ValueType::kTime},
    {"Last saved", "lastSaved", kTimes, KSV_SUMMARY_LAST_SAVED, ValueType::kTime},
    {"Last saved by", "lastSavedBy", kMostProperties, KSV_SUMMARY_LAST_SAVED_BY},
    {"Revision", "revision", kMostProperties, KSV_SUMMARY_REVISION},
    {"Application", "application", kTimes, KSV_SUMMARY_APPLICATION},
    {"Presentation format", "presentationFormat", kMostProperties, KSV_SUMMARY_PRESENTATION_FORMAT},
    {"Slides", "slides", kMostProperties, KSV_SUMMARY_SLIDES, ValueType::kNumber},
    {"Notes", "notes", kMostProperties, KSV_SUMMARY_NOTES, ValueType::kNumber},
    {"Paragraphs", "paragraphs", kMostProperties, KSV_SUMMARY_PARAGRAPHS, ValueType::kNumber},
    {"Bytes", "bytes", kMostProperties, KSV_SUMMARY_BYTES, ValueType::kNumber},
};

struct FoundProperty {
  const NamedProperty* name;
  std::string value;  // UTF-8
};

using Record = std::string;

// cause: of what the system refused, if it did.
[[noreturn]] void failWith(uint32_t result, const std::string& path, const std::string& cause) {
  if (result == KSV_SUMMARY_NOT_OPENED) openDocument(path);  // tells what is wrong with it
  if (result == KSV_SUMMARY_NOT_OPENED) throw Failure("cannot be read" + cause);
  if (result == KSV_SUMMARY_NO_SUMMARY) throw Failure("has no summary information");
  if (result == KSV_SUMMARY_MALFORMED) throw Failure("has malformed summary information");
  throw Failure(std::string("cannot be read: ") + platform::kOutOfMemory);
}

Record readRecord(const std::string& path, uint16_t kind) {
  KsvSummarySettings settings = {};
  constexpr std::string_view kTarget = "UTF-8";
  constexpr std::string_view kLanguage = "English";
  kTarget.copy(settings.targetCharset, kTarget.size());
  kLanguage.copy(settings.language, kLanguage.size());
  settings.lineEndFlags = 0x20;
  const uint16_t parameters[3] = {kind, 0, kInitialCodePage};
  Record record(KSV_SUMMARY_RECORD_SIZE, '\0');
  forgetCause();
  const uint32_t result = SummaryInfo(path.c_str(), &settings, record.data(), parameters);
  const std::string cause = causeInWords();
  if (result != KSV_SUMMARY_DONE) failWith(result, path, cause);
  return record;
}

std::vector<FoundProperty> readProperties(const std::string& path) {
  const Record most = readRecord(path, kMostProperties);
  const Record times = readRecord(path, kTimes);
  std::vector<FoundProperty> found;
  for (const NamedProperty& property : kProperties) {
    const Record& record = property.kind == kTimes ? times : most;
    std::string value = record.c_str() + property.offset;
    if (!value.empty()) found.push_back({&property, std::move(value)});
  }
  return found;
}

// The further lines of a text stand under its first. Other control characters could do
// things to a terminal.
std::string forReaders(const std::string& value, size_t indent) {
  std::string text;
  for (const char c : value) {
    const bool isControl = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    if (c == '\n') {
      text += "\n" + std::string(indent, ' ');
    } else if (isControl && c != '\t') {
      text += "\uFFFD";
    } else {
      text += c;
    }
  }
  return text;
}

std::string asText(const std::string& name, const std::vector<FoundProperty>& found) {
  constexpr size_t kIndent = 2;
  constexpr size_t kLabelWidth = 21;
  std::string text = name + "\n";
  for (const FoundProperty& property : found) {
    std::string label = std::string(kIndent, ' ') + property.name->label;
    label.resize(kIndent + kLabelWidth, ' ');
    text += label + forReaders(property.value, label.size()) + "\n";
  }
  return text;
}

std::string lineFor(const OutputCharset& output, const nlohmann::ordered_json& record) {
  return output.hasEverything() ? jsonLine(record) : asciiJsonLine(record);
}

std::string asJson(const std::string& path, const std::vector<FoundProperty>& found,
                   ResultForm form, const OutputCharset& output) {
  nlohmann::ordered_json line = recordOf(path, form);
  for (const FoundProperty& property : found) {
    if (form == ResultForm::kClassic)
      line[property.name->key] = property.value;
    else
      line[property.name->key] = valueOf(property.value, property.name->type);
  }
  return form == ResultForm::kClassic ? jsonLine(line) : lineFor(output, line);
}

// Of a document, as the form has it, with line ends and all, in UTF-8.
std::string resultOf(const std::string& input, const SummaryArguments& arguments,
                     const OutputCharset& output) {
  const NamedInput named(input);
  const std::vector<FoundProperty> found = readProperties(named.path());
  if (!arguments.json) return asText(nameField(nameForMessages(input), arguments.form()), found);
  return asJson(input, found, arguments.form(), output);
}

void tellReplacements(const std::string& input, const OutputCharset& output, Console& console) {
  console.report(nameForMessages(input),
                 "holds characters that are not in " + output.display() + "; they are replaced");
}

int summarise(const SummaryArguments& arguments) {
  const Inputs inputs = inputsNamedBy(arguments.inputs);
  const RuleBase ruleBase;
  const bool isClassic = arguments.form() == ResultForm::kClassic;
  const bool tellsLosses = !isClassic && !arguments.verbosity.quiet;
  const OutputCharset output(
      ruleBase.names(), arguments.charset,
      isClassic ? OutputCharset::Lacking::kIsLeftToLibrary : OutputCharset::Lacking::kIsShown);
  WorkList list(inputs.paths, inputs.refused);
  list.tell(arguments.verbosity.chosen());
  if (arguments.json && !isClassic)
    list.recordFailures(
        [&](const auto& record) { return output.encoded(lineFor(output, record)); });
  return list.run(arguments.jobs, [&](size_t index) {
    const std::string& input = inputs.paths[index];
    const std::string text = resultOf(input, arguments, output);
    if (tellsLosses && !output.holds(text)) tellReplacements(input, output, list.console());
    list.write(index, output.encoded(text));
    list.countWhole(index);
  });
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
  addVerbosity(job, arguments->verbosity, kTellsSums);
  job.workers(arguments->jobs, "Work on N documents at once");
  job.footer(
      "Each document is a line with its name and a line for each property that it has: title,\n"
      "subject, author, keywords, comments, category, manager, company, created, last saved,\n"
      "last saved by, revision, application, presentation format, slides, notes, paragraphs,\n"
      "bytes. Texts are cut to 256 bytes of the document, the application to 30; times are as\n"
      "they stand there. A document that does not tell its code page is read as Windows-31J.\n"
      "\n"
      "In JSON times are as RFC 3339 has them, in UTC, and counts are numbers. A character that\n"
      "CHARSET lacks is replaced in text, which is told on standard error, and escaped in JSON.\n"
      "\n"
      "Exit status: 0 all well, 1 at least one document failed, 2 wrong usage.");
  job.work([arguments] { return summarise(*arguments); });
}

}  // namespace ksv_cli
