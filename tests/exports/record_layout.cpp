#include "ksv_cconv.h"
// Behind the header under test.
#include "tests/exports/layout_assertions.h"
