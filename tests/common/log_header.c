/* ksv_log.h compiles as C, with nothing before it, and declares what callers have been
 * compiled against. */
#include "ksv_log.h"

_Static_assert(KSV_LOG_ENABLED == 0x10000, "flag");

int (*const ksvLogHeaderIsC)(uint32_t flags, FILE* stream, const char* path) = ksv_logfprint_path;
FILE* (*const ksvLogOpen)(uint32_t flags, const char* path) = ksv_logfopen;
int (*const ksvLogClose)(uint32_t flags, FILE* stream) = ksv_logfclose;
int (*const ksvLogPrint)(uint32_t, FILE*, const char*, int32_t) = ksv_logfprintf;
int (*const ksvLogName)(const char*, const char*, char*) = GetLogFileName;
int (*const ksvString)(int32_t index, char* dest, int32_t capacity) = KSV_GetResouceString;
int (*const ksvInteger)(int32_t index, int32_t* dest) = KSV_GetResouceInteger;
