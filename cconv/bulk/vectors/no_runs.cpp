#include "cconv/bulk/vector_runs.h"

namespace ksv::vector_runs {
namespace {

RunFunction none(AsciiOutput) { return nullptr; }
RunFunction noUnits(AsciiOutput, bool) { return nullptr; }
RunFunction noDesignating() { return nullptr; }
RunFunction noUnitsDesignating(bool) { return nullptr; }
ShiftedRunFunction noShifted(AsciiOutput) { return nullptr; }

}  // namespace

constinit const LevelRuns kNoRuns = {
    none, none, noUnits, noDesignating, noDesignating, noUnitsDesignating, noShifted};

}  // namespace ksv::vector_runs
