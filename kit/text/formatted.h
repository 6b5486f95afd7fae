// Short texts put together by a format of the C library.
#pragma once

#include <cstdio>
#include <string>

namespace ksv_kit {

// Of at most 159 bytes: for numbers and names of constants.
template <typename... Values>
std::string formatted(const char* format, Values... values) {
  char text[160];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

}  // namespace ksv_kit
