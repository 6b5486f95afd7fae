// The command without its process.
#pragma once

#include <string>
#include <vector>

#include "cli/jobs/option_table.h"

namespace ksv_cli {

// Does what the arguments ask for, which are those behind the name of the program, in UTF-8 where
// the system has paths in it. Returns the exit status; whatever went wrong has been told.
int runCommand(std::vector<std::string> arguments);

// All that the command takes.
DeclaredCommand declaredCommand();

}  // namespace ksv_cli
