// What ends the command where there is not even the memory to say so.
//
// Exceptions that nothing catches come from where nothing can: from objects that are made in front
// of main(), and from a throw for which there is no memory left. The system would write a memory
// image then, and leave the temporary files to be found.

#include <cxxabi.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <typeinfo>

#include "cli/system/process.h"

namespace ksv_cli {
namespace {

std::terminate_handler before = nullptr;

// Without an exception there was no memory for it.
bool isWantOfMemory() {
  const std::type_info* type = abi::__cxa_current_exception_type();
  return type == nullptr || *type == typeid(std::bad_alloc) ||
         *type == typeid(std::bad_array_new_length);
}

[[noreturn]] void endProcess() {
  if (isWantOfMemory()) platform::endOutOfMemory();
  before();
  std::abort();
}

// In front of all objects that have constructors.
[[gnu::constructor(101)]] void prepareForWantOfMemory() { before = std::set_terminate(endProcess); }

}  // namespace
}  // namespace ksv_cli

// In the place of the C++ library's own, which says of which type an exception was: what turns
// names of types into words would be 47 KB of the command.
namespace __gnu_cxx {
void __verbose_terminate_handler() {
  std::fputs("ksv: an exception that nothing has caught\n", stderr);
  std::abort();
}
}  // namespace __gnu_cxx
