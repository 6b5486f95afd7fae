/* Reads and writes a Shift_JIS text by each convention. */
#include <stdio.h>
#include <string.h>

#include "ksv.h"

static const char* const kProfiles[] = {NULL, "windows", "jis", "web", "iconv-glibc"};

static void show(const char* from, const char* to, const char* text, const char* profile) {
  ksv_options options = KSV_OPTIONS_INIT;
  char* output;
  size_t length, i;
  ksv_error error;
  options.profile = profile;
  ksv_convert(from, to, &options, text, strlen(text), &output, &length, &error);
  if (output == NULL) printf("  %s", error.message);
  for (i = 0; i < length; i += 2) /* two bytes a character, in both */
    printf("  %02X%02X", (unsigned)(output[i] & 0xFF), (unsigned)(output[i + 1] & 0xFF));
  ksv_free(output);
}

int main(void) {
  size_t i;
  for (i = 0; i < sizeof kProfiles / sizeof kProfiles[0]; ++i) {
    printf("%-11s", kProfiles[i] == NULL ? "none" : kProfiles[i]);
    show("Shift_JIS", "UTF-16BE", "\x81\x60\x81\x7C", kProfiles[i]);
    printf("   U+301C:");
    show("UTF-8", "Shift_JIS", "\u301C", kProfiles[i]);
    putchar('\n');
  }
  return 0;
}
