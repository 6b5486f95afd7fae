// What the library asks of the operating system, in one place: a POSIX side
// (platform_posix.cpp) and a Windows side stand behind it. Nothing else in the
// library calls the system beyond the C and C++ standard libraries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

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
  // Null when the file cannot be created, when something that cannot be
  // replaced stands in its place, or when another process is writing it.
  static std::unique_ptr<ReplacementFile> create(const char* path);

  // Without commit() nothing remains.
  virtual ~ReplacementFile() = default;

  // Buffered. False when not all bytes could be stored.
  virtual bool write(const void* bytes, size_t count) = 0;
  // False when the bytes could not be stored; nothing remains then either.
  virtual bool commit() = 0;
};

// Looks the setting up where this system keeps settings and copies its value,
// terminator included, into buffer. False when it is not set or does not fit.
bool readSetting(const char* key, char* buffer, size_t size);

// The separator that is added where a path needs one.
char pathSeparator();

}  // namespace ksv::platform
