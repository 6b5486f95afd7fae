/* Converts mail in ISO-2022-JP while it arrives, in pieces that are cut wherever it happens. */
#include <inttypes.h>
#include <stdio.h>
#include <string.h>

#include "ksv.h"

/* Stands for recv(): hands out at most five bytes at a time, 0 at the end. */
static size_t receive(const char** connection, char* piece) {
  size_t length = strlen(*connection);
  if (length > 5) length = 5;
  memcpy(piece, *connection, length);
  *connection += length;
  return length;
}

/* Feeds a piece, however often the buffer has to be emptied for it. */
static ksv_result feed(ksv_converter* converter, const char* piece, size_t length,
                       ksv_error* error) {
  char buffer[16];
  size_t used, written;
  ksv_result result;
  do {
    result =
        ksv_converter_feed(converter, piece, length, &used, buffer, sizeof buffer, &written, error);
    fwrite(buffer, 1, written, stdout);
    piece += used;
    length -= used;
  } while (result == KSV_NO_ROOM);
  return result;
}

static ksv_result finish(ksv_converter* converter, ksv_error* error) {
  char buffer[16];
  size_t written;
  ksv_result result;
  do {
    result = ksv_converter_finish(converter, buffer, sizeof buffer, &written, error);
    fwrite(buffer, 1, written, stdout);
  } while (result == KSV_NO_ROOM);
  return result;
}

static ksv_result convert(ksv_converter* converter, const char* connection, ksv_error* error) {
  char piece[5];
  size_t length;
  ksv_result result = KSV_OK;
  while (result == KSV_OK && (length = receive(&connection, piece)) != 0)
    result = feed(converter, piece, length, error);
  if (result == KSV_OK) result = finish(converter, error);
  if (result != KSV_OK)
    printf("\n%s at byte %" PRIu64 "\n", ksv_result_name((int32_t)result), error->offset);
  return result;
}

int main(void) {
  static const char kMail[] = "Subject: \x1B$BApKm\x1B(B\n\n\x1B$B$3$s$K$A$O\x1B(B\n";
  static const char kBroken[] = "\x1B$B$3$s$K$A$";
  ksv_plan* plan;
  ksv_converter* converter = NULL;
  ksv_error error;
  ksv_result result = ksv_plan_new("ISO-2022-JP", "UTF-8", NULL, &plan, &error);
  if (result == KSV_OK) result = ksv_converter_new(plan, &converter, &error);
  if (result == KSV_OK) result = convert(converter, kMail, &error);
  if (result == KSV_OK) {
    ksv_converter_reset(converter); /* the same converter serves for the next text */
    convert(converter, kBroken, &error);
  } else {
    fprintf(stderr, "%s\n", error.message);
  }
  ksv_converter_free(converter);
  ksv_plan_free(plan);
  return result != KSV_OK;
}
