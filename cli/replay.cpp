#include "replay.h"

#include <vector>

#include "iso_2022_check.h"

namespace ksv_cli {
namespace {

constexpr int32_t kScratchSize = 16 * 1024;

struct Ending {
  uint32_t status;
  int32_t position;
};

Ending convertInto(std::vector<uint8_t>& scratch, ConverterRecord record, int32_t length) {
  record.inputLength = length;
  for (;;) {
    const int32_t begin = record.inputPosition;
    record.output = scratch.data();
    record.outputPosition = 0;
    record.outputCapacity = kScratchSize;
    const uint32_t status = cconvConvert(&record);
    const bool moved = record.inputPosition != begin || record.outputPosition != 0;
    if (status != KSV_STATUS_FULL || !moved) return {status, record.inputPosition};
  }
}

// Where the converter ends cleanly in front of the reported position.
int32_t cleanEnd(const ConverterRecord& before, int32_t reported) {
  std::vector<uint8_t> scratch(kScratchSize);
  int32_t length = reported;
  while (length > before.inputPosition) {
    const Ending ending = convertInto(scratch, before, length);
    if (ending.status == KSV_STATUS_DONE && ending.position == length) return length;
    length = ending.position < length ? ending.position : length - 1;
  }
  return before.inputPosition;
}

}  // namespace

int32_t characterStart(const ConverterRecord& before, int32_t reported, CharsetKind kind) {
  const int32_t start = cleanEnd(before, reported);
  if (kind != CharsetKind::kIso2022) return start;
  const size_t left = static_cast<size_t>(before.inputLength - start);
  return start + static_cast<int32_t>(escapesLength(before.input + start, left));
}

}  // namespace ksv_cli
