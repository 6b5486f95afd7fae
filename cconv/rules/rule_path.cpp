#include "cconv/rules/rule_path.h"

#include "cconv/rules/names.h"
#include "ksv_path.h"

namespace ksv {
namespace {

bool isSeparator(char c) { return c == '/' || c == '\\'; }

bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

size_t driveLength(const std::string& path) {
  size_t length = 0;
  while (length < 2 && length < path.size() && isSeparator(path[length])) ++length;
  if (length == 2) {
    while (length < path.size() && !isSeparator(path[length])) ++length;
  } else if (length == 0 && path.size() >= 2 && isLetter(path[0]) && path[1] == ':') {
    length = 2;
  }
  return length;
}

}  // namespace

PathParts splitPath(const std::string& path) {
  PathParts parts;
  const size_t drive = driveLength(path);
  parts.drive = path.substr(0, drive);
  std::string rest = path.substr(drive);
  const size_t last = static_cast<size_t>(KSV_getPathBreak(rest.c_str()));
  if (last < rest.size() && isSeparator(rest[last])) {
    parts.directory = rest.substr(0, last + 1);
    rest.erase(0, last + 1);
  }
  const size_t dot = rest.rfind('.');
  parts.fileName = rest.substr(0, dot);
  if (dot != std::string::npos) parts.extension = rest.substr(dot);
  return parts;
}

std::string joinPath(const PathParts& parts) {
  return parts.drive + parts.directory + parts.fileName + parts.extension;
}

void lowerFileName(PathParts& parts) {
  lowerAscii(parts.fileName.data());
  lowerAscii(parts.extension.data());
}

}  // namespace ksv
