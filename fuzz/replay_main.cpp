// Runs a fuzz target over every file of a directory, without libFuzzer.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::fprintf(stderr, "usage: %s CORPUS_DIRECTORY\n", arguments[0]);
    return 2;
  }
  std::error_code error;
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1], error)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  if (error || files.empty()) {
    std::fprintf(stderr, "%s: no corpus\n", arguments[1]);
    return 1;
  }
  std::sort(files.begin(), files.end());
  for (const auto& path : files) {
    // Said first, so that the culprit of a crash is known.
    std::printf("%s\n", path.filename().string().c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    if (!file) {
      std::fprintf(stderr, "%s: cannot be read\n", path.string().c_str());
      return 1;
    }
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  }
  std::printf("%zu inputs replayed\n", files.size());
  return 0;
}
