/* Converts a Shift_JIS text in one call, and by a plan that says what becomes of bytes that are
 * none. */
#include <inttypes.h>
#include <stdio.h>

#include "ksv.h"

static const char kText[] = "\x91\x90\x96\x8D\n\x82\xAD\x82\xFF\x82\xDC\n";
static const size_t kLength = sizeof kText - 1;

/* Fails, since FF is not the second byte of any character. */
static void convertInOneCall(void) {
  char* text;
  size_t length;
  ksv_error error;
  if (ksv_convert("sjis", "utf8", NULL, kText, kLength, &text, &length, &error) != KSV_OK)
    printf("%s: %s\nbyte %" PRIu64 ", line %" PRIu64 ", column %" PRIu64 "\n",
           ksv_result_name(error.result), error.message, error.offset, error.line, error.column);
  ksv_free(text);
}

static int convertByPlan(void) {
  ksv_options options = KSV_OPTIONS_INIT;
  ksv_plan* plan;
  char* text = NULL;
  size_t length = 0;
  ksv_error error;
  options.invalid = KSV_ESCAPE;
  options.newlines = KSV_NEWLINES_LF;
  if (ksv_plan_new("Shift_JIS", "UTF-8", &options, &plan, &error) != KSV_OK ||
      ksv_plan_convert(plan, kText, kLength, &text, &length, &error) != KSV_OK)
    fprintf(stderr, "%s\n", error.message);
  else
    printf("%s%zu bytes\n", text, length);
  ksv_free(text);
  ksv_plan_free(plan);
  return length == 0;
}

int main(void) {
  convertInOneCall();
  return convertByPlan();
}
