// How far the work has come, as a line for a terminal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ksv_cli {

struct Progress {
  size_t files = 0;  // that are done
  size_t fileCount = 0;
  uint64_t bytes = 0;
  uint64_t totalBytes = 0;  // 0: not known
  double seconds = 0;       // since the work began
  std::string name = {};    // of the file that is worked on
};

// "3/10 files, 1.5 of 6.0 MB, 3.0 MB/s, 0:02 left  NAME", in so many columns at most: a name that
// does not fit is cut in its middle, and what does not fit beside it is left out from the end. A
// single file is not counted.
std::string progressLine(const Progress& progress, size_t columns);

}  // namespace ksv_cli
