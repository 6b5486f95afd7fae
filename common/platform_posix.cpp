// Characters, settings and places of a POSIX system.
#include <dlfcn.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <system_error>

#include "common/platform.h"

namespace ksv::platform {
namespace {

// An address inside the file that this code was loaded from.
const char ownAddress = 0;

std::optional<std::string> resolved(const char* path) {
  char* name = realpath(path, nullptr);
  if (name == nullptr) return std::nullopt;
  const std::unique_ptr<char, void (*)(void*)> owner(name, free);
  return std::string(name);
}

// The file that is mapped at address, as the system has it.
std::optional<std::string> mappedFile(uintptr_t address) {
  std::ifstream maps("/proc/self/maps");
  std::string line;
  while (std::getline(maps, line)) {
    unsigned long begin = 0;
    unsigned long end = 0;
    if (std::sscanf(line.c_str(), "%lx-%lx", &begin, &end) != 2) continue;
    const size_t path = line.find('/');
    if (begin <= address && address < end && path != line.npos) return line.substr(path);
  }
  return std::nullopt;
}

// The loader only knows the name it was given, which means nothing any more when
// it is relative and the current directory has changed.
std::optional<std::string> ownFile() {
  Dl_info info;
  if (dladdr(&ownAddress, &info) != 0 && info.dli_fname != nullptr && info.dli_fname[0] == '/') {
    return resolved(info.dli_fname);
  }
  return mappedFile(reinterpret_cast<uintptr_t>(&ownAddress));
}

}  // namespace

std::string errorText(SystemError error) { return std::generic_category().message(error); }

// A program that runs with more rights than its caller does not let the caller
// choose where its tables come from and go to.
std::optional<std::string> environmentValue(const char* name) {
  const char* value = secure_getenv(name);
  if (value == nullptr || value[0] == '\0') return std::nullopt;
  return std::string(value);
}

std::optional<std::string> settingFromLibrary(const char*) { return std::nullopt; }

std::vector<std::string> configurationDirectories() {
  std::vector<std::string> directories;
  if (auto configuration = environmentValue("XDG_CONFIG_HOME")) {
    directories.push_back(*configuration);
  } else if (auto home = environmentValue("HOME")) {
    directories.push_back(*home + "/.config");
  }
  directories.push_back("/etc");
  return directories;
}

std::optional<std::string> libraryDirectory() {
  const std::optional<std::string> file = ownFile();
  if (!file) return std::nullopt;
  const size_t separator = file->rfind('/');
  return file->substr(0, separator == 0 ? 1 : separator);
}

char pathSeparator() { return '/'; }

size_t driveLength(const char*) { return 0; }

char32_t foldNameCharacter(char32_t character) { return character; }

std::optional<std::string> ansiToUtf8(const char* ansi) { return std::string(ansi); }

std::optional<std::string> utf8ToAnsi(const char* utf8) { return std::string(utf8); }

std::optional<std::string> canonicalDirectory(const char* path) {
  FileStatus status;
  if (!fileStatus(path, status) || (status.mode & kFileTypeMask) != kDirectory) {
    return std::nullopt;
  }
  return resolved(path);
}

std::string temporaryDirectory() {
  return environmentValue("TMPDIR").value_or(std::string("/tmp"));
}

}  // namespace ksv::platform
