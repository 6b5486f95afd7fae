// What the main programs of all tests do.
#pragma once

namespace ksv::test {

// Runs the tests that the arguments choose. With --results=FILE every test adds two lines to
// that file, "began NAME" and "passed NAME", "failed NAME" or "skipped NAME", so that it is known
// what was running when the program died.
int runTests(int argc, char** argv);

}  // namespace ksv::test
