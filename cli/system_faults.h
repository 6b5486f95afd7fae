// System errors that the library has noted and its calls are silent about.
#ifndef KSV_CLI_SYSTEM_FAULTS_H
#define KSV_CLI_SYSTEM_FAULTS_H

#include <optional>
#include <string>

namespace ksv_cli {

// The first of them in words; none when all that the library's answers rest on could be read.
// What could not be read stays so for this process.
std::optional<std::string> systemFault();

// Has memory that cannot be had noted as well, wherever somebody does without it.
void noteWantOfMemory();

// Throws a Failure with it. Called before a result is written anywhere, and before it takes the
// place of a file: it may rest on a table that was cut short.
void refuseSystemFaults();

// Forgets what was noted of files that this thread has looked at so far. Called in front of
// library calls that read an input themselves, and say nothing of how that ended.
void forgetInputErrors();
// Throws a Failure when the input could not be read since. what: what could not, if not the input.
void refuseInputErrors(const std::string& what = "");

// Why a compiled table could not be written since this was asked for last, on this thread; empty:
// nothing is known.
std::string compiledTableError();

}  // namespace ksv_cli

#endif
