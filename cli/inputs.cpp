#include "inputs.h"

#include <algorithm>
#include <utility>

#include "failure.h"

namespace ksv_cli {
namespace {

// A line may end with CR LF. Empty names are passed over.
std::vector<std::string> namesIn(const FileList& list) {
  std::string text;
  try {
    const std::vector<uint8_t> bytes = readAtMost(*openInput(list.path), SIZE_MAX);
    text.assign(bytes.begin(), bytes.end());
  } catch (const Failure& failure) {
    throw UsageError(nameForMessages(list.path) + ": " + failure.what());
  }
  const char end = list.endsNamesWithNul ? '\0' : '\n';
  std::vector<std::string> names;
  for (size_t at = 0; at < text.size();) {
    const size_t behind = std::min(text.find(end, at), text.size());
    std::string name = text.substr(at, behind - at);
    if (!list.endsNamesWithNul && name.ends_with('\r')) name.pop_back();
    if (!name.empty()) names.push_back(std::move(name));
    at = behind + 1;
  }
  return names;
}

void checkThatStandardInputIsNamedOnce(const std::vector<std::string>& names) {
  if (std::count(names.begin(), names.end(), kStandardStream) > 1)
    throw UsageError("standard input is named twice");
}

std::vector<std::string> filesOf(const std::vector<std::string>& operands) {
  std::vector<std::string> inputs;
  for (const std::string& operand : operands)
    for (std::string& file : platform::filesNamedBy(operand)) inputs.push_back(std::move(file));
  return inputs;
}

}  // namespace

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

std::vector<std::string> inputsNamedBy(const std::vector<std::string>& operands) {
  std::vector<std::string> inputs = filesOf(operands);
  if (inputs.empty()) inputs.emplace_back(kStandardStream);
  checkThatStandardInputIsNamedOnce(inputs);
  return inputs;
}

std::vector<std::string> inputsNamedBy(const std::vector<std::string>& operands,
                                       const FileList& list) {
  if (list.path.empty()) return inputsNamedBy(operands);
  std::vector<std::string> inputs = filesOf(operands);
  std::vector<std::string> named = namesIn(list);
  inputs.insert(inputs.end(), std::make_move_iterator(named.begin()),
                std::make_move_iterator(named.end()));
  std::vector<std::string> all = inputs;
  all.push_back(list.path);
  if (isStandardStream(list.path)) checkThatStandardInputIsNamedOnce(all);
  checkThatStandardInputIsNamedOnce(inputs);
  return inputs;
}

}  // namespace ksv_cli
