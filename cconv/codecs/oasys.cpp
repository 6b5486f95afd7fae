#include "cconv/codecs/oasys.h"

#include "cconv/engine/group_code.h"
#include "cconv/engine/rule_driven_decoder.h"
#include "cconv/engine/shift_jis_codes.h"

namespace ksv::codecs {
namespace {

GroupCode onlineGroupCode(uint8_t first, uint8_t second) {
  const uint32_t pair = static_cast<uint32_t>(first) << 8 | second;
  if (first >= 0x80) return {charset_id::kOasysExtset, pair & 0x7FFF, 2};
  if (first >= 0x21) return {charset_id::kJisC6226, pair, 2};
  const bool latin = second < 0xA0;
  return {latin ? charset_id::kJisX0201Latin : charset_id::kJisX0201Kana, second, 2};
}

}  // namespace

void decodeOasysWin(ConverterRecord& record) { decodeByRules(record, shiftJisToJisX0208); }

void decodeOasysOnline(ConverterRecord& record) {
  const int64_t left = bytesLeft(record);
  if (left == 0) {
    record.status = KSV_STATUS_DONE;
    return;
  }
  const uint8_t* bytes = record.input + record.inputPosition;
  // Told without its second byte: a line end of one byte does not put the rest
  // out of step.
  if (bytes[0] >= 0x01 && bytes[0] <= 0x20) {
    rejectFirstByte(record);
  } else if (left < 2) {
    record.status = KSV_STATUS_INCOMPLETE;
  } else {
    deliverGroupCode(record, onlineGroupCode(bytes[0], bytes[1]));
  }
}

}  // namespace ksv::codecs
