// What the file of a shared library says about itself, read from its bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace ksv_exports {

struct LibraryImage {
  std::map<std::string, uint64_t> symbols;  // what others can link to, with its address
  std::map<std::string, int> ordinals;      // the numbers of the symbols, where they have some
  std::set<std::string> imports;            // the libraries that it needs itself
  size_t initialisers = 0;                  // as the loader's table lists them
};

LibraryImage readLibraryImage(const std::string& path);

// All bytes of a file that has to be there.
std::string readFile(const std::string& path);

}  // namespace ksv_exports
