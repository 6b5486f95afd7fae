/* ksv_path.h compiles as C, with nothing before it. */
#include "ksv_path.h"

_Static_assert(sizeof(KsvDirectoryListing) == 312, "size");
_Static_assert(sizeof(KsvDirectoryEntry) == 272, "size");
_Static_assert(sizeof(KsvStat) == 48, "size");

int (*const ksvPathHeaderIsC)(const char* path, KsvStat* out) = KSV_STAT;
