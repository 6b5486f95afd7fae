/* Tells what texts of an archive in Shift_JIS would lose on their way to UTF-8 and back. */
#include <inttypes.h>
#include <stdio.h>
#include <string.h>

#include "ksv.h"

/* Prints what a conversion would lose. */
static int tell(const char* from, const char* to, const char* text, size_t length) {
  ksv_report* report;
  ksv_error error;
  ksv_loss_totals totals;
  const int isRead = ksv_report_new(from, to, NULL, &report, &error) == KSV_OK &&
                     ksv_report_feed(report, text, length, &error) == KSV_OK &&
                     ksv_report_finish(report, &error) == KSV_OK;
  if (isRead) {
    char* table = ksv_report_table(report);
    ksv_report_totals(report, &totals);
    printf("%s to %s: %" PRIu64 " characters, losses: %zu\n%s", from, to, totals.characters,
           ksv_report_count(report), table == NULL ? "" : table);
    ksv_free(table);
  } else {
    fprintf(stderr, "%s\n", error.message);
  }
  ksv_report_free(report);
  return isRead;
}

/* Where the bytes that come back are first others; the length where they are the same. */
static size_t firstDifference(const char* charset, const char* text, size_t length) {
  char *utf8 = NULL, *back = NULL;
  size_t utf8Length, backLength = 0, at = 0;
  if (ksv_convert(charset, "UTF-8", NULL, text, length, &utf8, &utf8Length, NULL) == KSV_OK &&
      ksv_convert("UTF-8", charset, NULL, utf8, utf8Length, &back, &backLength, NULL) == KSV_OK)
    while (at < length && at < backLength && text[at] == back[at]) ++at;
  ksv_free(utf8);
  ksv_free(back);
  return at;
}

int main(void) {
  /* The byte FD of the first text is no character. The second has two codes of one character. */
  static const char kDamaged[] = "\x91\x90\x96\x8D\xFD\n\x82\xAD\xFD";
  static const char kTwice[] = "\x81\xE0 \x87\x90";
  static const char kUtf8[] = "\xE2\x91\xA0 \xC2\xA5 \xF0\x9F\x98\x80";
  const int isTold = tell("Shift_JIS", "UTF-8", kDamaged, sizeof kDamaged - 1) &&
                     tell("cp932", "UTF-8", kTwice, sizeof kTwice - 1) &&
                     tell("UTF-8", "Shift_JIS", kUtf8, sizeof kUtf8 - 1);
  printf("the bytes of the second text are others from byte %zu on\n",
         firstDifference("cp932", kTwice, sizeof kTwice - 1));
  return !isTold;
}
