// Characters, settings and places of a POSIX system.
#include <dlfcn.h>
#include <stdlib.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <system_error>

#include "common/platform.h"

namespace ksv::platform {
namespace {

// An address inside the file that this code was loaded from.
const char ownAddress = 0;

std::optional<std::string> resolved(const char* path) {
  char* name = realpath(path, nullptr);
  if (name == nullptr && errno == ENOMEM) throw std::bad_alloc();
  if (name == nullptr) return std::nullopt;
  const std::unique_ptr<char, void (*)(void*)> owner(name, free);
  return std::string(name);
}

struct CloseFile {
  void operator()(FILE* file) const { std::fclose(file); }
};

// The file that is mapped at address, as the system has it.
std::optional<std::string> mappedFile(uintptr_t address) {
  constexpr size_t kLongestLine = 8192;  // a path has 4,096 bytes at most
  const std::unique_ptr<FILE, CloseFile> maps(std::fopen("/proc/self/maps", "re"));
  std::array<char, kLongestLine> read;
  while (maps != nullptr && std::fgets(read.data(), read.size(), maps.get()) != nullptr) {
    std::string line = read.data();
    if (line.ends_with('\n')) line.pop_back();
    unsigned long begin = 0;
    unsigned long end = 0;
    if (std::sscanf(line.c_str(), "%lx-%lx", &begin, &end) != 2) continue;
    const size_t path = line.find('/');
    if (begin <= address && address < end && path != line.npos) return line.substr(path);
  }
  return std::nullopt;
}

// Whether what lies at this base is the program that the process began with. One that was given to
// the loader by name has no loader of its own in the eyes of the system, which takes that for
// the program.
bool isProgram(const void* base) {
  const auto entry = reinterpret_cast<const void*>(getauxval(AT_ENTRY));
  Dl_info info;
  return getauxval(AT_BASE) != 0 && dladdr(entry, &info) != 0 && info.dli_fbase == base;
}

// Asked for at the start of each conversion of a program that holds the library, and many times
// faster than the list of all that is mapped.
std::optional<std::string> programFile() {
  std::array<char, 4096> path;
  const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
  if (length <= 0 || static_cast<size_t>(length) == path.size()) return std::nullopt;
  return std::string(path.data(), static_cast<size_t>(length));
}

// The loader only knows the name it was given, which means nothing any more when
// it is relative and the current directory has changed.
std::optional<std::string> ownFile() {
  Dl_info info;
  const bool isKnown = dladdr(&ownAddress, &info) != 0 && info.dli_fname != nullptr;
  if (isKnown && info.dli_fname[0] == '/') return resolved(info.dli_fname);
  std::optional<std::string> program;
  if (isKnown && isProgram(info.dli_fbase)) program = programFile();
  return program ? program : mappedFile(reinterpret_cast<uintptr_t>(&ownAddress));
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
