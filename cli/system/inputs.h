// The inputs of a job: files, and standard input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "cli/system/files.h"
#include "cli/system/streams.h"

namespace ksv_cli {

// The operand that stands for standard input and output.
inline constexpr char kStandardStream[] = "-";

bool isStandardStream(const std::string& path);
std::string nameForMessages(const std::string& input);
platform::FileFacts inputFacts(const std::string& input);
std::unique_ptr<ByteSource> openInput(const std::string& input);

// The first bytes of a text, at most so many. Throws Failure.
std::vector<uint8_t> readAtMost(ByteSource& source, size_t size);

// Copies what is left of a text, and returns how many bytes that were. Throws Failure.
uint64_t copyAll(ByteSource& source, ByteSink& sink);

// The bytes of an input as far as they are known, and of all inputs together.
uint64_t knownSize(const std::string& input);
uint64_t totalSize(const std::vector<std::string>& inputs);

}  // namespace ksv_cli
