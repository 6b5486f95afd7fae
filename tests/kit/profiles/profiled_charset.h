// A charset of the directory as a profile reads and writes it.
#pragma once

#include <string>

#include "kit/profiles/profile.h"
#include "tests/repertoire/repertoire.h"

namespace ksv_kit {

using repertoire::Repertoire;
using repertoire::Shape;

// The name of the directory for one in small letters.
std::string directoryName(std::string_view charset);

// Every code and character of a charset as the library has it, asked once.
const Repertoire& libraryRepertoire(std::string_view charset, Shape shape);

// The same with the profile's charset in place of this one, and its changes.
Repertoire profiledRepertoire(const Profile& profile, std::string_view charset, Shape shape);

}  // namespace ksv_kit
