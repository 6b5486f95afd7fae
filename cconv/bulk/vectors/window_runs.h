// The runs by windows of the processors that a source file is for.
#pragma once

#include "cconv/bulk/vectors/byte_codes_by_window.h"
#include "cconv/bulk/vectors/iso_2022_jp_by_window.h"
#include "cconv/bulk/vectors/units_by_window.h"
#include "cconv/bulk/vectors/utf8_by_window.h"

namespace ksv::vector_runs::by_windows {
namespace {

RunFunction byteCodesByWindows(AsciiOutput ascii) {
  return chosenRun(ascii, []<AsciiOutput kAscii>() -> RunFunction { return runByteCodes<kAscii>; });
}

RunFunction utf8ByWindows(AsciiOutput ascii) {
  return chosenRun(ascii, []<AsciiOutput kAscii>() -> RunFunction { return runUtf8<kAscii>; });
}

RunFunction twoByteUnitsByWindows(AsciiOutput ascii, bool bigEndian) {
  if (ascii == AsciiOutput::kBytes) return bigEndian ? runUnits<true, true> : runUnits<true, false>;
  return bigEndian ? runUnits<false, true> : runUnits<false, false>;
}

RunFunction byteCodesDesignatingByWindows() { return runByteCodes<AsciiOutput::kBytes, true>; }

RunFunction utf8DesignatingByWindows() { return runUtf8<AsciiOutput::kBytes, true>; }

RunFunction twoByteUnitsDesignatingByWindows(bool bigEndian) {
  return bigEndian ? runUnits<true, true, true> : runUnits<true, false, true>;
}

ShiftedRunFunction iso2022JpByWindows(AsciiOutput ascii) {
  if (ascii == AsciiOutput::kOther) return nullptr;
  return chosenRun(ascii,
                   []<AsciiOutput kAscii>() -> ShiftedRunFunction { return runIso2022Jp<kAscii>; });
}

constexpr LevelRuns kRuns = {byteCodesByWindows,       utf8ByWindows,
                             twoByteUnitsByWindows,    byteCodesDesignatingByWindows,
                             utf8DesignatingByWindows, twoByteUnitsDesignatingByWindows,
                             iso2022JpByWindows};

}  // namespace
}  // namespace ksv::vector_runs::by_windows
