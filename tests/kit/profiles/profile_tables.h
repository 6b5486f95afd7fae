// The tables of docs/profiles.md: what each profile does with each code and character.
#pragma once

#include <string>

namespace ksv_kit {

std::string profileTables();

}  // namespace ksv_kit
