// What a file has besides its bytes.
#pragma once

#include <string>

namespace ksv_cli::platform {

// kFails: throws Failure where something cannot be handed on; kGivesUp: leaves it out.
// Rights that an owner who is not kept had do not go to another one.
enum class WhatIsRefused { kFails, kGivesUp };

// Hands owner, permissions and extended attributes, access lists among them, of the
// file at path on to an open one.
void handOnAttributes(const std::string& path, int to, WhatIsRefused whatIsRefused);

}  // namespace ksv_cli::platform
