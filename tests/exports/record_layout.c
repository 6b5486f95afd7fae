/* The header comes first and alone: it needs nothing in front of it. */
#include "ksv_cconv.h"
/* Behind the header under test. */
#include "tests/exports/layout_assertions.h"
