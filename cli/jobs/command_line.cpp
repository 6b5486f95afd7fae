#include "cli/jobs/command_line.h"

#include <algorithm>
#include <utility>

#include "cli/charsets/loaded_rules.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/options.h"
#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/standard_streams.h"

namespace ksv_cli {
namespace {

constexpr char kName[] = "ksv";
constexpr char kDescription[] = "Converts text between character encodings.";
constexpr char kVersion[] = "ksv " KSV_VERSION;
constexpr char kFooter[] =
    "'ksv JOB --help' tells the options of a job, 'ksv doctor' whether all is in place.";

struct Job {
  const char* name;
  void (*add)(OptionParser& parser);
};

// Those of one group stand together in the help, and the groups as their first jobs do.
constexpr Job kJobs[] = {
    {"convert", addConvertJob},   {"detect", addDetectJob}, {"check", addCheckJob},
    {"charsets", addCharsetsJob}, {"tables", addTablesJob}, {"cut", addCutJob},
    {"summary", addSummaryJob},   {"ole", addOleJob},       {"mail", addMailJob},
    {"lint", addLintJob},         {"doctor", addDoctorJob}};

bool isJob(const std::string& word) {
  return std::ranges::any_of(kJobs, [&](const Job& job) { return word == job.name; });
}

// A command line that begins with a job concerns no other one, unless its name follows somewhere.
void addJobs(OptionParser& parser, const std::vector<std::string>& arguments) {
  const bool beginsWithJob = !arguments.empty() && isJob(arguments.front());
  for (const Job& job : kJobs) {
    const bool isNamed = std::ranges::find(arguments, job.name) != arguments.end();
    if (!beginsWithJob || isNamed) job.add(parser);
  }
  parser.footer(kFooter);
}

// Wrong usage names the job it was meant for and where help is.
int reportUsage(const std::string& job, const std::string& reason) {
  const std::string help = job.empty() ? "ksv --help" : "ksv " + job + " --help";
  const std::string hint = reason + " (see '" + help + "')";
  platform::writeToStandardError(job.empty() ? diagnostic(hint) : diagnostic(job, hint));
  return kExitUsage;
}

}  // namespace

int runCommand(std::vector<std::string> arguments) {
  OptionParser parser(kName, kDescription, kVersion);
  addJobs(parser, arguments);
  try {
    const Request request = parser.parse(std::move(arguments));
    return request.work ? request.work() : writeResult(request.answer);
  } catch (const UsageError& error) {
    return reportUsage(parser.chosenJob(), error.what());
  } catch (const RuleBase::Unusable& unusable) {
    platform::writeToStandardError(diagnostic(unusable.directory, unusable.reason));
    return kExitFailed;
  }
}

DeclaredCommand declaredCommand() {
  OptionParser parser(kName, kDescription, kVersion);
  addJobs(parser, {});
  return parser.declared();
}

}  // namespace ksv_cli
