// The files of the Unicode Character Database, as Debian installs them.
#pragma once

#include <cstdint>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace ksv_kit {

// The fields of each line, without spaces around them and without what stands behind #.
inline void eachLine(const std::string& path,
                     const std::function<void(const std::vector<std::string>&)>& take) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    line.resize(std::min(line.find('#'), line.size()));
    std::vector<std::string> fields;
    std::istringstream parts(line);
    for (std::string field; std::getline(parts, field, ';');) {
      const size_t first = field.find_first_not_of(' ');
      const size_t last = field.find_last_not_of(" \t");
      fields.push_back(first == std::string::npos ? "" : field.substr(first, last - first + 1));
    }
    if (!fields.empty() && !fields[0].empty()) take(fields);
  }
}

struct CodeRange {
  char32_t first;
  char32_t last;
};

inline CodeRange codeRange(const std::string& field) {
  const auto number = [](const std::string& digits) {
    return static_cast<char32_t>(std::stoul(digits, nullptr, 16));
  };
  const size_t dots = field.find("..");
  const char32_t first = number(field.substr(0, dots));
  return {first, dots == std::string::npos ? first : number(field.substr(dots + 2))};
}

}  // namespace ksv_kit
