#include <string>

#include "common/guard.h"
#include "common/log_format.h"
#include "common/path_encoding.h"
#include "ksv_file.h"
#include "ksv_log.h"
#include "ksv_path.h"

static_assert(int{KSV_LOG_PATH_SIZE} == int{KSV_PATH_SIZE});

namespace {

constexpr char kExtension[] = ".log";

bool isEnabled(uint32_t flags) { return (flags & KSV_LOG_ENABLED) != 0; }

bool makeLogFileName(const char* inputPath, const char* suffix, char* dest) {
  char drive[KSV_DRIVE_SIZE];
  char directory[KSV_PART_SIZE];
  char base[KSV_PART_SIZE];
  if (KSV_splitpath(inputPath, drive, directory, base, nullptr) != 0) return false;
  const std::string name = std::string(base).append(suffix == nullptr ? "" : suffix);
  if (name.size() >= KSV_PART_SIZE) return false;
  return KSV_makepath(dest, drive, directory, name.c_str(), kExtension) == 0;
}

}  // namespace

std::FILE* ksv_logfopen(uint32_t flags, const char* path) {
  return isEnabled(flags) ? KSV_FileOpen(path, "wb+") : nullptr;
}

int ksv_logfclose(uint32_t flags, std::FILE* stream) {
  if (!isEnabled(flags) || stream == nullptr) return 0;
  // Only here can be said that a line is missing, which is written without a word.
  const bool isWhole = std::ferror(stream) == 0;
  const int result = KSV_FileClose(stream);
  return isWhole ? result : EOF;
}

int ksv_logfprintf(uint32_t flags, std::FILE* stream, const char* format, int32_t argument) {
  if (isEnabled(flags) && stream != nullptr && format != nullptr) {
    ksv::printFormat(stream, format, argument);
  }
  return 0;
}

// The path is the format, and stays it: logs show "100%d.txt" as "1000.txt".
int ksv_logfprint_path(uint32_t flags, std::FILE* stream, const char* path) {
  if (!isEnabled(flags)) return 0;
  char ansi[KSV_PATH_SIZE];
  KSV_FilePathTransUTF8ToAnsi(ansi, path, sizeof ansi);
  return ksv_logfprintf(flags, stream, ansi, 0);
}

int GetLogFileName(const char* inputPath, const char* suffix, char* dest) {
  if (dest == nullptr) return -1;
  if (ksv::guarded(false, [&] { return makeLogFileName(inputPath, suffix, dest); })) return 0;
  dest[0] = '\0';
  return -1;
}
