/* A host as others write it, in C, against the shared library alone: converts a
 * Shift_JIS text to UTF-8 and back. Takes the path of the library, for the host
 * that loads it. Prints what went wrong. Result 0 when all is well, 2 when no rule
 * file was found, 1 otherwise. */
#include <stdio.h>
#include <string.h>

#include "tests/exports/host_functions.h"

/* "Nihongo TEXT", half-width katakana, a line end. */
static const char kShiftJis[] =
    "\x93\xFA\x96\x7B\x8C\xEA\x83\x65\x83\x4C\x83\x58\x83\x67 ABC \xB1\xB2\r\n\x95\x5C";
static const char kUtf8[] =
    "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x83\x86\xE3\x82\xAD\xE3\x82\xB9\xE3\x83\x88 ABC "
    "\xEF\xBD\xB1\xEF\xBD\xB2\r\n\xE8\xA1\xA8";

static struct HostFunctions host;

static int failed(const char* what, uint32_t status) {
  printf("%s: %u\n", what, (unsigned)status);
  return 1;
}

static int convert(const char* source, const char* target, const char* text, const char* expected) {
  ConverterRecord record;
  ConvertOptions options;
  uint32_t parameters[3] = {1, 0, 0};
  uint8_t output[256];
  uint32_t status;
  memset(&record, 0, sizeof record);
  memset(&options, 0, sizeof options);
  options.outputBigEndian = 1; /* bytes of a pair in the usual order, read and written */
  status = host.initialise(&record, &options, target);
  if (status != KSV_STATUS_DONE) return failed("target", status);
  status = host.changeCharset(&record, parameters, source);
  if (status != KSV_STATUS_DONE) return failed("source", status);
  record.input = (const uint8_t*)text;
  record.inputLength = (int32_t)strlen(text);
  record.output = output;
  record.outputCapacity = (int32_t)sizeof output;
  status = host.convert(&record);
  if (status != KSV_STATUS_DONE) return failed("conversion", status);
  status = host.terminate(&record);
  if (status != KSV_STATUS_DONE) return failed("termination", status);
  if (record.outputPosition != (int32_t)strlen(expected) ||
      memcmp(output, expected, strlen(expected)) != 0) {
    return failed("output of another length or other bytes", (uint32_t)record.outputPosition);
  }
  return 0;
}

int main(int argumentCount, char** arguments) {
  int result;
  if (!getHostFunctions(&host, argumentCount > 1 ? arguments[1] : "")) {
    return failed("library", 0);
  }
  if (host.start() != 1) return failed("start", 0);
  if (host.loadRules() != 1) {
    host.end();
    return 2;
  }
  result = convert("Shift_JIS", "UTF-8", kShiftJis, kUtf8);
  if (result == 0) result = convert("UTF-8", "Shift_JIS", kUtf8, kShiftJis);
  host.end();
  return result;
}
