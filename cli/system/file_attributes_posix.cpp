#include "cli/system/file_attributes_posix.h"

#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <vector>

#include "cli/system/open_file_posix.h"

namespace ksv_cli::platform {
namespace {

constexpr char kAccessList[] = "system.posix_acl_access";

// Calls with a growing buffer until all fits: the attribute may change between a call
// that tells its size and one that reads it. False, with errno, when it is refused.
template <typename Call>
bool readGrowing(std::string& text, Call call) {
  for (size_t size = 256; size <= 1024 * 1024; size *= 4) {
    text.resize(size);
    const ssize_t length = call(text.data(), size);
    if (length >= 0) {
      text.resize(static_cast<size_t>(length));
      return true;
    }
    if (errno != ERANGE) return false;
  }
  return false;
}

std::vector<std::string> attributeNames(const std::string& path, WhatIsRefused whatIsRefused) {
  std::string list;
  const bool isRead = readGrowing(
      list, [&](char* buffer, size_t size) { return ::listxattr(path.c_str(), buffer, size); });
  if (!isRead && errno != ENOTSUP && whatIsRefused == WhatIsRefused::kFails) fail(errno);
  std::vector<std::string> names;
  for (size_t at = 0; isRead && at < list.size(); at += names.back().size() + 1)
    names.emplace_back(list.c_str() + at);
  return names;
}

// The system gives these to a file by rules of its own, or takes them from one that is
// written to.
bool belongsToSystem(std::string_view name) {
  return name.starts_with("security.") || name.starts_with("trusted.") ||
         (name.starts_with("system.") && name != kAccessList);
}

void handOnAttribute(const std::string& path, const std::string& name, int to,
                     WhatIsRefused whatIsRefused) {
  std::string value;
  const bool isRead = readGrowing(value, [&](char* buffer, size_t size) {
    return ::getxattr(path.c_str(), name.c_str(), buffer, size);
  });
  if (isRead && ::fsetxattr(to, name.c_str(), value.data(), value.size(), 0) == 0) return;
  if (whatIsRefused == WhatIsRefused::kGivesUp || belongsToSystem(name)) return;
  throw Failure("its attribute " + name +
                " cannot be kept: " + std::generic_category().message(errno));
}

// A directory gives new files an access list, which the old file need not have had.
void handOnExtendedAttributes(const std::string& path, int to, WhatIsRefused whatIsRefused) {
  const std::vector<std::string> names = attributeNames(path, whatIsRefused);
  for (const std::string& name : names)
    if (name != "security.capability") handOnAttribute(path, name, to, whatIsRefused);
  if (std::find(names.begin(), names.end(), kAccessList) == names.end())
    ::fremovexattr(to, kAccessList);
}

}  // namespace

// The permissions come last: with an access list they are its mask.
void handOnAttributes(const std::string& path, int to, WhatIsRefused whatIsRefused) {
  struct stat old;
  if (::stat(path.c_str(), &old) != 0) fail(errno);
  const bool isOwnerKept = ::fchown(to, old.st_uid, old.st_gid) == 0;
  if (!isOwnerKept && whatIsRefused == WhatIsRefused::kFails)
    throw Failure("its owner and group cannot be kept: " + std::generic_category().message(errno));
  handOnExtendedAttributes(path, to, whatIsRefused);
  if (::fchmod(to, old.st_mode & (isOwnerKept ? 07777u : 0777u)) != 0) fail(errno);
}

}  // namespace ksv_cli::platform
