// A buffer with any text, and a position in it: cconvChkEncode has to give, in every
// field, what a check by the letter gives, and to read nothing outside of the buffer.
//
// Input: a byte that is the position; the text.
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz/support.h"
#include "ksv_cconv.h"
#include "tests/detect/slow_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ksv_fuzz::Input input(data, size);
  const uint32_t position = input.byte() % 16;
  // Exactly as large as it is, so that the sanitizers see a read behind it.
  const std::vector<uint8_t> text(input.rest().begin(), input.rest().end());

  EncodingCheckRecord record;
  std::memset(&record, 0xAA, sizeof record);
  record.input = text.data();
  record.position = position;
  record.end = static_cast<uint32_t>(text.size());
  const uint32_t result = cconvChkEncode(&record);
  const auto expected = ksv_detect_tests::slowCheck(text, position, text.size());

  ksv_fuzz::require(result == expected.result, "result");
  ksv_fuzz::require(record.name == expected.name, "name");
  ksv_fuzz::require(record.declared == expected.declared && record.mark == expected.mark,
                    "declaration and mark");
  ksv_fuzz::require(record.bigEndian == expected.bigEndian, "byte order");
  ksv_fuzz::require(record.lineEnd == expected.lineEnd, "line end");
  ksv_fuzz::require(record.resultClass == expected.resultClass, "class");
  ksv_fuzz::require(record.position == position && record.end == text.size(), "left as they were");
  return 0;
}
