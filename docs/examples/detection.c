/* Writes a text in Shift_JIS to a file, and finds out how it is written. */
#include <stdio.h>

#include "ksv_detect.h"
#include "ksv_file.h"

static const char kPath[] = "letter.txt";

int main(void) {
  /* "Kusamakura by Natsume", in Japanese, and a line end. */
  static const char kText[] = "\x91\x90\x96\x8D\x81\x41\x89\xC4\x96\xDA\r\n";
  uint32_t found;
  FILE* file = KSV_FileOpen(kPath, "wb");
  if (file == NULL) return 1;
  KSV_FileWrite(kText, 1, (int32_t)(sizeof kText - 1), file);
  if (KSV_FileClose(file) != 0) return 1;

  found = dtctText(kPath, "Japanese");
  KSV_FileRemove(kPath);
  if (found == KSV_TEXT_FAILURE) return 1;
  printf("encodings %06X\n", (unsigned)(found & KSV_TEXT_ENCODINGS));
  if ((found & KSV_TEXT_SHIFT_JIS) != 0) printf("Shift_JIS\n");
  if ((found & KSV_TEXT_CRLF) != 0) printf("lines end in CR LF\n");
  if ((found & KSV_TEXT_SETTLED) != 0) printf("settled\n");
  return 0;
}
