/* How long a call of libksv takes from C, for bench/python_speed.py: the fastest of five rounds, in
 * nanoseconds of processor time a call.
 *
 *     plan_call SOURCE TARGET FILE CALLS
 */
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "ksv.h"

enum { kRounds = 5 };

static double now(void) {
  struct timespec time;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return (double)time.tv_sec * 1e9 + (double)time.tv_nsec;
}

static size_t readAll(const char* path, char** text) {
  FILE* file = fopen(path, "rb");
  long length;
  if (file == NULL || fseek(file, 0, SEEK_END) != 0 || (length = ftell(file)) < 0) exit(1);
  rewind(file);
  *text = malloc((size_t)length + 1);
  if (*text == NULL || fread(*text, 1, (size_t)length, file) != (size_t)length) exit(1);
  fclose(file);
  return (size_t)length;
}

static double roundOf(const char* from, const char* to, const char* text, size_t length,
                      long calls) {
  const double begin = now();
  for (long call = 0; call < calls; ++call) {
    char* output;
    size_t outputLength;
    if (ksv_convert(from, to, NULL, text, length, &output, &outputLength, NULL) != KSV_OK) exit(1);
    ksv_free(output);
  }
  return (now() - begin) / (double)calls;
}

int main(int count, char** arguments) {
  char* text;
  double fastest = 0;
  if (count != 5) return 2;
  const size_t length = readAll(arguments[3], &text);
  for (int number = 0; number < kRounds; ++number) {
    const double took =
        roundOf(arguments[1], arguments[2], text, length, strtol(arguments[4], NULL, 10));
    if (number == 0 || took < fastest) fastest = took;
  }
  printf("%.1f\n", fastest);
  free(text);
  return 0;
}
