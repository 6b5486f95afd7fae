// ksv lint: what is wrong with a charset directory, a line each.

#include <memory>
#include <string>
#include <vector>

#include "cli/charsets/rule_lint.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/options.h"
#include "cli/jobs/result_line.h"
#include "cli/system/console.h"
#include "cli/system/escapes.h"
#include "cli/system/failure.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"
#include "kit/charsets/charset_directory.h"

namespace ksv_cli {

using ksv_kit::charsetDirectory;

namespace {

constexpr char kFooter[] =
    "A line a fault, on standard output: FILE:LINE: REASON, or FILE: REASON of a file as a\n"
    "whole. DIR is a charset directory; without it, the one that the other jobs use. Rule\n"
    "files, sets, code tables with their compiled copies and aliases.txt are looked at:\n"
    "encodings, missing files, entities, codecs, tables that lose lines, copies that are not\n"
    "what their texts say, names that share a number. Nothing is written.\n"
    "\n"
    "Exit status: 0 no fault, 1 faults or no such directory, 2 wrong usage.";

struct Arguments {
  std::string directory;
  bool json = false;
};

std::string asJson(const Fault& fault) {
  nlohmann::ordered_json line = recordOf(fault.file, ResultForm::kFull);
  line["line"] = nullptr;
  if (fault.line != 0) line["line"] = fault.line;
  line["reason"] = fault.reason;
  return jsonLine(line);
}

std::string directoryOf(const Arguments& arguments) {
  if (!arguments.directory.empty()) return arguments.directory;
  const std::optional<std::string> directory = charsetDirectory();
  if (!directory) throw Failure("there is none; 'ksv lint DIR' names one");
  return *directory;
}

int lint(const Arguments& arguments) {
  std::string subject = "charset directory";
  try {
    const std::string directory = directoryOf(arguments);
    subject = directory;
    const LintFindings found = lintCharsetDirectory(directory);
    std::string text;
    for (const Fault& fault : found.faults)
      text += arguments.json ? asJson(fault) : escaped(shownFault(fault), Backslash::kStays) + "\n";
    for (const std::string& file : found.unreadable)
      platform::writeToStandardError("ksv: " + file + "\n");
    const int written = writeResult(text);
    return found.any() ? kExitFailed : written;
  } catch (const Failure& failure) {
    // Want of memory makes a setting look as if it were not there.
    const std::string reason = systemFault().value_or(failure.what());
    platform::writeToStandardError(diagnostic(subject, reason));
    return kExitFailed;
  }
}

}  // namespace

void addLintJob(OptionParser& parser) {
  Subcommand job =
      parser.job(groups::kCharsets, "lint", "Tell what is wrong with a charset directory");
  auto arguments = std::make_shared<Arguments>();
  job.operand("DIR", arguments->directory, "The charset directory");
  job.flag("--json", arguments->json, "One JSON object a line: path, line, reason");
  job.footer(kFooter);
  job.work([arguments] { return lint(*arguments); });
}

}  // namespace ksv_cli
