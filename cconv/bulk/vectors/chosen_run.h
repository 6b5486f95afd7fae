// Of the runs for each way to write ASCII, the one for this.
#pragma once

#include "cconv/bulk/bulk_run.h"

namespace ksv::vector_runs {

template <typename RunFor>
auto chosenRun(AsciiOutput ascii, RunFor runFor)
    -> decltype(runFor.template operator()<AsciiOutput::kOther>()) {
  switch (ascii) {
    case AsciiOutput::kBytes:
      return runFor.template operator()<AsciiOutput::kBytes>();
    case AsciiOutput::kLittleUnits:
      return runFor.template operator()<AsciiOutput::kLittleUnits>();
    case AsciiOutput::kBigUnits:
      return runFor.template operator()<AsciiOutput::kBigUnits>();
    case AsciiOutput::kOther:
      break;
  }
  return runFor.template operator()<AsciiOutput::kOther>();
}

}  // namespace ksv::vector_runs
