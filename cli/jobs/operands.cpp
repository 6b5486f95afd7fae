#include "cli/jobs/operands.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "cli/jobs/file_tree.h"
#include "cli/system/inputs.h"
#include "cli/system/paths.h"

namespace ksv_cli {
namespace {

// A line may end with CR LF. Empty names are passed over.
std::vector<std::string> namesIn(const FileList& list) {
  std::string text;
  try {
    const std::vector<uint8_t> bytes = readAtMost(*openInput(list.path), SIZE_MAX);
    text.assign(bytes.begin(), bytes.end());
  } catch (const Failure& failure) {
    throw UsageError(nameForMessages(list.path) + ": " + failure.what());
  }
  const char end = list.endsNamesWithNul ? '\0' : '\n';
  std::vector<std::string> names;
  for (size_t at = 0; at < text.size();) {
    const size_t behind = std::min(text.find(end, at), text.size());
    std::string name = text.substr(at, behind - at);
    if (!list.endsNamesWithNul && name.ends_with('\r')) name.pop_back();
    if (!name.empty()) names.push_back(std::move(name));
    at = behind + 1;
  }
  return names;
}

void checkThatStandardInputIsNamedOnce(const std::vector<std::string>& names) {
  if (std::count(names.begin(), names.end(), kStandardStream) > 1)
    throw UsageError("standard input is named twice");
}

std::vector<std::string> namesGiven(const InputOptions& options) {
  const platform::Wanted wanted =
      options.entersDirectories ? platform::Wanted::kFilesAndDirectories : platform::Wanted::kFiles;
  std::vector<std::string> names;
  for (const std::string& operand : options.operands)
    for (std::string& file : platform::filesNamedBy(operand, wanted))
      names.push_back(std::move(file));
  if (options.list.path.empty()) {
    if (names.empty()) names.emplace_back(kStandardStream);
    checkThatStandardInputIsNamedOnce(names);
    return names;
  }
  std::vector<std::string> listed = namesIn(options.list);
  names.insert(names.end(), std::make_move_iterator(listed.begin()),
               std::make_move_iterator(listed.end()));
  if (isStandardStream(options.list.path)) names.push_back(options.list.path);
  checkThatStandardInputIsNamedOnce(names);
  if (isStandardStream(options.list.path)) names.pop_back();
  return names;
}

void add(FoundFile found, Inputs& inputs) {
  if (found.refused) inputs.refused.emplace(inputs.paths.size(), *found.refused);
  inputs.add(std::move(found.path), found.belowAt);
}

bool isDirectory(const std::string& name) {
  return !isStandardStream(name) &&
         platform::fileFacts(name).kind == platform::FileKind::kDirectory;
}

// What nothing can be told of is an input whose reading fails.
void addEntering(const std::string& name, const FileFilter& filter, Inputs& inputs) {
  try {
    if (isDirectory(name))
      findFilesBelow(name, filter, [&](FoundFile found) { add(std::move(found), inputs); });
    else
      add({name, 0}, inputs);
  } catch (const Failure& failure) {
    add({name, 0, failure}, inputs);
  }
}

platform::FileFacts factsOfResults(const std::string& directory) {
  if (directory.empty()) return {};
  try {
    return platform::fileFacts(directory);
  } catch (const Failure&) {
    return {};  // whoever writes to it is told
  }
}

}  // namespace

void addInputs(Subcommand& job, InputOptions& options, const char* help) {
  job.operands("FILE", options.operands, help);
  job.value("--files-from", "LIST", options.list.path, "Read names of further files from LIST");
  job.flag("--null", options.list.endsNamesWithNul,
           "The names of the list end with NUL, not with a line end");
  job.flag("-r,--recursive", options.entersDirectories,
           "Work on all files below the directories named");
  job.values("--include", "GLOB", options.included,
             "With -r: only files whose names match; may be given several times");
  job.values("--exclude", "GLOB", options.excluded,
             "With -r: no files and directories whose names match; may be given several times");
}

Inputs inputsNamedBy(const InputOptions& options, const std::string& resultDirectory) {
  if (!options.entersDirectories && !(options.included.empty() && options.excluded.empty()))
    throw UsageError("--include and --exclude are for -r only");
  const std::vector<std::string> names = namesGiven(options);
  const FileFilter filter(options.included, options.excluded, factsOfResults(resultDirectory));
  Inputs inputs;
  for (const std::string& name : names) {
    if (options.entersDirectories)
      addEntering(name, filter, inputs);
    else
      add({name, 0}, inputs);
  }
  return inputs;
}

}  // namespace ksv_cli
