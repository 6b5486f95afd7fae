// How the exported functions tell what went wrong.
#pragma once

#include <functional>
#include <string_view>

#include "kit/convert/problem.h"
#include "kit/convert/text_places.h"
#include "ksv.h"

namespace ksv_kit {

// Each fills in error, if there is one, and returns the result.
ksv_result succeed(ksv_error* error) noexcept;
ksv_result refuse(ksv_error* error, ksv_result result, std::string_view message) noexcept;
ksv_result tell(ksv_error* error, const Problem& problem, TextPlace place) noexcept;

// What is being thrown, as a result. To be called where it is caught.
ksv_result tellException(ksv_error* error) noexcept;

// Calls the function, out of which no exception comes.
template <typename Function>
ksv_result guarded(ksv_error* error, Function function) noexcept {
  try {
    return function();
  } catch (...) {
    return tellException(error);
  }
}

}  // namespace ksv_kit
