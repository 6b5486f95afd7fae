#include <cstddef>
#include <optional>
#include <string>

#include "common/guard.h"
#include "common/path_encoding.h"
#include "common/platform.h"
#include "ksv_file.h"
#include "ksv_path.h"

static_assert(sizeof(KsvStat) == 48);
static_assert(offsetof(KsvStat, dev) == 0);
static_assert(offsetof(KsvStat, ino) == 4);
static_assert(offsetof(KsvStat, mode) == 6);
static_assert(offsetof(KsvStat, nlink) == 8);
static_assert(offsetof(KsvStat, uid) == 10);
static_assert(offsetof(KsvStat, gid) == 12);
static_assert(offsetof(KsvStat, rdev) == 16);
static_assert(offsetof(KsvStat, size) == 20);
static_assert(offsetof(KsvStat, atime) == 24);
static_assert(offsetof(KsvStat, mtime) == 32);
static_assert(offsetof(KsvStat, ctime) == 40);

namespace platform = ksv::platform;

namespace {

bool statusOf(const char* path, platform::FileStatus& status) {
  return path != nullptr && ksv::isUsablePath(path) && platform::fileStatus(path, status);
}

bool statusOfAnsi(const char* path, platform::FileStatus& status) {
  if (path == nullptr) return false;
  return ksv::guarded(false, [&] {
    const std::optional<std::string> utf8 = platform::ansiToUtf8(path);
    return utf8 && platform::fileStatus(utf8->c_str(), status);
  });
}

// The type is one number, not a set of bits: a socket, say, has the bit of a
// regular file in its number.
bool isOfType(const platform::FileStatus& status, uint32_t type) {
  return (status.mode & platform::kFileTypeMask) == type;
}

}  // namespace

int KSV_STAT(const char* path, KsvStat* out) {
  platform::FileStatus status;
  if (out == nullptr || !statusOf(path, status)) return -1;
  *out = {};
  out->dev = static_cast<uint32_t>(status.device);
  out->ino = static_cast<uint16_t>(status.inode);
  out->mode = static_cast<uint16_t>(status.mode);
  out->nlink = static_cast<int16_t>(status.links);
  out->uid = static_cast<int16_t>(status.user);
  out->gid = static_cast<int16_t>(status.group);
  out->rdev = static_cast<uint32_t>(status.specialDevice);
  out->size = static_cast<int32_t>(status.size);
  out->atime = status.accessTime;
  out->mtime = status.writeTime;
  out->ctime = status.changeTime;
  return 0;
}

int KSV_IsFile(const char* path) {
  platform::FileStatus status;
  return statusOf(path, status) && isOfType(status, platform::kRegularFile) ? 1 : 0;
}

int KSV_IsFileA(const char* path) {
  platform::FileStatus status;
  return statusOfAnsi(path, status) && isOfType(status, platform::kRegularFile) ? 1 : 0;
}

int KSV_IsDirectory(const char* path) {
  platform::FileStatus status;
  return statusOf(path, status) && isOfType(status, platform::kDirectory) ? 1 : 0;
}

int KSV_IsDirectoryA(const char* path) {
  platform::FileStatus status;
  return statusOfAnsi(path, status) && isOfType(status, platform::kDirectory) ? 1 : 0;
}

int KSV_IsExist(const char* path) {
  platform::FileStatus status;
  return statusOf(path, status) ? 1 : 0;
}

int KSV_MkDir(const char* path) {
  if (path == nullptr || !ksv::isUsablePath(path)) return -1;
  return platform::makeDirectory(path) ? 0 : -1;
}

int KSV_RmDir(const char* path) {
  if (path == nullptr || !ksv::isUsablePath(path)) return -1;
  return platform::removeDirectory(path) ? 0 : -1;
}

int KSV_ASC_remove(const char* path) { return KSV_FileRemove(path); }
