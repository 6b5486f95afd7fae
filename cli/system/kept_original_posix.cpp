#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "cli/system/kept_original.h"
#include "cli/system/open_file_posix.h"
#include "cli/system/places_posix.h"

namespace ksv_cli::platform {
namespace {

// The new name first: so the file has one at every instant.
void synchroniseBoth(const std::string& place, const std::string& kept) {
  synchroniseDirectory(directoryOf(place));
  if (directoryOf(kept) != directoryOf(place)) synchroniseDirectory(directoryOf(kept));
}

}  // namespace

void restoreOriginal(const std::string& kept, const std::string& place) {
  const std::string end = linkEnd(place);
  if (::rename(kept.c_str(), end.c_str()) != 0) fail(errno);
  synchroniseBoth(end, kept);
}

void putOriginalBack(const std::string& kept, const std::string& place) {
  const std::string end = linkEnd(place);
  if (::renameat2(AT_FDCWD, kept.c_str(), AT_FDCWD, end.c_str(), RENAME_NOREPLACE) != 0)
    fail(errno);
  synchroniseBoth(end, kept);
}

void removeKept(const std::string& kept) {
  if (::unlink(kept.c_str()) != 0) fail(errno);
  synchroniseDirectory(directoryOf(kept));
}

void removePassingFile(const std::string& place, const std::string& passingName) {
  const std::filesystem::path directory = directoryOf(linkEnd(place));
  if (::unlink((directory / passingName).c_str()) == 0) return;
  if (!isOneOf(errno, {ENOENT, ENOTDIR})) fail(errno);
}

}  // namespace ksv_cli::platform
