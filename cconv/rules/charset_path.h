// Where the process has its charset directory.
#pragma once

#include <string>

namespace ksv {

// As the last start has found it, with a separator at its end; empty: nobody names one.
std::string charsetPath();

}  // namespace ksv
