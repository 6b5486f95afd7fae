#pragma once

#include "cconv/bulk/vector_runs.h"

namespace ksv::vector_runs {

ShiftedRunFunction iso2022JpAvx512(AsciiOutput ascii);

}  // namespace ksv::vector_runs
