// Processors whose vector instructions are not made use of.
#include "cconv/bulk/vector_level.h"
#include "cconv/bulk/vector_runs.h"

namespace ksv::vector_runs {

VectorLevel vectorLevel() { return VectorLevel::kNone; }
void limitVectors(VectorLevel) {}

RunShort byteCodes(AsciiOutput) { return nullptr; }
RunShort utf8(AsciiOutput) { return nullptr; }
RunShort twoByteUnits(AsciiOutput, bool) { return nullptr; }
RunShort byteCodesDesignating() { return nullptr; }
RunShort utf8Designating() { return nullptr; }
RunShort twoByteUnitsDesignating(bool) { return nullptr; }
RunShifted iso2022Jp(AsciiOutput) { return nullptr; }

}  // namespace ksv::vector_runs
