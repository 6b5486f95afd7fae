#include "cli/jobs/operands.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "cli/system/failure.h"
#include "cli/system/inputs.h"
#include "cli/system/paths.h"

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
