#include "fuzz/scratch_directory.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/support.h"

namespace ksv_fuzz {
namespace {

std::string parentDirectory() {
  if (access("/dev/shm", W_OK | X_OK) == 0) return "/dev/shm";
  const char* temporary = std::getenv("TMPDIR");
  return temporary != nullptr ? temporary : "/tmp";
}

}  // namespace

ScratchDirectory::ScratchDirectory() {
  path_ = parentDirectory() + "/ksv_fuzz_XXXXXX";
  require(mkdtemp(path_.data()) != nullptr, "a scratch directory can be made");
  path_ += '/';
  setenv("Charsetpath", path_.c_str(), 1);
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
  const size_t written = std::fwrite(bytes.data(), 1, bytes.size(), file);
  require(std::fclose(file) == 0 && written == bytes.size(), "a scratch file can be written");
}

void ScratchDirectory::linkFilesOf(const std::string& directory) const {
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    std::filesystem::create_symlink(entry.path(), path_ + entry.path().filename().string());
  }
}

void ScratchDirectory::remove(const std::string& name) const {
  std::filesystem::remove(path_ + name);
}

std::string ScratchDirectory::read(const std::string& name) const {
  std::ifstream file(path_ + name, std::ios::binary);
  require(file.good(), "the file is there");
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace ksv_fuzz
