// Bound to POSIX systems, whose libraries list their initialisers in a table; on
// Windows the run-time library keeps such a list of its own and in no known place.
#include <gtest/gtest.h>

#include "tests/exports/library_image.h"

namespace ksv_exports {
namespace {

TEST(Exports, come_from_libraries_without_static_initialisers) {
  if (KSV_UNDER_SANITIZERS || KSV_IS_COUNTED) GTEST_SKIP() << "sanitizers and counters add theirs";
  // The one is the compiler's, for registering frames.
  for (const char* library : {KSV_LIBRARY, KSV_KIT_LIBRARY})
    EXPECT_LE(readLibraryImage(library).initialisers, 1u) << library;
}

}  // namespace
}  // namespace ksv_exports
