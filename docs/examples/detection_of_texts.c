/* Tells in which charset texts are, and reads them. */
#include <stdio.h>
#include <string.h>

#include "ksv.h"

/* The same sentence in Japanese in two charsets, and a picture. */
static const char kShiftJis[] =
    "\x8E\x52\x98\x48\x82\xF0\x93\x6F\x82\xE8\x82\xC8\x82\xAA\x82\xE7\x81\x41\x82\xB1\x82\xA4"
    "\x8D\x6C\x82\xA6\x82\xBD\x81\x42\n";
static const char kEucJp[] =
    "\xBB\xB3\xCF\xA9\xA4\xF2\xC5\xD0\xA4\xEA\xA4\xCA\xA4\xAC\xA4\xE9\xA1\xA2\xA4\xB3\xA4\xA6"
    "\xB9\xCD\xA4\xA8\xA4\xBF\xA1\xA3\n";
static const char kPicture[] = "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1\x08\6\0\0\0";

static void show(const ksv_guess* guess, const char* text, size_t length) {
  char* utf8;
  size_t utf8Length;
  printf("%s, %s, line end %d\n", guess->charset, guess->language, (int)guess->line_end);
  if (guess->decode_as == NULL || guess->confidence < 0.9) return;
  if (ksv_convert(guess->decode_as, "UTF-8", NULL, text, length, &utf8, &utf8Length, NULL) ==
      KSV_OK)
    printf("%s", utf8);
  ksv_free(utf8);
}

static int tell(const char* text, size_t length) {
  ksv_detection* detection;
  ksv_text_facts facts;
  ksv_error error;
  if (ksv_detect(text, length, NULL, &detection, &error) != KSV_OK) {
    fprintf(stderr, "%s\n", error.message);
    return 1;
  }
  ksv_detection_facts(detection, &facts);
  if (ksv_detection_count(detection) != 0)
    show(ksv_detection_guess(detection, 0), text, length);
  else
    printf("%s\n", facts.content == KSV_CONTENT_BINARY ? "no text" : "not known");
  ksv_detection_free(detection);
  return 0;
}

int main(void) {
  return tell(kShiftJis, sizeof kShiftJis - 1) + tell(kEucJp, sizeof kEucJp - 1) +
         tell(kPicture, sizeof kPicture - 1);
}
