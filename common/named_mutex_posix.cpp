// A named lock: a robust mutex in a small file that the processes of one user
// map. The system itself marks the mutex when its holder dies, thread or process.
#include <fcntl.h>
#include <pthread.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "common/descriptor_posix.h"
#include "common/guard.h"
#include "common/platform.h"
#include "common/uninterrupted_posix.h"

namespace ksv::platform {
namespace {

// Fixed places, so that all processes of a user agree whatever their environment
// is. Nobody but the owner can replace a file in any of them.
constexpr const char* kDirectories[] = {"/dev/shm", "/run/user", "/tmp"};
constexpr char kPerUserDirectory[] = "/run/user";

constexpr uint64_t kMagic = 0x6B73765F6C6F636B;
constexpr uint32_t kLayoutVersion = 1;
constexpr size_t kLongestName = 64;
constexpr int kOpenAttempts = 16;

struct SharedLock {
  uint64_t magic;
  uint32_t layoutVersion;
  uint32_t mutexSize;
  pthread_mutex_t mutex;
};

struct Unmap {
  void operator()(SharedLock* lock) const { munmap(lock, sizeof *lock); }
};
using MappedLock = std::unique_ptr<SharedLock, Unmap>;

// A lock that this process has mapped. In the list, it stays mapped until the process ends: a
// thread that holds the mutex has it in the list that the kernel walks when the
// thread dies. A list without a lock of its own, so that a process forked at any
// instant can use it.
struct Mapping {
  char name[kLongestName + 1];
  MappedLock lock;
  Mapping* next;
  // The thread that holds the mutex, and how often. A thread may find itself named here only
  // when it is the one, so that it never asks for the release of what another holds; whoever
  // dies stays named until the next one takes the mutex.
  std::atomic<pthread_t> holder{};
  std::atomic<int> depth = 0;
};

std::atomic<Mapping*> mappings{nullptr};

Mapping* findMapping(const char* name) {
  for (Mapping* mapping = mappings.load(); mapping != nullptr; mapping = mapping->next) {
    if (std::strcmp(mapping->name, name) == 0) return mapping;
  }
  return nullptr;
}

MappedLock mapLock(int file) {
  void* memory = mmap(nullptr, sizeof(SharedLock), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  return MappedLock(memory == MAP_FAILED ? nullptr : static_cast<SharedLock*>(memory));
}

bool initialiseMutex(pthread_mutex_t& mutex) {
  pthread_mutexattr_t attributes;
  if (pthread_mutexattr_init(&attributes) != 0) return false;
  const bool made = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED) == 0 &&
                    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST) == 0 &&
                    pthread_mutex_init(&mutex, &attributes) == 0;
  pthread_mutexattr_destroy(&attributes);
  return made;
}

bool initialiseLockFile(int file) {
  // Written, not only extended, so that a full file system refuses here and not
  // with a signal at the first access.
  const SharedLock empty = {};
  if (!writeWhole(file, reinterpret_cast<const char*>(&empty), sizeof empty)) return false;
  const MappedLock lock = mapLock(file);
  if (lock == nullptr) return false;
  const bool made = initialiseMutex(lock->mutex);
  lock->layoutVersion = kLayoutVersion;
  lock->mutexSize = sizeof lock->mutex;
  lock->magic = kMagic;
  return made;
}

int makeUnique(std::string& temporary, const std::string& path) {
  temporary = path + ".XXXXXX";
  return mkostemp(temporary.data(), O_CLOEXEC);
}

// Makes the file under another name and links it into place, so that nobody ever
// sees one that is half made. True as well when another process was first.
bool createLockFile(const std::string& path) {
  std::string temporary;
  const Descriptor file(uninterrupted([&] { return makeUnique(temporary, path); }));
  if (!file) return false;
  const bool placed = initialiseLockFile(file.get()) &&
                      (link(temporary.c_str(), path.c_str()) == 0 || errno == EEXIST);
  unlink(temporary.c_str());
  return placed;
}

bool isOwnLockFile(int file) {
  struct stat status;
  return fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
         (status.st_mode & 077) == 0 && status.st_size == sizeof(SharedLock);
}

bool hasOwnLayout(const SharedLock& lock) {
  return lock.magic == kMagic && lock.layoutVersion == kLayoutVersion &&
         lock.mutexSize == sizeof lock.mutex;
}

MappedLock mapVerified(int file) {
  if (!isOwnLockFile(file)) return nullptr;
  MappedLock lock = mapLock(file);
  if (lock != nullptr && !hasOwnLayout(*lock)) return nullptr;
  return lock;
}

// Null when the place cannot be used, or holds something that is not our lock.
MappedLock openLockFile(const std::string& path) {
  for (int attempt = 0; attempt < kOpenAttempts; ++attempt) {
    constexpr int kFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    const Descriptor file(uninterrupted([&] { return open(path.c_str(), kFlags); }));
    if (file) return mapVerified(file.get());
    if (errno != ENOENT || !createLockFile(path)) return nullptr;
  }
  return nullptr;
}

MappedLock openLock(const char* name) {
  const std::string user = std::to_string(geteuid());
  for (const char* place : kDirectories) {
    std::string directory = place;
    if (directory == kPerUserDirectory) directory.append("/").append(user);
    MappedLock lock = openLockFile(directory + "/ksv_comm." + user + "." + name);
    if (lock != nullptr) return lock;
  }
  return nullptr;
}

// Enters a mapping into the list, unless another thread was first: one mutex is
// mapped once.
Mapping* enterMapping(std::unique_ptr<Mapping> mapping) {
  mapping->next = mappings.load();
  do {
    if (Mapping* earlier = findMapping(mapping->name)) return earlier;
  } while (!mappings.compare_exchange_weak(mapping->next, mapping.get()));
  return mapping.release();
}

Mapping* openMapping(const char* name) {
  if (Mapping* mapping = findMapping(name)) return mapping;
  auto mapping = std::make_unique<Mapping>();
  std::strcpy(mapping->name, name);
  mapping->lock = openLock(name);
  return mapping->lock == nullptr ? nullptr : enterMapping(std::move(mapping));
}

class PosixNamedMutex final : public NamedMutex {
 public:
  explicit PosixNamedMutex(Mapping& mapping) : mapping_(mapping) {}

  ~PosixNamedMutex() override {
    while (unlock()) {
    }
  }

  LockResult lock() override {
    const int error = pthread_mutex_lock(mutex());
    if (error != 0 && error != EOWNERDEAD) return LockResult::kFailed;
    const int levels = error == 0 && isHeldByThisThread() ? mapping_.depth.load() : 0;
    // In this order: the thread that was named before must not find itself named with a depth.
    mapping_.holder = pthread_self();
    mapping_.depth = levels + 1;
    if (error == 0) return LockResult::kAcquired;
    pthread_mutex_consistent(mutex());
    return LockResult::kAbandoned;
  }

  bool unlock() override {
    if (!isHeldByThisThread()) return false;
    // Before others can come, and for good where a fork has left the mutex to its parent.
    --mapping_.depth;
    return pthread_mutex_unlock(mutex()) == 0;
  }

 private:
  pthread_mutex_t* mutex() const { return &mapping_.lock->mutex; }

  bool isHeldByThisThread() const {
    return mapping_.depth > 0 && pthread_equal(mapping_.holder, pthread_self()) != 0;
  }

  Mapping& mapping_;
};

bool isUsableName(const char* name) {
  return name[0] != '\0' && std::strlen(name) <= kLongestName && std::strchr(name, '/') == nullptr;
}

}  // namespace

std::unique_ptr<NamedMutex> NamedMutex::open(const char* name) {
  return guarded(std::unique_ptr<NamedMutex>(), [&]() -> std::unique_ptr<NamedMutex> {
    Mapping* mapping = isUsableName(name) ? openMapping(name) : nullptr;
    if (mapping == nullptr) return nullptr;
    return std::make_unique<PosixNamedMutex>(*mapping);
  });
}

}  // namespace ksv::platform
