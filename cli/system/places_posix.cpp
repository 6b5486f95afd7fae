#include "cli/system/places_posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "cli/system/open_file_posix.h"
#include "cli/system/paths.h"

namespace ksv_cli::platform {

std::string directoryOf(const std::string& path) {
  return std::filesystem::path(path).parent_path().string();
}

// Where a chain of links ends, whether or not a file is there.
std::string linkEnd(const std::string& path) {
  constexpr int kMostLinks = 40;
  std::filesystem::path place = path;
  for (int i = 0; i < kMostLinks && isLink(place); ++i) {
    std::error_code error;
    const std::filesystem::path next = std::filesystem::read_symlink(place, error);
    if (error) fail(error.value());
    place = next.is_absolute() ? next : place.parent_path() / next;
  }
  return place.string();
}

// What has no disk behind it has nothing to wait for.
void synchronise(int number) {
  while (::fsync(number) != 0) {
    if (isOneOf(errno, {EINVAL, ENOTSUP, EROFS})) return;
    if (errno != EINTR) fail(errno);
  }
}

// A directory that may be written to, but not read, waits for all there is.
void synchroniseDirectory(const std::string& path) {
  const std::string name = path.empty() ? "." : path;
  const OpenFile directory(::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.isOpen())
    synchronise(directory.number());
  else
    ::sync();
}

}  // namespace ksv_cli::platform
