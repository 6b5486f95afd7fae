/* ksv_file.h compiles as C, with nothing before it. */
#include "ksv_file.h"

_Static_assert(sizeof(KsvByteOrderStream) == 16, "size");

int (*const ksvFileHeaderIsC)(KsvByteOrderStream* s) = KSV_X_FileClose;
