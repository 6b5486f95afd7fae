/* The header comes first and alone: it needs nothing in front of it. */
#include "ksv_cconv.h"
/* Behind the header under test. */
#include "tests/exports/layout_assertions.h"

/* The prototypes, as a caller compiled against the interface has them. */
int (*const ksvStart)(void) = startProcess;
void (*const ksvEnd)(void) = endProcess;
void (*const ksvSetBlockSize)(unsigned short) = setBlockSize;
int (*const ksvLock)(void) = lockMutex;
int (*const ksvUnlock)(void) = unlockMutex;
int (*const ksvSetPath)(const char*) = KSV_setCharsetPath;
int (*const ksvLoad)(void) = cconvLoadRule;
uint32_t (*const ksvInit)(ConverterRecord*, const ConvertOptions*, const char*) = cconvInitConvert;
uint32_t (*const ksvSource)(ConverterRecord*, uint32_t[3], const char*) = cconvChgCharset;
uint32_t (*const ksvLanguage)(ConverterRecord*, const char*) = cconvChgLang;
uint32_t (*const ksvConvert)(ConverterRecord*) = cconvConvert;
uint32_t (*const ksvTerm)(ConverterRecord*) = cconvTermConvert;
uint32_t (*const ksvEnum)(int32_t, char*) = cconvEnumGroup;
uint32_t (*const ksvEndian)(const char*) = cconvIsEndianAware;
uint32_t (*const ksvCheck)(EncodingCheckRecord*) = cconvChkEncode;
