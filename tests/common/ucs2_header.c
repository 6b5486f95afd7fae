/* ksv_ucs2.h compiles as C, with nothing before it. */
#include "ksv_ucs2.h"

int32_t (*const ksvUcs2HeaderIsC)(const uint16_t* s) = KSV_ucs2strlen;
