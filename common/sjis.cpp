#include "ksv_sjis.h"

#include "sjis_tables.h"

// Neither table has anything below 0x20, so that codes there need no look of their own.
uint16_t KSV_sjistounicode(uint16_t code) { return ksv::kSjisToUnicode[code]; }

uint16_t KSV_unicodetosjis(uint16_t unit) { return ksv::kUnicodeToSjis[unit]; }
