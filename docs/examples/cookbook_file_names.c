/* Writes names of files from macOS, whose marks stand apart, to Shift_JIS. */
#include <stdio.h>
#include <string.h>

#include "ksv.h"

/* Shows the name as it is read from Shift_JIS again. */
static void show(const char* how, int32_t normalization, const char* name) {
  ksv_options options = KSV_OPTIONS_INIT;
  char *bytes, *utf8 = NULL;
  size_t length, utf8Length;
  ksv_error error;
  options.normalization = normalization;
  if (ksv_convert("UTF-8", "Shift_JIS", &options, name, strlen(name), &bytes, &length, &error) ==
          KSV_OK &&
      ksv_convert("Shift_JIS", "UTF-8", NULL, bytes, length, &utf8, &utf8Length, &error) == KSV_OK)
    printf("%s: %s, %zu bytes\n", how, utf8, length);
  else
    printf("%s: %s\n", how, error.message);
  ksv_free(bytes);
  ksv_free(utf8);
}

int main(void) {
  static const char kName[] = "\u30AB\u3099\u30E9\u30B9 \u212B.txt";
  show("as it is", KSV_NO_NORMALIZATION, kName);
  show("NFC", KSV_NFC, kName);
  show("composed", KSV_COMPOSED, kName);
  return 0;
}
