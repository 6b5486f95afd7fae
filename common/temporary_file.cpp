#include <optional>
#include <string>

#include "common/guard.h"
#include "common/path.h"
#include "common/path_encoding.h"
#include "common/platform.h"
#include "ksv_path.h"

namespace ksv {
namespace {

constexpr char kPrefix[] = "ksv";

std::optional<std::string> directoryOf(const char* hint) {
  char drive[KSV_DRIVE_SIZE];
  char directory[KSV_PART_SIZE];
  if (KSV_splitpath(hint, drive, directory, nullptr, nullptr) != 0) return std::nullopt;
  // A drive alone is the directory that the drive stands in.
  if (directory[0] == '\0' && drive[0] == '\0') return std::string();
  return drive + openableDirectory(directory);
}

// Empty when there is none.
std::string directoryFor(const char* hint) {
  if (hint == nullptr || hint[0] == '\0') return platform::temporaryDirectory();
  return directoryOf(hint).value_or(std::string());
}

bool createTemporaryFile(const char* hint, char* dest) {
  std::string directory = directoryFor(hint);
  if (directory.empty()) return false;
  if (!isSeparator(directory.back())) directory.push_back(platform::pathSeparator());
  if (!isUsablePath(directory.c_str())) return false;

  const std::optional<std::string> path = platform::createUniqueFile(directory, kPrefix);
  if (!path) return false;
  if (isUsablePath(path->c_str()) && copyText(*path, dest, KSV_PATH_SIZE)) return true;
  platform::removeFile(path->c_str());
  return false;
}

}  // namespace
}  // namespace ksv

char* KSV_ASC_tmpnam1(const char* hint, char* dest) {
  if (dest == nullptr) return nullptr;
  const bool created = ksv::guarded(false, [&] { return ksv::createTemporaryFile(hint, dest); });
  return created ? dest : nullptr;
}

char* KSV_ASC_tmpnam(char* dest) { return KSV_ASC_tmpnam1(nullptr, dest); }
