/* ksv_sjis.h compiles as C, with nothing before it, and declares what callers have been
 * compiled against. */
#include "ksv_sjis.h"

int (*const ksvSjisHeaderIsC)(char* dest, const uint16_t* src) = KSV_ucs2sjisstr;
int (*const ksvSjisString)(uint16_t* dest, const char* src) = KSV_sjis2ucsstr;
uint16_t (*const ksvSjisCode)(uint16_t unit) = KSV_unicodetosjis;
uint16_t (*const ksvSjisUnit)(uint16_t code) = KSV_sjistounicode;
