// A loss report for people and for programs.
#pragma once

#include <string>

#include "kit/report/loss_report.h"

namespace ksv_kit {

// One JSON object, without a line end.
std::string reportAsJson(const LossReport& report);

// Lines for a terminal; empty when nothing is lost.
std::string reportAsTable(const LossReport& report);

}  // namespace ksv_kit
