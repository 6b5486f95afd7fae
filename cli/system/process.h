// The process and what surrounds it, as the system has them. Text is UTF-8; whatever fails throws
// Failure with the system's own words.
#pragma once

#include <string>
#include <vector>

namespace ksv_cli::platform {

// The arguments of main() behind the name of the program.
std::vector<std::string> commandLineArguments(int argumentCount, char** arguments);

// Empty when the variable is not set.
std::string environmentValue(const char* name);

// To be called once, before any thread starts: a closed pipe and a file that grows
// too large become write errors, and whatever ends the process and can be caught
// removes the temporary files.
void prepareProcess();

// What is said where memory cannot be had.
extern const char kOutOfMemory[];

// Says so on standard error, without any.
void tellOutOfMemory() noexcept;

// Says so, and ends the process at once, with the status of a failure and without its temporary
// files.
[[noreturn]] void endOutOfMemory() noexcept;

}  // namespace ksv_cli::platform
