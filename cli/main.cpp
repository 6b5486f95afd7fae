// ksv: the command over ksv_comm.

#include <exception>
#include <new>

#include "cli/charsets/loaded_rules.h"
#include "cli/jobs/command_line.h"
#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/process.h"
#include "cli/system/rights.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"

int main(int argumentCount, char** arguments) {
  using namespace ksv_cli;
  try {
    noteWantOfMemory();
    RuleBase::leaveToSystem();
    platform::prepareProcess();
    platform::dropUnneededRights();
    const int exitStatus = runCommand(platform::commandLineArguments(argumentCount, arguments));
    return exitStatus != kExitUsage && isAnythingLeftOver() ? kExitFailed : exitStatus;
  } catch (const std::bad_alloc&) {
    platform::tellOutOfMemory();
  } catch (const std::exception& error) {
    platform::writeToStandardError(diagnostic(error.what()));
  }
  return kExitFailed;
}
