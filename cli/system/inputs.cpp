#include "cli/system/inputs.h"

#include <algorithm>

#include "cli/system/failure.h"
#include "cli/system/standard_streams.h"

namespace ksv_cli {

bool isStandardStream(const std::string& path) { return path == kStandardStream; }

std::string nameForMessages(const std::string& input) {
  return isStandardStream(input) ? "standard input" : input;
}

platform::FileFacts inputFacts(const std::string& input) {
  return isStandardStream(input) ? platform::standardInputFacts() : platform::fileFacts(input);
}

std::unique_ptr<ByteSource> openInput(const std::string& input) {
  return isStandardStream(input) ? platform::openStandardInput() : platform::openInput(input);
}

std::vector<uint8_t> readAtMost(ByteSource& source, size_t size) {
  constexpr size_t kBlock = 64 * 1024;
  std::vector<uint8_t> text;
  while (text.size() < size) {
    const size_t held = text.size();
    text.resize(held + std::min(kBlock, size - held));
    const size_t count = source.read(text.data() + held, text.size() - held);
    text.resize(held + count);
    if (count == 0) break;
  }
  return text;
}

uint64_t copyAll(ByteSource& source, ByteSink& sink) {
  constexpr size_t kBlock = 64 * 1024;
  const auto block = std::make_unique<uint8_t[]>(kBlock);
  uint64_t total = 0;
  while (const size_t count = source.read(block.get(), kBlock)) {
    sink.write(block.get(), count);
    total += count;
  }
  return total;
}

uint64_t knownSize(const std::string& input) {
  try {
    return inputFacts(input).size;
  } catch (const Failure&) {
    return 0;  // whoever reads it is told why
  }
}

uint64_t totalSize(const std::vector<std::string>& inputs) {
  uint64_t total = 0;
  for (const std::string& input : inputs) total += knownSize(input);
  return total;
}

}  // namespace ksv_cli
