#include "cli/jobs/output_plan.h"

#include "cli/system/paths.h"

namespace ksv_cli {

std::string outputPath(const OutputPlan& plan, const std::string& input) {
  switch (plan.kind) {
    case OutputPlan::Kind::kDirectory:
      return platform::joinPath(plan.path, platform::lastComponent(input));
    case OutputPlan::Kind::kInPlace:
      return input;
    default:
      return plan.path;
  }
}

std::string backupPath(const OutputPlan& plan, const std::string& input) {
  return plan.backupSuffix.empty() ? "" : input + plan.backupSuffix;
}

}  // namespace ksv_cli
