// What the handles of the interface stand for.
#pragma once

#include <memory>

#include "kit/convert/plan.h"

struct ksv_plan {
  std::shared_ptr<const ksv_kit::Plan> plan;
};
