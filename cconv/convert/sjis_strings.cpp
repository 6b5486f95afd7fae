// Whole strings between UCS-2 and Shift_JIS, each with a converter of its own. The
// lengths are odd by one byte on purpose: callers know that the terminator is not
// converted whole, and their buffers are as large as the capacities here.
#include <bit>
#include <cstddef>
#include <cstring>
#include <limits>

#include "ksv_cconv.h"
#include "ksv_log.h"
#include "ksv_sjis.h"

namespace {

struct BuiltInName {
  explicit BuiltInName(int32_t index) { KSV_GetResouceString(index, text, sizeof text); }
  char text[KSV_NAME_SIZE];
};

// Units stand as the processor has them, pairs of Shift_JIS least significant byte first
// everywhere.
constexpr uint32_t kUnitsAreBigEndian = std::endian::native == std::endian::big ? 1 : 0;

ConvertOptions stringOptions() {
  ConvertOptions options = {};
  options.replaceUnmappable = 1;
  options.convertNewlines = 1;
  options.newlineForm = KSV_NEWLINE_CRLF;
  return options;
}

struct Text {
  const void* bytes;
  size_t length;
  uint32_t bigEndian;
};

struct Room {
  void* bytes;
  size_t capacity;
  uint32_t bigEndian;
};

// The names are indices of built-in strings.
int convertString(const Text& source, int32_t sourceName, const Room& target, int32_t targetName) {
  constexpr size_t kMost = std::numeric_limits<int32_t>::max();
  if (source.length > kMost || target.capacity > kMost) return 0;
  ConvertOptions options = stringOptions();
  options.outputBigEndian = target.bigEndian;
  ConverterRecord record = {};
  if (cconvInitConvert(&record, &options, BuiltInName(targetName).text) != KSV_STATUS_DONE) {
    return 0;
  }
  uint32_t parameters[3] = {source.bigEndian, 0, 1};  // no mark, skip invalid
  cconvChgCharset(&record, parameters, BuiltInName(sourceName).text);
  record.input = static_cast<const uint8_t*>(source.bytes);
  record.inputLength = static_cast<int32_t>(source.length);
  record.output = static_cast<uint8_t*>(target.bytes);
  record.outputCapacity = static_cast<int32_t>(target.capacity);
  const uint32_t status = cconvConvert(&record);
  cconvTermConvert(&record);
  return status == KSV_STATUS_DONE ? 1 : 0;
}

size_t unitsOf(const uint16_t* s) {
  size_t units = 0;
  while (s[units] != 0) ++units;
  return units;
}

}  // namespace

// The low byte of the terminator is the odd one.
int KSV_ucs2sjisstr(char* dest, const uint16_t* src) {
  if (dest == nullptr || src == nullptr) return 0;
  const size_t length = 2 * unitsOf(src) + 1;
  return convertString({src, length, kUnitsAreBigEndian}, KSV_STRING_UCS2, {dest, length, 0},
                       KSV_STRING_WINDOWS31J);
}

int KSV_sjis2ucsstr(uint16_t* dest, const char* src) {
  if (dest == nullptr || src == nullptr) return 0;
  const size_t length = std::strlen(src) + 1;
  return convertString({src, length, 0}, KSV_STRING_WINDOWS31J,
                       {dest, 2 * length - 1, kUnitsAreBigEndian}, KSV_STRING_UCS2);
}
