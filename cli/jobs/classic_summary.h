// The properties of a document exactly as the library's call gives them.
#pragma once

#include <string>
#include <vector>

namespace ksv_cli {

struct ClassicProperty {
  const char* label;
  const char* key;
  std::string value;  // UTF-8
};

// Those that are there, in the order in which a person reads them. Throws Failure.
std::vector<ClassicProperty> readClassicSummary(const std::string& path);

}  // namespace ksv_cli
