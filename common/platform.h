// What the library asks of the operating system, in one place: a POSIX side (the
// files *_posix.cpp) and a Windows side stand behind it. Nothing else in the
// library calls the system beyond the C and C++ standard libraries.
//
// Paths are UTF-8. Functions that return a std::string or fill one may throw
// std::bad_alloc; the others do not throw.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ksv::platform {

// A recursive lock that a name identifies among the processes of one user.
// It is released when its holder, thread or process, dies.
class NamedMutex {
 public:
  enum class LockResult { kAcquired, kAbandoned, kFailed };

  // Opens or creates the lock. Null when the system refuses.
  static std::unique_ptr<NamedMutex> open(const char* name);

  // Gives back what the calling thread still holds, so that no other thread of
  // this process waits for a lock nobody can release any more.
  virtual ~NamedMutex() = default;

  // Waits without a time-out. kAbandoned: held, but its last holder died.
  virtual LockResult lock() = 0;
  // Releases one level; false when the calling thread does not hold the lock.
  virtual bool unlock() = 0;
};

// A file that appears under its name complete or not at all: it is written
// beside its place and renamed by commit(). A process killed in between leaves
// the place as it was. Two writers never share the file that is being written.
class ReplacementFile {
 public:
  // Null when the file cannot be created, when something stands in its place
  // already, or when another writer is at it.
  static std::unique_ptr<ReplacementFile> create(const char* path);

  // Without commit() nothing remains.
  virtual ~ReplacementFile() = default;

  // Buffered. False when not all bytes could be stored.
  virtual bool write(const void* bytes, size_t count) = 0;
  // False when the bytes could not be stored; nothing remains then either.
  virtual bool commit() = 0;
};

// The system's number of an error, and 0 for none.
using SystemError = int;
// That there is no memory; that somebody else may read the file, and not this user.
SystemError outOfMemory();
SystemError accessDenied();
// The error of the call that has just failed on this thread.
SystemError lastError();
// What the system says of it: "Too many open files".
std::string errorText(SystemError error);

// The bytes of a file where the system shows them to this process and to all others that look at
// them, as long as this lives. Who cuts such a file short under it ends the process: files that
// are mapped are replaced, never changed.
class MappedBytes {
 public:
  MappedBytes() = default;
  MappedBytes(const uint8_t* bytes, size_t size) : bytes_(bytes), size_(size) {}
  MappedBytes(MappedBytes&& other) noexcept
      : bytes_(std::exchange(other.bytes_, nullptr)), size_(std::exchange(other.size_, 0)) {}
  MappedBytes& operator=(MappedBytes&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    std::swap(size_, other.size_);
    return *this;
  }
  ~MappedBytes();

  explicit operator bool() const { return bytes_ != nullptr; }
  // Of a page's alignment.
  const uint8_t* bytes() const { return bytes_; }
  size_t size() const { return size_; }

 private:
  const uint8_t* bytes_ = nullptr;
  size_t size_ = 0;
};

// A file that is read from its beginning, without the buffer and the lock of a
// stream: for those who read large pieces, or very many files.
class InputFile {
 public:
  // Of anything but regular files nobody can say how long opening and reading takes.
  enum class Takes { kAnyFile, kRegularFile };

  // Not open afterwards when there is nothing to be read at path, or a directory.
  explicit InputFile(const char* path, Takes takes = Takes::kAnyFile);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  // In bytes, when the file was opened; -1 of one that is not open, and of what has
  // no end that could be looked for, such as a pipe.
  int64_t size() const { return size_; }

  // Reads on and returns how many bytes came: fewer than count only where the file
  // ends or the system refuses.
  size_t read(void* buffer, size_t count);

  // All of the file, which may be closed then. None when it is empty or the system refuses.
  MappedBytes map();

  // What the system refused with, when it was opened or read. 0 where nothing stands at
  // path: that is an answer.
  SystemError error() const { return error_; }

 private:
  intptr_t handle_;
  int64_t size_ = -1;
  SystemError error_ = 0;
};

// A file that is read at any place, without the buffer of a stream and without a place of its own.
class PlacedFile {
 public:
  explicit PlacedFile(const char* path);
  // A descriptor, on Windows a handle, which stays the caller's and has to stay open as long as
  // this lives. Where on Windows the handle stands afterwards is not said.
  explicit PlacedFile(intptr_t descriptor);
  ~PlacedFile();
  PlacedFile(const PlacedFile&) = delete;
  PlacedFile& operator=(const PlacedFile&) = delete;

  // In bytes, when it was opened. Of one that is not open, 0.
  uint64_t size() const { return size_; }

  // How many bytes came: fewer than count only where the file ends or the system refuses.
  size_t read(uint64_t offset, void* buffer, size_t count);

  // What the system refused with, when it was opened, what has no places such as a pipe
  // included, or when it was read last.
  SystemError error() const { return error_; }

 private:
  void measure();

  intptr_t handle_;
  const bool isOwner_;
  uint64_t size_ = 0;
  SystemError error_ = 0;
};

// Where a setting was found.
struct SettingOrigin {
  enum class Place {
    kNowhere,
    kSettingsLibrary,
    kEnvironment,
    kConfigurationFile,
    kNamedInstallation,  // by a variable of the environment
    kInstallation        // where the library looks for one by itself
  };
  Place place = Place::kNowhere;
  std::string name;  // of the variable of the environment; the path of the configuration file

  // Whether it is a charset directory that came with the library, and not one of somebody's own.
  bool isInstallation() const {
    return place == Place::kNamedInstallation || place == Place::kInstallation;
  }
};

// Looks the setting up where this system keeps settings and copies its value,
// terminator included, into buffer. False when it is not set or does not fit:
// buffer is the empty string then. A directory ends in a separator. Whoever asks is told
// where the value was found.
bool readSetting(const char* key, char* buffer, size_t size, SettingOrigin* origin = nullptr);

// The value of an environment variable; none when it is not set or empty.
std::optional<std::string> environmentValue(const char* name);

// The value that a library which holds the settings gives for key, where this
// system knows such a library; none when there is no library or no value.
std::optional<std::string> settingFromLibrary(const char* key);

// The directories that may hold ksv_conf.ini, the first to be asked first.
std::vector<std::string> configurationDirectories();

// The directory of the file that this code was loaded from, without a separator
// at its end unless it is the root; none when the system cannot tell.
std::optional<std::string> libraryDirectory();

// The separator that is added where a path needs one.
char pathSeparator();

// The length of the drive that path begins with: "C:" has 2. 0 where there are no
// drive letters.
size_t driveLength(const char* path);

// The form in which two characters of file names are compared: one case where
// names are compared without regard to case.
char32_t foldNameCharacter(char32_t character);

// Between UTF-8 and the ANSI code page, which is UTF-8 itself where programs have
// no other, and then nothing is checked. None when a character has no counterpart.
std::optional<std::string> ansiToUtf8(const char* ansi);
std::optional<std::string> utf8ToAnsi(const char* utf8);

// fopen, which opens no directory.
std::FILE* openFile(const char* path, const char* mode);
// fseek and ftell, in 64 bits.
int seekFile(std::FILE* stream, int64_t offset, int origin);
int64_t tellFile(std::FILE* stream);
// vfprintf, which fails when the stream does.
int printTo(std::FILE* stream, const char* format, va_list arguments);

// The mode bits of FileStatus that tell the type.
inline constexpr uint32_t kFileTypeMask = 0xF000;
inline constexpr uint32_t kRegularFile = 0x8000;
inline constexpr uint32_t kDirectory = 0x4000;

struct FileStatus {
  uint64_t device;
  uint64_t inode;
  uint32_t mode;
  uint64_t links;
  uint32_t user;
  uint32_t group;
  uint64_t specialDevice;
  int64_t size;
  int64_t accessTime;  // seconds since 1970, as the two below
  int64_t writeTime;
  int64_t changeTime;  // of the status, or the creation where that is what is known
};

// Links are followed by the first only. False when there is nothing at path.
bool fileStatus(const char* path, FileStatus& status);
bool entryStatus(const char* path, FileStatus& status);
// Of what a directory lists: that of a link which leads nowhere is its own. May throw
// std::bad_alloc.
bool statusOfListed(const std::string& path, FileStatus& status);

// The files and directories of the system; false when it refuses.
bool removeFile(const char* path);
bool makeDirectory(const char* path);
bool removeDirectory(const char* path);

// The name of the entry that name stands for in a directory written with its
// separator: not as name is written where case is not regarded. None when there is
// no such entry.
std::optional<std::string> entryName(const std::string& directory, const std::string& name);

// All names in a directory, "." and ".." included, in no order. None when it
// cannot be opened. The error says whether names may be missing, and why; 0 where there is
// no such directory.
std::optional<std::vector<std::string>> directoryNames(const char* path,
                                                       SystemError* error = nullptr);

// The names, in no order, that the system itself finds in a directory written with its
// separator for a component with wild cards. None where the system has no wild cards.
std::optional<std::vector<std::string>> namesFoundBySystem(const std::string& directory,
                                                           const std::string& component);

// The absolute path of an existing directory without dots in it.
std::optional<std::string> canonicalDirectory(const char* path);

// The directory for temporary files.
std::string temporaryDirectory();

// Creates an empty file, private to the user, with a new name that begins with
// prefix, in a directory written with its separator. None when that fails.
std::optional<std::string> createUniqueFile(const std::string& directory, const char* prefix);

}  // namespace ksv::platform
