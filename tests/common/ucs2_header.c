/* ksv_ucs2.h compiles as C, with nothing before it, and declares what callers have been
 * compiled against. */
#include "ksv_ucs2.h"

typedef int (*Predicate)(uint16_t unit);
typedef uint16_t* (*InPlace)(uint16_t* s);
typedef uint16_t* (*Copy)(uint16_t* d, const uint16_t* s);

const Predicate ksvUcs2Predicates[] = {
    KSV_isucs2alnum, KSV_isucs2ascii, KSV_isucs2cntrl, KSV_isucs2digit,   KSV_isjis,
    KSV_isank,       KSV_isucs2jis,   KSV_isucs2ank,   KSV_isucs2zenhira, KSV_isucs2zenkata};
const InPlace ksvUcs2InPlace[] = {KSV_ucs2strlwr, KSV_ucs2strupr};
const Copy ksvUcs2Copies[] = {KSV_ucs2strcpy, KSV_ucs2strcat};

int32_t (*const ksvUcs2HeaderIsC)(const uint16_t* s) = KSV_ucs2strlen;
uint16_t* (*const ksvUcs2CopyN)(uint16_t*, const uint16_t*, int32_t) = KSV_ucs2strncpy;
uint16_t* (*const ksvUcs2Find)(const uint16_t*, uint16_t) = KSV_ucs2strchr;
int (*const ksvUcs2Compare)(const uint16_t*, const uint16_t*) = KSV_ucs2strcmp;
int (*const ksvUcs2CompareN)(const uint16_t*, const uint16_t*, int32_t) = KSV_ucs2strncmp;
int (*const ksvStricmp)(const char*, const char*) = KSV_stricmp;
int32_t (*const ksvStripNull)(void*, const void*, int32_t, int32_t) = KSV_CopyStripNULL;
int32_t (*const ksvStripControl)(void*, const void*, int32_t, int32_t,
                                 int32_t) = KSV_CopyStripControlCode;
int32_t (*const ksvGroupWidth)(const char*) = KSV_GetGroupCharWidth;
