#include "cli/system/files_posix.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace ksv_cli::platform {
namespace {

int openChecked(const std::string& path, int flags) {
  for (;;) {
    const int number = ::open(path.c_str(), flags | O_CLOEXEC);
    if (number >= 0) return number;
    if (errno != EINTR) fail(errno);
  }
}

int64_t nanoseconds(const timespec& time) {
  return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

FileFacts factsOf(const struct stat& status) {
  FileFacts facts;
  facts.kind = S_ISREG(status.st_mode)   ? FileKind::kRegular
               : S_ISDIR(status.st_mode) ? FileKind::kDirectory
                                         : FileKind::kOther;
  facts.size = facts.kind == FileKind::kRegular ? static_cast<uint64_t>(status.st_size) : 0;
  facts.device = static_cast<uint64_t>(status.st_dev);
  facts.number = static_cast<uint64_t>(status.st_ino);
  facts.names = static_cast<uint64_t>(status.st_nlink);
  facts.readTime = nanoseconds(status.st_atim);
  facts.writeTime = nanoseconds(status.st_mtim);
  return facts;
}

}  // namespace

FileFacts factsOfDescriptor(int number) {
  struct stat status;
  if (::fstat(number, &status) == 0) return factsOf(status);
  if (errno != EBADF) fail(errno);
  return {};
}

FileFacts fileFacts(const std::string& path) {
  struct stat status;
  if (::stat(path.c_str(), &status) == 0) return factsOf(status);
  if (!isOneOf(errno, {ENOENT, ENOTDIR, ELOOP, ENAMETOOLONG})) fail(errno);
  return {};
}

int64_t sinceEpoch(int64_t time) { return time; }

std::unique_ptr<ByteSource> openInput(const std::string& path) {
  const int number = openChecked(path, O_RDONLY);
  auto source = std::make_unique<DescriptorSource>(number);
  if (factsOfDescriptor(number).kind == FileKind::kDirectory) fail(EISDIR);
  return source;
}

std::unique_ptr<ByteSink> openSpecialOutput(const std::string& path) {
  return std::make_unique<DescriptorSink>(openChecked(path, O_WRONLY));
}

}  // namespace ksv_cli::platform
