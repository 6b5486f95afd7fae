/* A program of others, in C: the same by libksv. */
#include <stdio.h>

#include "ksv.h"

int main(void) {
  char* text = NULL;
  size_t length = 0;
  size_t i;
  ksv_error error;
  if (ksv_convert("SJIS", "utf8", NULL, "\x93\xFA\x96\x7B", 4, &text, &length, &error) != KSV_OK) {
    fprintf(stderr, "%s\n", error.message);
    return 1;
  }
  for (i = 0; i < length; ++i) printf("%02X ", (unsigned)(unsigned char)text[i]);
  printf("in C\n");
  ksv_free(text);
  return 0;
}
