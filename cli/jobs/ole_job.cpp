// ksv ole: what is in a compound document.

#include <algorithm>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/jobs/jobs.h"
#include "cli/jobs/ole_tree.h"
#include "cli/jobs/options.h"
#include "cli/jobs/result_line.h"
#include "cli/jobs/unsupported_document.h"
#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/inputs.h"
#include "cli/system/named_input.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"

namespace ksv_cli {
namespace {

struct OleArguments {
  std::string input;
  std::string path;
  bool json = false;
  bool classic = false;
};

// What stands in front of a name in the tree: a line for each storage above it that has
// more to come.
std::string branch(std::vector<bool>& hasMore, const OleTree::Entry& entry) {
  hasMore.resize(entry.depth);
  std::string text;
  for (const bool more : hasMore) text += more ? "│  " : "   ";
  hasMore.push_back(!entry.isLast);
  return text + (entry.isLast ? "└─ " : "├─ ");
}

std::string asTree(const OleTree& tree, const std::string& title) {
  std::string text = title + "\n";
  std::vector<bool> hasMore;
  for (const OleTree::Entry& entry : tree.entries()) {
    text += branch(hasMore, entry) + entry.name;
    text += entry.isStorage ? "/\n" : "  " + std::to_string(entry.size) + "\n";
  }
  return text;
}

std::string asJson(const OleTree& tree) {
  std::string text;
  std::vector<std::string> path;
  for (const OleTree::Entry& entry : tree.entries()) {
    path.resize(entry.depth);
    nlohmann::ordered_json line = emptyRecord();
    std::string full;
    for (const std::string& name : path) full += name + "/";
    line["path"] = full + entry.name;
    line["type"] = entry.isStorage ? "storage" : "stream";
    if (!entry.isStorage) line["size"] = entry.size;
    text += jsonLine(line);
    path.push_back(entry.name);
  }
  return text;
}

int list(const OleArguments& arguments) {
  const NamedInput input(arguments.input);
  const auto file = openDocument(input.path());
  const OleTree tree(*file);
  const ResultForm form = arguments.classic ? ResultForm::kClassic : ResultForm::kFull;
  const std::string title = nameField(nameForMessages(arguments.input), form);
  const int status = writeResult(arguments.json ? asJson(tree) : asTree(tree, title));
  if (tree.damage()) {
    throw Failure::at(static_cast<uint64_t>(*tree.damage()), "has entries that are linked wrongly");
  }
  return status;
}

// How many bytes there were.
uint64_t copyStream(ksv::CompoundStream& stream) {
  constexpr uint32_t kBlock = 256 * 1024;
  const auto buffer = std::make_unique<uint8_t[]>(kBlock);
  const std::unique_ptr<ByteSink> sink = platform::openStandardOutput();
  uint64_t done = 0;
  while (const uint32_t count = stream.read(buffer.get(), kBlock)) {
    refuseSystemFaults();
    sink->write(buffer.get(), count);
    done += count;
  }
  return done;
}

int cat(const OleArguments& arguments) {
  const NamedInput input(arguments.input);
  const auto file = openDocument(input.path());
  const OleTree tree(*file);
  const OleTree::Entry* entry = tree.find(arguments.path);
  if (entry == nullptr) throw Failure("has no stream " + arguments.path);
  if (entry->isStorage) throw Failure(arguments.path + " is a storage");
  const auto stream = ksv::CompoundStream::open(*file, file->directory()[entry->id]);
  const auto refuseUnsupported = [&] {
    if (const auto unsupported = unsupportedStream(input.path(), entry->size)) throw *unsupported;
  };
  if (!stream) {
    refuseUnsupported();
    throw Failure::at(static_cast<uint64_t>(file->directory().offsetOf(entry->id)),
                      "has a damaged stream " + arguments.path);
  }
  const uint64_t done = copyStream(*stream);
  if (done == stream->size()) return kExitDone;
  refuseUnsupported();
  throw Failure("holds only " + std::to_string(done) + " of " + std::to_string(stream->size()) +
                " bytes of that stream");
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
  } catch (const Failure& failure) {
    const std::optional<std::string> fault = systemFault();
    return reportFailure(arguments, fault && !failure.quiet() ? Failure(*fault) : failure);
  } catch (const std::exception& error) {  // memory, or a document that cannot be read
    return reportFailure(arguments, Failure(reasonOf(error)));
  }
}

void addFile(Subcommand& part, OleArguments& arguments) {
  part.operand("FILE", arguments.input, "The document; - is standard input", {.required = true});
  part.flag("--classic", arguments.classic,
            "Exactly what the library answers, in the form that programs rely on");
}

}  // namespace

void addOleJob(OptionParser& parser) {
  Subcommand job = parser.job(groups::kDocuments, "ole", "Show what is in a compound document");
  auto arguments = std::make_shared<OleArguments>();

  Subcommand listing = job.part("list", "Draw the tree of storages and streams");
  addFile(listing, *arguments);
  listing.flag("--json", arguments->json, "One JSON object a line: path, type, size");
  listing.footer(
      "Storages end in '/', streams are followed by their size in bytes. A character of a\n"
      "name that cannot be shown, '/' and '\\' are written \\xHH or \\uHHHH.");
  listing.work([arguments] { return reportingFailures(*arguments, list); });

  Subcommand copying = job.part("cat", "Write the bytes of a stream to standard output");
  addFile(copying, *arguments);
  copying.operand("PATH", arguments->path, "The stream, as 'ksv ole list' shows it",
                  {.required = true});
  copying.footer(
      "PATH is the names of the storages and of the stream with '/' between them. A name that\n"
      "is not there as it is given is looked for without regard to case.");
  copying.work([arguments] { return reportingFailures(*arguments, cat); });
}

}  // namespace ksv_cli
