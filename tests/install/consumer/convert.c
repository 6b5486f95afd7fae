/* A program of others, in C: converts a Shift_JIS text and prints the bytes of UTF-8. */
#include <stdio.h>
#include <string.h>

#include "ksv_cconv.h"

static const char kShiftJis[] = "\x93\xFA\x96\x7B"; /* "Nihon" */

static uint32_t convert(ConverterRecord* record) {
  uint32_t source[3] = {1, 0, 0}; /* most significant byte first */
  if (cconvInitConvert(record, NULL, "UTF-8") != KSV_STATUS_DONE) return KSV_STATUS_FAILURE;
  if (cconvChgCharset(record, source, "Shift_JIS") != KSV_STATUS_DONE) return KSV_STATUS_FAILURE;
  if (cconvConvert(record) != KSV_STATUS_DONE) return KSV_STATUS_FAILURE;
  return cconvTermConvert(record);
}

int main(void) {
  ConverterRecord record;
  uint8_t output[32];
  uint32_t status = KSV_STATUS_FAILURE;
  int32_t i;
  memset(&record, 0, sizeof record);
  record.input = (const uint8_t*)kShiftJis;
  record.inputLength = (int32_t)strlen(kShiftJis);
  record.output = output;
  record.outputCapacity = (int32_t)sizeof output;
  if (startProcess() == 0) return 1;
  if (cconvLoadRule() != 0) status = convert(&record);
  for (i = 0; i < record.outputPosition; ++i) printf("%02X ", (unsigned)output[i]);
  printf("in C\n");
  endProcess();
  return status == KSV_STATUS_DONE ? 0 : 1;
}
