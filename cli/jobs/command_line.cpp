#include "cli/jobs/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <utility>

#include "cli/charsets/rule_base.h"
#include "cli/jobs/jobs.h"
#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/platform.h"

namespace ksv_cli {
namespace {

// Wrong usage names the job it was meant for and where help is.
int reportUsage(const CLI::App& app, const std::string& reason) {
  std::string job;
  for (const CLI::App* chosen : app.get_subcommands()) job = chosen->get_name();
  const std::string help = job.empty() ? "ksv --help" : "ksv " + job + " --help";
  const std::string hint = reason + " (see '" + help + "')";
  platform::writeToStandardError(job.empty() ? diagnostic(hint) : diagnostic(job, hint));
  return kExitUsage;
}

std::string withoutJob(const CLI::App& app) {
  const std::vector<std::string> unknown = app.remaining();
  if (!unknown.empty()) return unknown.front() + " is neither a job nor an option";
  std::string jobs;
  for (const CLI::App* job : app.get_subcommands(nullptr))
    jobs += (jobs.empty() ? "" : ", ") + job->get_name();
  return "a job is needed: " + jobs;
}

}  // namespace

int runCommand(std::vector<std::string> arguments) {
  CLI::App app("Converts text between character encodings.", "ksv");
  app.set_version_flag("--version", "ksv " KSV_VERSION, "Print name and version, and exit");
  app.set_help_flag("-h,--help", "Print this help, and exit");
  app.allow_windows_style_options(false);  // "/" begins a path everywhere
  app.require_subcommand(1);
  app.get_formatter()->column_width(32);

  int exitStatus = kExitDone;
  addConvertJob(app, exitStatus);
  addDetectJob(app, exitStatus);
  addCheckJob(app, exitStatus);
  addCharsetsJob(app, exitStatus);
  addTablesJob(app, exitStatus);
  addCutJob(app, exitStatus);
  addSummaryJob(app, exitStatus);
  addOleJob(app, exitStatus);
  addLintJob(app, exitStatus);
  try {
    std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
    app.parse(std::move(arguments));
  } catch (const CLI::Success& request) {  // help or version
    std::ostringstream answer;
    app.exit(request, answer);
    return writeResult(answer.str());
  } catch (const CLI::ParseError& error) {
    const bool hasJob = !app.get_subcommands().empty();
    return reportUsage(app, hasJob ? error.what() : withoutJob(app));
  } catch (const UsageError& error) {
    return reportUsage(app, error.what());
  } catch (const RuleBase::Unusable& unusable) {
    platform::writeToStandardError(diagnostic(unusable.directory, unusable.reason));
    return kExitFailed;
  }
  return exitStatus;
}

}  // namespace ksv_cli
