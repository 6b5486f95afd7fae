/* ksv_detect.h compiles as C, with nothing before it. */
#include "ksv_detect.h"

uint32_t (*const ksvDetectHeaderIsC)(const char* path, const char* language) = dtctText;
