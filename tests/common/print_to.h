// KSV_VfPrintf as a test calls it.
#pragma once

#include <cstdarg>
#include <cstdio>

#include "ksv_file.h"

namespace ksv::test {

inline int printTo(std::FILE* stream, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int result = KSV_VfPrintf(stream, format, arguments);
  va_end(arguments);
  return result;
}

}  // namespace ksv::test
