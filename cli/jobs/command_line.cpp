#include "cli/jobs/command_line.h"

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

// Those of one group stand together in the help, and the groups as their first jobs do.
void addJobs(OptionParser& parser) {
  addConvertJob(parser);
  addDetectJob(parser);
  addCheckJob(parser);
  addCharsetsJob(parser);
  addTablesJob(parser);
  addCutJob(parser);
  addSummaryJob(parser);
  addOleJob(parser);
  addLintJob(parser);
  addDoctorJob(parser);
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
  addJobs(parser);
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
  addJobs(parser);
  return parser.declared();
}

}  // namespace ksv_cli
