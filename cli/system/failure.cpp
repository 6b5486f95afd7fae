#include "cli/system/failure.h"

#include <new>

#include "cli/system/process.h"

namespace ksv_cli {

std::string reasonOf(const std::exception& error) {
  const bool isWantOfMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
  return isWantOfMemory ? platform::kOutOfMemory : error.what();
}

}  // namespace ksv_cli
