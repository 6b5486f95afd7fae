#include "ksv_api.h"

// KSV_Is64bitOS, KSV_Is64bitFS and KSV_setCharsetPath are one entry point under
// three names: each returns 1 whatever it is given. The headers that declare them
// are left out, since they give the third an argument, which an alias may not
// have when its target has none.
#define KSV_ENTRY extern "C" KSV_API

KSV_ENTRY int KSV_Is64bitOS(void);
KSV_ENTRY int KSV_Is64bitFS(void) __attribute__((alias("KSV_Is64bitOS")));
KSV_ENTRY int KSV_setCharsetPath(void) __attribute__((alias("KSV_Is64bitOS")));

int KSV_Is64bitOS(void) { return 1; }
