// Standard input, output and error. They are binary; where a console takes characters, UTF-8 is
// what is read from it and shown on it. Whatever fails throws Failure with the system's own words.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "cli/system/files.h"
#include "cli/system/streams.h"

namespace ksv_cli::platform {

FileFacts standardInputFacts();
FileFacts standardOutputFacts();

std::unique_ptr<ByteSource> openStandardInput();
std::unique_ptr<ByteSink> openStandardOutput();

bool standardErrorIsTerminal();
// Whether that terminal obeys escape sequences, once it has been asked to.
bool standardErrorTakesEscapes();
// How many columns that terminal has; 80 where it does not say.
size_t standardErrorColumns();
// In one go, so that lines of threads do not mix.
void writeToStandardError(std::string_view text);

}  // namespace ksv_cli::platform
