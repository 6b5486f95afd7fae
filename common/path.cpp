#include "common/path.h"

#include <algorithm>
#include <optional>
#include <string>

#include "common/guard.h"
#include "common/path_encoding.h"
#include "common/platform.h"
#include "ksv_file.h"
#include "ksv_path.h"

namespace ksv {
namespace {

constexpr size_t kUnbounded = static_cast<size_t>(-1);

// Of a usable path, its terminator included: a UTF-16 unit has three in UTF-8 at most.
constexpr size_t kMostPathBytes = size_t{KSV_PATH_UNITS} * 3;

std::string_view viewOf(const char* text) { return text == nullptr ? "" : text; }

bool isDirectory(const char* path) {
  platform::FileStatus status;
  return platform::fileStatus(path, status) &&
         (status.mode & platform::kFileTypeMask) == platform::kDirectory;
}

bool copyPart(std::string_view part, char* dest, size_t capacity) {
  return dest == nullptr || copyText(part, dest, capacity);
}

bool copyAnsiPart(std::string_view part, char* dest) {
  if (dest == nullptr) return true;
  const std::optional<std::string> ansi = platform::utf8ToAnsi(std::string(part).c_str());
  return copyText(ansi ? *ansi : std::string(), dest, kUnbounded);
}

void clearParts(char* drive, char* directory, char* base, char* extension) {
  for (char* part : {drive, directory, base, extension}) copyPart("", part, kUnbounded);
}

std::string_view firstCharacter(std::string_view text) {
  std::string_view rest = text;
  decodeUtf8(rest);
  return text.substr(0, text.size() - rest.size());
}

std::string joinPath(std::string_view drive, std::string_view directory, std::string_view base,
                     std::string_view extension) {
  std::string path;
  if (!drive.empty()) path.append(firstCharacter(drive)).push_back(':');
  path.append(directory);
  if (!directory.empty() && !isSeparator(directory.back())) {
    path.push_back(platform::pathSeparator());
  }
  path.append(base);
  if (!extension.empty() && extension.front() != '.') path.push_back('.');
  return path.append(extension);
}

std::string toUtf8(const char* ansi) {
  return platform::ansiToUtf8(ansi == nullptr ? "" : ansi).value_or(std::string());
}

size_t shiftJisLength(const char* character) {
  const auto lead = static_cast<unsigned char>(character[0]);
  const bool leads = (lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xFC);
  return leads && character[1] != '\0' ? 2 : 1;
}

}  // namespace

PathPieces splitIntoPieces(const char* path) {
  std::string_view rest = viewOf(path);
  PathPieces parts;
  parts.drive = rest.substr(0, rest.empty() ? 0 : platform::driveLength(path));
  rest.remove_prefix(parts.drive.size());

  const size_t separator = rest.find_last_of("/\\");
  parts.directory = rest.substr(0, separator == rest.npos ? 0 : separator + 1);
  rest.remove_prefix(parts.directory.size());

  parts.base = rest.substr(0, rest.rfind('.'));
  parts.extension = rest.substr(parts.base.size());
  return parts;
}

std::string openableDirectory(std::string_view directory) {
  if (directory.empty()) return ".";
  while (directory.size() > 1 && isSeparator(directory.back())) directory.remove_suffix(1);
  std::string path(directory);
  // A file system may allow '\' in a name: the path as it stands goes first.
  if (path.size() > 1 && isDirectory(path.c_str())) return path;
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

}  // namespace ksv

int KSV_splitpath(const char* path, char* drive, char* directory, char* base, char* extension) {
  if (!ksv::isUsablePath(path)) {
    ksv::clearParts(drive, directory, base, extension);
    return KSV_PATH_NOT_CONVERTED;
  }
  char copy[ksv::kMostPathBytes];  // parts may be written over the path
  ksv::copyText(ksv::viewOf(path), copy, sizeof copy);
  const ksv::PathPieces parts = ksv::splitIntoPieces(copy);
  bool whole = ksv::copyPart(parts.drive, drive, KSV_DRIVE_SIZE);
  whole = ksv::copyPart(parts.directory, directory, KSV_PART_SIZE) && whole;
  whole = ksv::copyPart(parts.base, base, KSV_PART_SIZE) && whole;
  whole = ksv::copyPart(parts.extension, extension, KSV_PART_SIZE) && whole;
  return whole ? 0 : KSV_PATH_NOT_CONVERTED;
}

void KSV_splitpathA(const char* path, char* drive, char* directory, char* base, char* extension) {
  const bool whole = ksv::guarded(false, [&] {
    const std::string utf8 = ksv::toUtf8(path);
    const ksv::PathPieces parts = ksv::splitIntoPieces(utf8.c_str());
    return ksv::copyAnsiPart(parts.drive, drive) && ksv::copyAnsiPart(parts.directory, directory) &&
           ksv::copyAnsiPart(parts.base, base) && ksv::copyAnsiPart(parts.extension, extension);
  });
  if (!whole) ksv::clearParts(drive, directory, base, extension);
}

int KSV_makepath(char* dest, const char* drive, const char* directory, const char* base,
                 const char* extension) {
  if (dest == nullptr) return 0;
  const bool made = ksv::guarded(false, [&] {
    for (const char* part : {drive, directory, base, extension}) {
      if (!ksv::isUsablePath(part)) return false;
    }
    const std::string path = ksv::joinPath(ksv::viewOf(drive), ksv::viewOf(directory),
                                           ksv::viewOf(base), ksv::viewOf(extension));
    return ksv::copyText(path, dest, KSV_PATH_SIZE);
  });
  if (made) return 0;
  dest[0] = '\0';
  return KSV_PATH_NOT_CONVERTED;
}

void KSV_makepathA(char* dest, const char* drive, const char* directory, const char* base,
                   const char* extension) {
  if (dest == nullptr) return;
  const bool made = ksv::guarded(false, [&] {
    const std::string path = ksv::joinPath(ksv::toUtf8(drive), ksv::toUtf8(directory),
                                           ksv::toUtf8(base), ksv::toUtf8(extension));
    return ksv::copyAnsiPart(path, dest);
  });
  if (!made) dest[0] = '\0';
}

int32_t KSV_getPathBreak(const char* path) {
  if (path == nullptr) return 0;
  // No byte of a longer UTF-8 character is a separator, so that only Shift_JIS
  // has to be stepped over.
  const bool isUtf8 = ksv::utf16Length(path).has_value();
  size_t found = 0;
  for (size_t i = 0; path[i] != '\0'; i += isUtf8 ? 1 : ksv::shiftJisLength(path + i)) {
    if (ksv::isSeparator(path[i])) found = i;
  }
  return static_cast<int32_t>(found);
}
