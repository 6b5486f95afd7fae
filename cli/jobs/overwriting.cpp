#include "cli/jobs/overwriting.h"

#include <cstdint>
#include <set>
#include <utility>

#include "cli/system/escapes.h"
#include "cli/system/files.h"
#include "cli/system/inputs.h"
#include "cli/system/paths.h"

namespace ksv_cli {
namespace {

using platform::FileFacts;
using platform::FileKind;
using FileId = std::pair<uint64_t, uint64_t>;
using OutputsByPlace = std::map<std::string, std::string>;

FileFacts factsOfInput(const std::vector<std::string>& inputs, size_t index,
                       RefusedInputs& refused) {
  try {
    return platform::fileFacts(inputs[index]);
  } catch (const Failure& failure) {
    refused.emplace(index, failure);
    return {};
  }
}

FileFacts factsOfOutput(const std::string& path) {
  try {
    return platform::fileFacts(path);
  } catch (const Failure& failure) {
    throw Failure(shownName(path) + ": " + failure.what());
  }
}

void checkThatNoInputIsOverwritten(const OutputsByPlace& outputs,
                                   const std::set<FileId>& inputIds) {
  for (const auto& [key, output] : outputs) {
    const FileFacts facts = factsOfOutput(output);
    if (facts.kind == FileKind::kRegular && inputIds.count({facts.device, facts.number}) != 0)
      throw UsageError(output + " is an input as well; --in-place converts a file where it is");
  }
}

}  // namespace

RefusedInputs checkThatNothingIsOverwritten(const OutputPlan& plan,
                                            const std::vector<std::string>& inputs) {
  RefusedInputs refused;
  if (plan.kind == OutputPlan::Kind::kStandardOutput) return refused;
  const bool isInPlace = plan.kind == OutputPlan::Kind::kInPlace;
  std::set<FileId> inputIds;
  OutputsByPlace outputs;
  for (size_t index = 0; index < inputs.size(); ++index) {
    const std::string& input = inputs[index];
    const std::string output = outputPath(plan, input);
    const FileFacts facts = factsOfInput(inputs, index, refused);
    const bool isFile = facts.kind == FileKind::kRegular && !isStandardStream(input);
    const bool isNewId = !isFile || inputIds.emplace(facts.device, facts.number).second;
    const bool isNewOutput = outputs.emplace(platform::placeKey(output), output).second;
    if (!isNewOutput || (isInPlace && !isNewId))
      throw UsageError(output + " would be written twice");
  }
  if (!isInPlace) checkThatNoInputIsOverwritten(outputs, inputIds);
  return refused;
}

}  // namespace ksv_cli
