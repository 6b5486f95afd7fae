#include "cli/text/valid_text.h"

#include "cli/system/system_faults.h"
#include "cli/text/text_readings.h"
#include "kit/text/unicode_check.h"

namespace ksv_cli {

using ksv_kit::ByteOrder;
using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;

namespace {

bool hasMarkOf(const CharsetChoice& target, RereadableText& text) {
  const std::vector<uint8_t>& beginning = text.beginning();
  bool bigEndian = target.order == ByteOrder::kBig;
  return ksv_kit::byteOrderMark(target.form, true, beginning.data(), beginning.size(), bigEndian) !=
         0;
}

}  // namespace

bool isTextOf(RereadableText& text, const CharsetNames& names, const ConversionSettings& settings) {
  if (text.beginning().empty()) return true;
  CharsetChoice target = settings.target;
  if (target.hasByteOrder()) {
    target.order = settings.options.outputBigEndian != 0 ? ByteOrder::kBig : ByteOrder::kLittle;
    if (!hasMarkOf(target, text)) return false;
  }
  const bool isValid = isWhollyOf(text, names, target);
  refuseSystemFaults();
  return isValid;
}

}  // namespace ksv_cli
