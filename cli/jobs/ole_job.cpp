// ksv ole: what is in a compound document, and whether it is sound.

#include <algorithm>
#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/jobs/classic_ole.h"
#include "cli/jobs/document_extraction.h"
#include "cli/jobs/document_listing.h"
#include "cli/jobs/document_verdict.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/opened_document.h"
#include "cli/jobs/operands.h"
#include "cli/jobs/options.h"
#include "cli/jobs/result_line.h"
#include "cli/jobs/result_places.h"
#include "cli/jobs/verbosity.h"
#include "cli/jobs/work_list.h"
#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/inputs.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"

namespace ksv_cli {
namespace {

constexpr char kCheckFooter[] =
    "A document is sound, damaged, or orphaned: all that its tree leads to is sound, and other\n"
    "entries are in use that no storage leads to. Each damage is told with the byte of the file\n"
    "at which it is.\n"
    "\n"
    "Exit status: 0 all are sound, 1 at least one is damaged or failed, 2 wrong usage, 3 none is\n"
    "damaged, and at least one is orphaned.";

struct OleArguments {
  std::string input;
  std::string path;
  std::string directory;
  std::optional<std::string> output;
  bool json = false;
  bool isLong = false;
  bool replaces = false;
  bool classic = false;

  Telling telling() const { return json ? Telling::kRecords : Telling::kLines; }
};

std::string listed(const Document& document, const OleArguments& arguments) {
  if (arguments.json) return listedAsJson(document);
  if (arguments.isLong) return listedAsTable(document);
  const std::string name = nameForMessages(arguments.input);
  return listedAsTree(document, nameField(name, ResultForm::kFull));
}

int list(const OleArguments& arguments) {
  if (arguments.classic && arguments.isLong)
    throw UsageError("--classic and --long contradict each other");
  if (arguments.classic) return listClassically(arguments.input, arguments.json);
  if (arguments.json && arguments.isLong)
    throw UsageError("--json and --long contradict each other");
  const OpenedDocument document(arguments.input);
  const int status =
      document->entries().empty() ? kExitDone : writeResult(listed(*document, arguments));
  const int told = tellDamages(arguments.input, *document, arguments.telling());
  if (isNestedTooDeep(*document))
    throw Failure("has storages that are nested too deep to be listed");
  return std::max(status, told);
}

uint32_t streamAt(const Document& document, const std::string& path) {
  const std::optional<uint32_t> found = document.find(path);
  if (!found) throw Failure("has no stream " + path);
  if (!document.entries()[*found].isStream()) throw Failure(path + " is a storage");
  return *found;
}

// How many bytes there were.
uint64_t copyStream(Document& document, uint32_t index, ByteSink& sink) {
  constexpr size_t kBlock = 256 * 1024;
  std::vector<uint8_t> block(kBlock);
  uint64_t done = 0;
  while (const size_t count = document.read(index, done, block.data(), block.size())) {
    refuseSystemFaults();
    sink.write(block.data(), count);
    done += count;
  }
  return done;
}

int cat(const OleArguments& arguments) {
  if (arguments.classic && arguments.output)
    throw UsageError("--classic and --output contradict each other");
  if (arguments.classic) return catClassically(arguments.input, arguments.path);
  const OpenedDocument document(arguments.input);
  const uint32_t index = streamAt(*document, arguments.path);
  std::unique_ptr<Result> file;
  if (arguments.output) file = fileResult(*arguments.output);
  const std::unique_ptr<ByteSink> output = file ? nullptr : platform::openStandardOutput();
  const uint64_t done =
      copyStream(*document, index, file ? static_cast<ByteSink&>(*file) : *output);
  const uint64_t size = document->entries()[index].size();
  if (done == size && file) file->complete();
  const int told = tellDamages(arguments.input, *document, Telling::kLines);
  if (done != size)
    throw Failure("holds only " + std::to_string(done) + " of " + std::to_string(size) +
                  " bytes of that stream");
  return told;
}

int extract(const OleArguments& arguments) {
  const OpenedDocument document(arguments.input);
  DocumentExtraction extraction(*document, arguments.directory, arguments.replaces);
  const std::string name = nameForMessages(arguments.input);
  int status = kExitDone;
  extraction.write(
      [&](uint32_t index, const std::string& path) {
        if (!arguments.json) return;
        nlohmann::ordered_json line = emptyRecord();
        line["path"] = document->pathOf(index);
        addPath(line, "file", path);
        line["size"] = document->entries()[index].size();
        status = std::max(status, writeResult(jsonLine(line)));
      },
      [&](const Failure& failure) {
        platform::writeToStandardError(diagnostic(name, failure.what()));
        status = kExitFailed;
      });
  const int told = tellDamages(arguments.input, *document, arguments.telling());
  if (isNestedTooDeep(*document))
    throw Failure("has storages that are nested too deep to be extracted");
  return std::max(status, told);
}

int reportFailure(const OleArguments& arguments, const Failure& failure) {
  if (failure.quiet()) return kExitFailed;
  platform::writeToStandardError(diagnostic(nameForMessages(arguments.input), failure.what()));
  if (arguments.json && !arguments.classic)
    writeToStandardOutput(jsonLine(failureRecord(arguments.input, failure)));
  return kExitFailed;
}

int reportingFailures(const OleArguments& arguments,
                      const std::function<int(const OleArguments&)>& job) {
  try {
    return job(arguments);
  } catch (const UsageError&) {
    throw;
  } catch (const Failure& failure) {
    const std::optional<std::string> fault = systemFault();
    return reportFailure(arguments, fault && !failure.quiet() ? Failure(*fault) : failure);
  } catch (const std::exception& error) {  // memory, or a document that cannot be read
    return reportFailure(arguments, Failure(reasonOf(error)));
  }
}

struct CheckArguments {
  InputOptions inputs;
  VerbosityOptions verbosity;
  bool json = false;
  uint64_t jobs = 1;
};

int check(const CheckArguments& arguments) {
  const Inputs inputs = inputsNamedBy(arguments.inputs);
  WorkList list(inputs.paths, inputs.refused);
  list.tell(arguments.verbosity.chosen());
  if (arguments.json) list.recordFailures();
  std::atomic<bool> isAnyOrphaned = false;
  const int status = list.run(arguments.jobs, [&](size_t index) {
    const std::string& input = inputs.paths[index];
    list.countWhole(index);
    const OpenedDocument document(input);
    const DocumentVerdict verdict = verdictOn(*document);
    const std::string title = nameField(nameForMessages(input), ResultForm::kFull);
    list.write(index, arguments.json ? verdictAsJson(*document, verdict, input)
                                     : verdictAsText(*document, verdict, title));
    if (verdict.isDamaged) throw Failure("", true);
    if (!verdict.isSound()) isAnyOrphaned = true;
  });
  return status == kExitDone && isAnyOrphaned ? kExitUndetermined : status;
}

void addFile(Subcommand& part, OleArguments& arguments) {
  part.operand("FILE", arguments.input, "The document; - is standard input", {.required = true});
}

void addClassic(Subcommand& part, OleArguments& arguments) {
  part.flag("--classic", arguments.classic,
            "Exactly what the library answers, in the form that programs rely on");
}

void addListing(Subcommand& job, const std::shared_ptr<OleArguments>& arguments) {
  Subcommand part = job.part("list", "Draw the tree of storages and streams");
  addFile(part, *arguments);
  part.flag("-l,--long", arguments->isLong,
            "A line an entry: type, size, when created and modified, class id, state, path");
  part.flag("--json", arguments->json, "One JSON object a line: path, type, size and more");
  addClassic(part, *arguments);
  part.footer(
      "Storages end in '/', streams are followed by their size in bytes. A character of a\n"
      "name that cannot be shown, '/' and '\\' are written \\xHH or \\uHHHH. Entries that no\n"
      "storage leads to stand at the end, as \\orphaned/NUMBER/NAME.");
  part.work([arguments] { return reportingFailures(*arguments, list); });
}

void addCopying(Subcommand& job, const std::shared_ptr<OleArguments>& arguments) {
  Subcommand part = job.part("cat", "Write the bytes of a stream to standard output");
  addFile(part, *arguments);
  part.operand("PATH", arguments->path, "The stream, as 'ksv ole list' shows it",
               {.required = true});
  part.value("-o,--output", "FILE", arguments->output,
             "Write to this file instead, whole or not at all");
  addClassic(part, *arguments);
  part.footer(
      "PATH is the names of the storages and of the stream with '/' between them. A name that\n"
      "is not there as it is given is looked for without regard to case.");
  part.work([arguments] { return reportingFailures(*arguments, cat); });
}

void addExtraction(Subcommand& job, const std::shared_ptr<OleArguments>& arguments) {
  Subcommand part = job.part("extract", "Write all streams to files");
  addFile(part, *arguments);
  part.operand("DIR", arguments->directory, "The directory to write them below; is made",
               {.required = true});
  part.flag("--replace", arguments->replaces, "Replace files that are there already");
  part.flag("--json", arguments->json, "One JSON object a line: path, file, size");
  part.footer(
      "Storages become directories and streams files, each whole or not at all. What no file can\n"
      "be called becomes '_'; names that are one then are numbered. Without --replace nothing is\n"
      "written where a file is there already with other bytes.");
  part.work([arguments] { return reportingFailures(*arguments, extract); });
}

void addChecking(Subcommand& job) {
  Subcommand part = job.part("check", "Tell whether documents are sound");
  auto arguments = std::make_shared<CheckArguments>();
  addInputs(part, arguments->inputs, "The documents; none, or -, is standard input");
  part.flag("--json", arguments->json, "One JSON object a line, with each damage");
  addVerbosity(part, arguments->verbosity, kTellsSums);
  part.workers(arguments->jobs, "Work on N documents at once");
  part.footer(kCheckFooter);
  part.work([arguments] { return check(*arguments); });
}

}  // namespace

void addOleJob(OptionParser& parser) {
  Subcommand job = parser.job(groups::kDocuments, "ole", "Show what is in a compound document");
  const auto arguments = std::make_shared<OleArguments>();
  addListing(job, arguments);
  addCopying(job, arguments);
  addExtraction(job, arguments);
  addChecking(job);
}

}  // namespace ksv_cli
