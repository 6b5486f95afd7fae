// Filters standard input to standard output: shift_text read|write NAME. For the tests that hold
// the filters against other converters.
#include <cstdio>
#include <string_view>
#include <vector>

#include "kit/shifts/shift_filter.h"

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const bool isReading = std::string_view(arguments[1]) == "read";
  const auto filter =
      isReading ? ksv_kit::readingFilter(arguments[2]) : ksv_kit::writingFilter(arguments[2]);
  if (!filter) return 2;
  std::vector<uint8_t> in(1000);
  std::vector<uint8_t> out;
  uint64_t place = 0;
  for (bool isEnd = false; !isEnd;) {
    const size_t size = std::fread(in.data(), 1, in.size(), stdin);
    isEnd = size < in.size();
    size_t bad = 0;
    const size_t used = filter->filter(in.data(), size, isEnd, out, bad);
    place += used;
    if (bad != 0) {
      std::fprintf(stderr, "refused at %llu\n",
                   static_cast<unsigned long long>(place - filter->refusedBefore()));
      return 1;
    }
  }
  return std::fwrite(out.data(), 1, out.size(), stdout) == out.size() ? 0 : 2;
}
