// Keeps exceptions inside the library: no exported function lets one out.
#pragma once

#include <exception>
#include <new>

#include "common/faults.h"

namespace ksv {

// What function returns, or failure when it throws: memory has run out, then.
// Only the standard library's exceptions are caught, so that the cancellation of
// a thread, which unwinds the stack as well, passes.
template <class Result, class Function>
Result guarded(Result failure, Function function) {
  try {
    return function();
  } catch (const std::exception&) {
    return failure;
  }
}

// The same where the caller cannot tell the failure from an answer: that memory has run out
// is noted among the faults of the process.
template <class Result, class Function>
Result guardedAndNoted(Result failure, Function function) {
  try {
    return function();
  } catch (const std::bad_alloc&) {
    noteNoMemory("");
    return failure;
  } catch (const std::exception&) {
    return failure;
  }
}

}  // namespace ksv
