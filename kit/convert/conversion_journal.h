// Tells from which input byte an output byte came, for a while after the conversion.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "kit/text/buffer_offsets.h"
#include "ksv_cconv.h"

namespace ksv_kit {

class ConversionJournal {
 public:
  // One cconvConvert call: the record in front of it, with its buffers set and no
  // output yet, and behind it; offsets are those of the record's input.
  void note(const ConverterRecord& before, const ConverterRecord& after,
            const BufferOffsets& offsets);

  // The offset in the stream of the first byte of the character that the output byte
  // belongs to. The call that wrote it is made anew to find it.
  uint64_t inputOffset(uint64_t outputOffset) const;

  // So many bytes that stand for what is at the offset.
  void noteInserted(size_t bytes, uint64_t offset);

  // What was written in front of the piece before this one is not asked about any more.
  void beginPiece();

 private:
  struct Call {
    uint64_t outputBegin;
    uint64_t outputEnd;
    ConverterRecord before;
    std::vector<uint8_t> input;
    BufferOffsets offsets;
  };

  std::deque<Call> calls_;
  uint64_t written_ = 0;
  uint64_t pieceBegin_ = 0;
};

}  // namespace ksv_kit
