// The inputs of a job: files, and standard input.
#ifndef KSV_CLI_INPUTS_H
#define KSV_CLI_INPUTS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform.h"
#include "streams.h"

namespace ksv_cli {

// The operand that stands for standard input and output.
inline constexpr char kStandardStream[] = "-";

bool isStandardStream(const std::string& path);
std::string nameForMessages(const std::string& input);
platform::FileFacts inputFacts(const std::string& input);
std::unique_ptr<ByteSource> openInput(const std::string& input);

// The first bytes of a text, at most so many. Throws Failure.
std::vector<uint8_t> readAtMost(ByteSource& source, size_t size);

// The bytes of an input as far as they are known, and of all inputs together.
uint64_t knownSize(const std::string& input);
uint64_t totalSize(const std::vector<std::string>& inputs);

// The files that operands name; standard input when there are none. Throws UsageError
// when standard input is named twice.
std::vector<std::string> inputsNamedBy(const std::vector<std::string>& operands);

// A list of files beside the operands: one name a line, or ended by NUL.
struct FileList {
  std::string path;  // of the list; empty: there is none
  bool endsNamesWithNul = false;
};

// The same with the names of a list behind the operands. Each stands for one file.
// Throws UsageError when the list cannot be read, or is standard input and a text as
// well.
std::vector<std::string> inputsNamedBy(const std::vector<std::string>& operands,
                                       const FileList& list);

}  // namespace ksv_cli

#endif
