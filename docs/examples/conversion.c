/* Converts a Shift_JIS text to UTF-8 through a buffer that is far too small. */
#include <stdio.h>
#include <string.h>

#include "ksv_cconv.h"

/* Status of the conversion; what is written goes to standard output. */
static uint32_t convert(ConverterRecord* record, const char* text) {
  uint8_t buffer[8];
  uint32_t status;
  record->input = (const uint8_t*)text;
  record->inputLength = (int32_t)strlen(text);
  record->output = buffer;
  record->outputCapacity = (int32_t)sizeof buffer;
  do {
    record->outputPosition = 0;
    status = cconvConvert(record);
    fwrite(buffer, 1, (size_t)record->outputPosition, stdout);
  } while (status == KSV_STATUS_FULL && record->outputPosition > 0);
  return status;
}

int main(void) {
  static const char kText[] = "\x91\x90\x96\x8D (\x82\xAD\x82\xB3\x82\xDC\x82\xAD\x82\xE7)";
  uint32_t source[3] = {1, 0, 0}; /* most significant byte first, no mark, stop at errors */
  ConverterRecord record;
  uint32_t status = KSV_STATUS_FAILURE;
  memset(&record, 0, sizeof record);

  if (startProcess() != 1) return 1;
  if (cconvLoadRule() == 1 && cconvInitConvert(&record, NULL, "UTF-8") == KSV_STATUS_DONE &&
      cconvChgCharset(&record, source, "Shift_JIS") == KSV_STATUS_DONE) {
    status = convert(&record, kText);
    cconvTermConvert(&record);
    printf("\nstatus %u, %d characters\n", (unsigned)status, (int)record.charactersRead);
  }
  endProcess();
  return status == KSV_STATUS_DONE ? 0 : 1;
}
