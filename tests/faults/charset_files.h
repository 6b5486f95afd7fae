// The charset directory of a job: what a few charsets of the build tree's consist of.
#pragma once

#include <string>
#include <vector>

#include "tests/faults/answer.h"

namespace ksv::test {

inline constexpr char kCharsetDirectory[] = "charset/";

// Copies the rule files of charsets, by their names without ".xml", and all that they name
// into kCharsetDirectory, and has "Charsetpath" say where that is.
void installCharsets(const std::vector<std::string>& charsets);
// Only that setting.
void setCharsetPath();

// Starts the rule base with the charsets of that directory; not started where either fails.
bool startLoaded(Answer& answer);

// So that tables are made from their texts.
void removeCompiledTables();

// The names of compiled tables that are not as they ought to be.
std::vector<std::string> wrongCompiledTables();

}  // namespace ksv::test
