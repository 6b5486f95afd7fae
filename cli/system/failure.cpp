#include "cli/system/failure.h"

#include <new>

#include "cli/system/process.h"
#include "ksv.hpp"

namespace ksv_cli {

std::string reasonOf(const std::exception& error) {
  const auto* const told = dynamic_cast<const ksv::Error*>(&error);
  const bool isWantOfMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr ||
                              (told != nullptr && told->result() == KSV_NO_MEMORY);
  return isWantOfMemory ? platform::kOutOfMemory : error.what();
}

}  // namespace ksv_cli
