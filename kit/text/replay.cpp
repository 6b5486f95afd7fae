#include "kit/text/replay.h"

#include <cstddef>
#include <vector>

namespace ksv_kit {
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

// The converter where it has written so many bytes and looks at what is next.
ConverterRecord behindOutput(const ConverterRecord& before, int32_t outputBytes) {
  std::vector<uint8_t> scratch(static_cast<size_t>(outputBytes));
  ConverterRecord record = before;
  record.output = scratch.data();
  record.outputPosition = 0;
  record.outputCapacity = outputBytes;
  cconvConvert(&record);
  return record;
}

}  // namespace

int32_t characterStart(const ConverterRecord& before, int32_t reported) {
  std::vector<uint8_t> scratch(kScratchSize);
  int32_t length = reported;
  while (length > before.inputPosition) {
    const Ending ending = convertInto(scratch, before, length);
    if (ending.status == KSV_STATUS_DONE && ending.position == length) return length;
    length = ending.position < length ? ending.position : length - 1;
  }
  return before.inputPosition;
}

int32_t characterBehindOutput(const ConverterRecord& before, int32_t outputBytes) {
  std::vector<uint8_t> scratch(kScratchSize);
  ConverterRecord record = behindOutput(before, outputBytes);
  int32_t end = record.inputPosition;
  while (end < before.inputLength) {
    ConverterRecord next = record;
    next.inputLength = ++end;
    next.output = scratch.data();
    next.outputPosition = 0;
    next.outputCapacity = kScratchSize;
    const uint32_t status = cconvConvert(&next);
    if (next.outputPosition != 0 || status == KSV_STATUS_UNMAPPABLE) break;
    if (next.inputPosition == record.inputPosition) continue;
    record = next;
    end = record.inputPosition;
  }
  return record.inputPosition;
}

}  // namespace ksv_kit
