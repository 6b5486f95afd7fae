// ksv summary: the properties of compound documents.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "charset_names.h"
#include "failure.h"
#include "inputs.h"
#include "jobs.h"
#include "ksv_ole.h"
#include "named_input.h"
#include "ole_tree.h"
#include "platform.h"
#include "result_line.h"
#include "rule_base.h"
#include "text_conversion.h"
#include "work_list.h"

namespace ksv_cli {
namespace {

struct SummaryArguments {
  std::vector<std::string> inputs;
  std::string charset = "UTF-8";
  bool json = false;
  size_t jobs = 1;
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
    {"Created", "created", kTimes, KSV_SUMMARY_CREATED},
    {"Last saved", "lastSaved", kTimes, KSV_SUMMARY_LAST_SAVED},
    {"Last saved by", "lastSavedBy", kMostProperties, KSV_SUMMARY_LAST_SAVED_BY},
    {"Revision", "revision", kMostProperties, KSV_SUMMARY_REVISION},
    {"Application", "application", kTimes, KSV_SUMMARY_APPLICATION},
    {"Presentation format", "presentationFormat", kMostProperties, KSV_SUMMARY_PRESENTATION_FORMAT},
    {"Slides", "slides", kMostProperties, KSV_SUMMARY_SLIDES},
    {"Notes", "notes", kMostProperties, KSV_SUMMARY_NOTES},
    {"Paragraphs", "paragraphs", kMostProperties, KSV_SUMMARY_PARAGRAPHS},
    {"Bytes", "bytes", kMostProperties, KSV_SUMMARY_BYTES},
};

struct FoundProperty {
  const NamedProperty* name;
  std::string value;  // UTF-8
};

using Record = std::string;

[[noreturn]] void failWith(uint32_t result, const std::string& path) {
  if (result == KSV_SUMMARY_NOT_OPENED) openDocument(path);  // tells why
  if (result == KSV_SUMMARY_NO_SUMMARY) throw Failure("has no summary information");
  if (result == KSV_SUMMARY_MALFORMED) throw Failure("has malformed summary information");
  throw Failure("cannot be read for lack of memory");
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
  const uint32_t result = SummaryInfo(path.c_str(), &settings, record.data(), parameters);
  if (result != KSV_SUMMARY_DONE) failWith(result, path);
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

std::string asJson(const std::string& name, const std::vector<FoundProperty>& found) {
  nlohmann::ordered_json line;
  line["path"] = name;
  for (const FoundProperty& property : found) line[property.name->key] = property.value;
  return jsonLine(line);
}

class TextSource : public ByteSource {
 public:
  explicit TextSource(std::string_view text) : text_(text) {}

  size_t read(uint8_t* buffer, size_t size) override {
    const size_t count = text_.copy(reinterpret_cast<char*>(buffer), size);
    text_.remove_prefix(count);
    return count;
  }

 private:
  std::string_view text_;
};

class TextSink : public ByteSink {
 public:
  void write(const uint8_t* bytes, size_t size) override {
    text.append(reinterpret_cast<const char*>(bytes), size);
  }

  std::string text;
};

// From the UTF-8 in which everything is put together.
std::string inCharset(const ConversionSettings& settings, const std::string& text) {
  TextSource source(text);
  TextSink sink;
  convertText(settings, source, sink);
  return std::move(sink.text);
}

ConversionSettings outputSettings(const CharsetNames& names, const std::string& charset) {
  const std::optional<CharsetChoice> target = names.find(charset);
  const std::optional<CharsetChoice> source = names.find("UTF-8");
  if (!target) throw UsageError(unknownCharset(charset));
  if (!source) throw UsageError(unknownCharset("UTF-8"));
  ConversionSettings settings;
  settings.source = *source;
  settings.target = *target;
  settings.options.outputBigEndian = !target->hasByteOrder() || target->order == ByteOrder::kBig;
  settings.options.replaceUnmappable = 1;
  return settings;
}

int summarise(const SummaryArguments& arguments) {
  const std::vector<std::string> inputs = inputsNamedBy(arguments.inputs);
  const RuleBase ruleBase;
  const ConversionSettings settings =
      outputSettings(CharsetNames(ruleBase.charsets()), arguments.charset);
  const bool isUtf8 = settings.target.form == UnicodeForm::kUtf8;
  WorkList list(inputs);
  return list.run(arguments.jobs, [&](size_t index) {
    const NamedInput named(inputs[index]);
    const std::vector<FoundProperty> found = readProperties(named.path());
    const std::string text = arguments.json ? asJson(inputs[index], found)
                                            : asText(nameForMessages(inputs[index]), found);
    list.standardOutput().write(index, isUtf8 ? text : inCharset(settings, text));
    list.console().addBytes(inputFacts(inputs[index]).size);
  });
}

}  // namespace

void addSummaryJob(CLI::App& app, int& exitStatus) {
  CLI::App* job = app.add_subcommand("summary", "Show the properties of compound documents");
  auto arguments = std::make_shared<SummaryArguments>();
  job->add_option("FILE", arguments->inputs, "The documents; none, or -, is standard input")
      ->type_name("");
  job->add_option("-t,--to", arguments->charset, "Charset of the output; default: UTF-8")
      ->type_name("CHARSET");
  job->add_flag("--json", arguments->json, "One JSON object a line, with the properties it has");
  job->add_option("-j,--jobs", arguments->jobs, "Work on N documents at once")
      ->check(CLI::Range(1, 256))
      ->type_name("N");
  job->footer(
      "Each document is a line with its name and a line for each property that it has: title,\n"
      "subject, author, keywords, comments, category, manager, company, created, last saved,\n"
      "last saved by, revision, application, presentation format, slides, notes, paragraphs,\n"
      "bytes. Texts are cut to 256 bytes of the document, the application to 30; times are as\n"
      "they stand there. A document that does not tell its code page is read as Windows-31J.");
  job->callback([arguments, &exitStatus] { exitStatus = summarise(*arguments); });
}

}  // namespace ksv_cli
