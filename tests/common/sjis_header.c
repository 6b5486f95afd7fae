/* ksv_sjis.h compiles as C, with nothing before it. */
#include "ksv_sjis.h"

int (*const ksvSjisHeaderIsC)(char* dest, const uint16_t* src) = KSV_ucs2sjisstr;
