/* ksv_cut.h compiles as C, with nothing before it. */
#include "ksv_cut.h"

uint32_t (*const ksvCutHeaderIsC)(const void* buffer, int32_t length, int32_t limit,
                                  const char* charsetName) = CutStr;
