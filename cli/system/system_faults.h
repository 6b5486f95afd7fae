// System errors that the library has noted and its calls are silent about.
#pragma once

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

// Calls of the library that read an input themselves tell only that they failed. The cause is what
// the system said last: it is forgotten in front of such a call, and asked for behind it. Empty, or
// ": " and the system's words.
void forgetCause();
std::string causeInWords();

// Why a compiled table could not be written since this was asked for last, on this thread; empty:
// nothing is known.
std::string compiledTableError();

}  // namespace ksv_cli
