/* ksv.h as programs in C of 1999 see it, and the layout that they are compiled for. */
#include "ksv.h"

#define HOLDS(name, condition) typedef char name[(condition) ? 1 : -1]

HOLDS(size_of_error, sizeof(ksv_error) == 312);
HOLDS(place_of_message, offsetof(ksv_error, message) == 52);
HOLDS(size_of_options, sizeof(ksv_options) == 80);
HOLDS(place_of_invalid_text, offsetof(ksv_options, invalid_text) == 32);
HOLDS(size_of_problem, sizeof(ksv_problem) == 32);
HOLDS(size_of_counts, sizeof(ksv_counts) == 16);

int ksv_header_is_c99(void);
int ksv_header_is_c99(void) {
  ksv_options options = KSV_OPTIONS_INIT;
  return options.size == sizeof options && KSV_OK == 0;
}
