#include "kit/convert/conversion_journal.h"

#include <utility>

#include "kit/text/offset_links.h"
#include "kit/text/replay.h"

namespace ksv_kit {

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
    if (call.input.empty() || outputOffset < call.outputBegin) return call.offsets.offset(0);
    ConverterRecord start = call.before;
    start.input = call.input.data();
    const int32_t position =
        characterBehindOutput(start, static_cast<int32_t>(outputOffset - call.outputBegin));
    return call.offsets.offset(static_cast<size_t>(position));
  }
  return calls_.empty() ? 0 : calls_.back().offsets.offset(calls_.back().input.size());
}

void ConversionJournal::noteInserted(size_t bytes, uint64_t offset) {
  Call call{};
  call.outputBegin = written_;
  written_ += bytes;
  call.outputEnd = written_;
  call.offsets.startAt(offset);
  calls_.push_back(std::move(call));
}

void ConversionJournal::beginPiece() {
  while (!calls_.empty() && calls_.front().outputEnd + OffsetLinks::kHeldBehind <= pieceBegin_)
    calls_.pop_front();
  pieceBegin_ = written_;
}

}  // namespace ksv_kit
