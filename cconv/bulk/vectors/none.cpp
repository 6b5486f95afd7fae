// Processors whose vector instructions are not made use of.
#include "cconv/bulk/vector_level.h"
#include "cconv/bulk/vector_runs.h"

namespace ksv::vector_runs {

VectorLevel vectorLevel() { return VectorLevel::kNone; }
void limitVectorsForTests(VectorLevel) {}

RunFunction byteCodes(AsciiOutput) { return nullptr; }
RunFunction utf8(AsciiOutput) { return nullptr; }
RunFunction twoByteUnits(AsciiOutput, bool) { return nullptr; }
RunFunction byteCodesDesignating() { return nullptr; }
RunFunction utf8Designating() { return nullptr; }
RunFunction twoByteUnitsDesignating(bool) { return nullptr; }
ShiftedRunFunction iso2022Jp(AsciiOutput) { return nullptr; }

}  // namespace ksv::vector_runs
