#include "cli/text/conversion_journal.h"

#include "cli/text/replay.h"

namespace ksv_cli {

void ConversionJournal::note(const ConverterRecord& before, const ConverterRecord& after,
                             const BufferOffsets& offsets) {
  if (after.outputPosition == 0) return;
  const uint64_t begin = written_;
  written_ += static_cast<uint64_t>(after.outputPosition);
  Call call = {begin, written_, before, {}, offsets};
  call.offsets.advance(static_cast<size_t>(before.inputPosition));
  call.input.assign(before.input + before.inputPosition, before.input + after.inputPosition);
  call.before.inputPosition = 0;
  call.before.inputLength = static_cast<int32_t>(call.input.size());
  calls_.push_back(std::move(call));
}

uint64_t ConversionJournal::inputOffset(uint64_t outputOffset) const {
  for (const Call& call : calls_) {
    if (outputOffset >= call.outputEnd) continue;
    ConverterRecord start = call.before;
    start.input = call.input.data();
    const int32_t position =
        characterBehindOutput(start, static_cast<int32_t>(outputOffset - call.outputBegin));
    return call.offsets.offset(static_cast<size_t>(position));
  }
  return calls_.empty() ? 0 : calls_.back().offsets.offset(calls_.back().input.size());
}

void ConversionJournal::forgetBefore(uint64_t outputOffset) {
  while (!calls_.empty() && calls_.front().outputEnd <= outputOffset) calls_.pop_front();
}

std::optional<uint64_t> ConversionJournal::firstInputOffset() const {
  if (calls_.empty()) return std::nullopt;
  return calls_.front().offsets.offset(0);
}

}  // namespace ksv_cli
