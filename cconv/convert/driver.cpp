#include "cconv/convert/driver.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "cconv/bulk/registry.h"
#include "cconv/convert/pre_conversion.h"
#include "cconv/convert/waiting_tables.h"
#include "cconv/engine/converter.h"
#include "cconv/engine/step_engine.h"
#include "ksv_file.h"
#include "ksv_memory.h"

namespace ksv {

const char* inputDumpPath = nullptr;

namespace {

// Puts a pre-converted text in the place of the input, for one call of a record that asks
// for a pre-conversion. Each call converts its whole input anew from the first byte; the
// input position counts in the converted text.
class PreConvertedInput {
 public:
  explicit PreConvertedInput(ConverterRecord& record)
      : record_(record), input_(record.input), inputLength_(record.inputLength) {
    if (record.input == nullptr || record.inputLength <= 0) return;
    const int32_t capacity = std::max(record.outputCapacity, 0);
    buffer_ = static_cast<uint8_t*>(KSV_calloc(capacity, 1));
    if (buffer_ == nullptr && capacity > 0) {
      hasMemory_ = false;
      return;
    }
    const auto preConvert = record.preConversion == kUtf7 ? preConvertUtf7 : preConvertHz;
    const PreConverted converted = preConvert(input_, inputLength_, buffer_, capacity);
    truncated_ = converted.truncated;
    // What nothing can be made of is decoded as it is.
    if (converted.length == 0) return;
    record.input = buffer_;
    record.inputLength = converted.length;
  }

  ~PreConvertedInput() {
    KSV_free(buffer_);
    record_.input = input_;
    record_.inputLength = inputLength_;
  }

  PreConvertedInput(const PreConvertedInput&) = delete;
  PreConvertedInput& operator=(const PreConvertedInput&) = delete;

  // Without it the text is not decoded as what it is not.
  bool hasMemory() const { return hasMemory_; }

  // Whether there is not even room for the first character.
  bool nothingFits() const { return truncated_ && record_.input == input_; }

  // Text that the buffer cut off waits for more room.
  uint32_t endStatus(uint32_t status) const {
    const bool usedUp = status == KSV_STATUS_DONE || status == KSV_STATUS_INCOMPLETE;
    return truncated_ && usedUp ? uint32_t{KSV_STATUS_FULL} : status;
  }

 private:
  ConverterRecord& record_;
  const uint8_t* const input_;
  const int32_t inputLength_;
  uint8_t* buffer_ = nullptr;
  bool hasMemory_ = true;
  bool truncated_ = false;
};

void dumpInput(const ConverterRecord& record) {
  if (inputDumpPath == nullptr || *inputDumpPath == '\0' || record.input == nullptr) return;
  FILE* file = KSV_FileOpen(inputDumpPath, "ab");
  if (file == nullptr) return;
  if (const int64_t left = bytesLeft(record); left > 0) {
    KSV_FileWrite(record.input + record.inputPosition, 1, static_cast<int32_t>(left), file);
  }
  KSV_FileClose(file);
}

// How many characters are taken one by one before the bulk path is tried again.
constexpr int32_t kCharactersBetweenBulks = 8;

void convertInput(ConverterRecord& record) {
  dumpInput(record);
  const bool mayRemember = tablesAreMended(record);
  record.status = KSV_STATUS_WRITTEN;
  while (record.status == KSV_STATUS_WRITTEN && isMarkPending(record)) {
    convertByCharacters(record, 1);
  }
  BulkConverter* const bulk = mayRemember ? findBulkConverter(record) : nullptr;
  while (record.status == KSV_STATUS_WRITTEN) {
    if (bulk != nullptr) bulk->runAhead(record);
    if (record.status != KSV_STATUS_WRITTEN || endsAtBuffers(record)) return;
    convertByCharacters(
        record, bulk != nullptr ? kCharactersBetweenBulks : std::numeric_limits<int32_t>::max());
  }
}

void convertPreConverted(ConverterRecord& record) {
  const PreConvertedInput preConverted(record);
  if (!preConverted.hasMemory()) {
    record.status = KSV_STATUS_FAILURE;
    return;
  }
  if (preConverted.nothingFits()) {
    dumpInput(record);
    record.status = KSV_STATUS_FULL;
    return;
  }
  convertInput(record);
  record.status = preConverted.endStatus(record.status);
}

}  // namespace

bool buffersAreUsable(const ConverterRecord& record) {
  if (record.inputPosition < 0 || record.outputPosition < 0) return false;
  if (record.input == nullptr && record.inputPosition < record.inputLength) return false;
  return record.output != nullptr || record.outputPosition >= record.outputCapacity;
}

uint32_t convert(ConverterRecord& record) {
  if (!buffersAreUsable(record) || sourceDecoder(record) == nullptr ||
      targetEncoder(record) == nullptr) {
    record.status = KSV_STATUS_FAILURE;
  } else if (record.preConversion == kUtf7 || record.preConversion == kHz) {
    convertPreConverted(record);
  } else {
    convertInput(record);
  }
  return record.status;
}

}  // namespace ksv
