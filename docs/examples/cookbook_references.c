/* Writes a web page and JSON in Shift_JIS; what Shift_JIS lacks becomes references. */
#include <stdio.h>
#include <string.h>

#include "ksv.h"

/* JSON has \uXXXX only, and two of them for what is beyond U+FFFF. */
static int32_t escapeForJson(void* context, const ksv_problem* problem, const char** text,
                             size_t* length) {
  char* escape = context; /* at least 13 bytes */
  const uint32_t code = problem->code_point;
  if (problem->result != KSV_UNMAPPABLE) return KSV_FAIL;
  if (code < 0x10000)
    snprintf(escape, 13, "\\u%04X", (unsigned)code);
  else
    snprintf(escape, 13, "\\u%04X\\u%04X", (unsigned)(0xD800 + (((code - 0x10000) >> 10) & 0x3FF)),
             (unsigned)(0xDC00 + (code & 0x3FF)));
  *text = escape;
  *length = strlen(escape);
  return KSV_REPLACE;
}

/* Bytes above 7F are shown as numbers. */
static int write(const char* utf8, const ksv_options* options) {
  char* bytes;
  size_t length, i;
  ksv_error error;
  if (ksv_convert("UTF-8", "Shift_JIS", options, utf8, strlen(utf8), &bytes, &length, &error) !=
      KSV_OK) {
    fprintf(stderr, "%s\n", error.message);
    return 0;
  }
  for (i = 0; i < length; ++i)
    printf((bytes[i] & 0x80) != 0 ? "<%02X>" : "%c", (unsigned)(bytes[i] & 0xFF));
  putchar('\n');
  ksv_free(bytes);
  return 1;
}

int main(void) {
  ksv_options page = KSV_OPTIONS_INIT;
  ksv_options json = KSV_OPTIONS_INIT;
  char escape[13];
  page.unmappable = KSV_HEX_REFERENCE; /* or KSV_DECIMAL_REFERENCE */
  json.unmappable = KSV_ASK;
  json.ask = escapeForJson;
  json.ask_context = escape;
  return !(write("<p>\u8349 \u00E9 \U0001F600</p>", &page) &&
           write("{\"title\":\"\u8349 \u00E9 \U0001F600\"}", &json));
}
