// Paths as this library takes them apart.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ksv {

// Either of the two, on every system.
constexpr bool isSeparator(char character) { return character == '/' || character == '\\'; }

struct PathPieces {
  std::string_view drive;
  std::string_view directory;  // with the separator that ends it
  std::string_view base;
  std::string_view extension;  // from the last dot of the last component
};

// Views into path, which is UTF-8.
PathPieces splitIntoPieces(const char* path);

// The part of splitIntoPieces turned into a path that the system can open: "." when
// directory is empty.
std::string openableDirectory(std::string_view directory);

}  // namespace ksv
