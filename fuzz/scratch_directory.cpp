#include "fuzz/scratch_directory.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "fuzz/support.h"
#include "tests/system/system.h"

namespace ksv_fuzz {
namespace {

constexpr char kPrefix[] = "ksv_fuzz";
constexpr char kInMemory[] = "/dev/shm";

// Where a script that cleans up after us wants it.
constexpr char kParentVariable[] = "KSV_FUZZ_SCRATCH";

std::string makeDirectory() {
  if (const auto parent = ksv::test::variable(kParentVariable)) {
    return ksv::test::makeTemporaryDirectory(kPrefix, *parent);
  }
  if (std::filesystem::is_directory(kInMemory)) {
    try {
      return ksv::test::makeTemporaryDirectory(kPrefix, kInMemory);
    } catch (const std::runtime_error&) {
      // Nobody may write there: any other place will do.
    }
  }
  return ksv::test::makeTemporaryDirectory(kPrefix);
}

}  // namespace

ScratchDirectory::ScratchDirectory() : path_(makeDirectory() + '/') {
  ksv::test::setVariable("Charsetpath", path_);
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void ScratchDirectory::clear() const {
  for (const auto& entry : std::filesystem::directory_iterator(path_)) {
    std::filesystem::remove_all(entry.path());
  }
}

void ScratchDirectory::write(const std::string& name, std::string_view bytes) const {
  std::FILE* file = std::fopen((path_ + name).c_str(), "wb");
  require(file != nullptr, "a scratch file can be made");
  const size_t written = bytes.empty() ? 0 : std::fwrite(bytes.data(), 1, bytes.size(), file);
  require(std::fclose(file) == 0 && written == bytes.size(), "a scratch file can be written");
}

void ScratchDirectory::copyFilesOf(const std::string& directory) const {
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    std::filesystem::copy_file(entry.path(), path_ + entry.path().filename().string());
  }
}

void ScratchDirectory::remove(const std::string& name) const {
  std::filesystem::remove(path_ + name);
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  require(file.good(), "the file is there");
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace ksv_fuzz
