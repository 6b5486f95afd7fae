// The plans of calls that name their charsets each time.
#pragma once

#include <memory>

#include "kit/convert/plan.h"

namespace ksv_kit {

// The plan of the latest such call of this thread, if it is the same, else a new one. Only calls
// without options are remembered: what options point to may have changed.
class PlanInUse {
 public:
  PlanInUse(const char* from, const char* to, const ksv_options* options);

  const Plan& operator*() const { return *plan_; }

 private:
  std::shared_ptr<const Plan> plan_;
};

}  // namespace ksv_kit
