// Keeps exceptions inside the library.
#pragma once

#include <exception>

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

}  // namespace ksv
