/* Cuts a text into pieces of at most ten bytes without breaking a character. */
#include <stdio.h>
#include <string.h>

#include "ksv_cut.h"

int main(void) {
  /* Kusamakura in Shift_JIS, a line end, and the year. */
  static const char kText[] = "\x91\x90\x96\x8D\x20\x89\xC4\x96\xDA\r\n1906";
  const int32_t length = (int32_t)strlen(kText);
  int32_t at = 0;
  while (at < length) {
    const uint32_t bytes = CutStr(kText + at, length - at, 10, "Shift_JIS");
    uint32_t i;
    if (bytes == 0) break; /* not even one character fits */
    printf("%2u:", (unsigned)bytes);
    for (i = 0; i < bytes; ++i) printf(" %02X", (unsigned)(uint8_t)kText[at + (int32_t)i]);
    printf("\n");
    at += (int32_t)bytes;
  }
  return 0;
}
