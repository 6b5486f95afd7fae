#include "kit/interface/plan_cache.h"

#include <string>
#include <utility>

namespace ksv_kit {
namespace {

struct LatestPlan {
  std::string from;
  std::string to;
  std::shared_ptr<const Plan> plan;
};

LatestPlan& latest() {
  thread_local LatestPlan plan;
  return plan;
}

}  // namespace

PlanInUse::PlanInUse(const char* from, const char* to, const ksv_options* options) {
  if (options != nullptr || from == nullptr || to == nullptr) {
    plan_ = std::make_shared<const Plan>(from, to, options);
    return;
  }
  LatestPlan& kept = latest();
  if (kept.plan == nullptr || kept.from != from || kept.to != to)
    kept = {from, to, std::make_shared<const Plan>(from, to, nullptr)};
  plan_ = kept.plan;
}

}  // namespace ksv_kit
