#include "cli/jobs/work_sums.h"

#include <cstdio>

namespace ksv_cli {

std::string bytesInWords(uint64_t count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

std::string sumsInWords(size_t files, std::initializer_list<NamedCount> outcomes, uint64_t bytes,
                        std::chrono::duration<double> time) {
  std::string words = std::to_string(files) + (files == 1 ? " file: " : " files: ");
  bool isFirst = true;
  for (const NamedCount& outcome : outcomes) {
    words += (isFirst ? "" : ", ") + std::to_string(outcome.count) + ' ' + outcome.name;
    isFirst = false;
  }
  char seconds[64];
  std::snprintf(seconds, sizeof seconds, "%.1f", time.count());
  return words + "; " + bytesInWords(bytes) + " in " + seconds + " seconds";
}

}  // namespace ksv_cli
