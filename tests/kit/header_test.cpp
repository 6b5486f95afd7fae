// ksv.h as programs in C++17 see it.
#include <gtest/gtest.h>

#include "ksv.h"

static_assert(sizeof(ksv_error) == 312);
static_assert(sizeof(ksv_options) == 80);

extern "C" int ksv_header_is_c99(void);

TEST(Header, compiles_as_c99_and_as_cpp17) { EXPECT_EQ(ksv_header_is_c99(), 1); }
