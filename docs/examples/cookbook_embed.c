/* Takes lines in the charsets that their senders name, and keeps them as UTF-8. */
#include <stdio.h>
#include <string.h>

#include "ksv.h"

/* The line as UTF-8, which the caller gives back by ksv_free; null when it cannot be read. */
static char* asUtf8(const char* charset, const char* line) {
  char* text;
  size_t length;
  ksv_error error;
  if (ksv_convert(charset, "UTF-8", NULL, line, strlen(line), &text, &length, &error) != KSV_OK)
    printf("%s: %s\n", charset, error.message);
  return text;
}

static void keep(const char* charset, const char* line) {
  char* text = asUtf8(charset, line);
  if (text != NULL) printf("%s: %s\n", charset, text);
  ksv_free(text);
}

int main(void) {
  keep("Shift_JIS", "\x91\x90\x96\x8D");
  keep("windows-1252", "na\xEFve");
  keep("iso-2022-jp", "\x1B$BApKm\x1B(B");
  keep("utf-8", "na\xEFve");
  keep("shift-jisx", "na\xEFve");
  return 0;
}
