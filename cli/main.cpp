// ksv: the command over ksv_comm.

#include <exception>

#include "command_line.h"
#include "console.h"
#include "failure.h"
#include "platform.h"

int main(int argumentCount, char** arguments) {
  try {
    ksv_cli::platform::prepareProcess();
    return ksv_cli::runCommand(ksv_cli::platform::commandLineArguments(argumentCount, arguments));
  } catch (const std::exception& error) {
    ksv_cli::platform::writeToStandardError(ksv_cli::diagnostic(error.what()));
    return ksv_cli::kExitFailed;
  }
}
