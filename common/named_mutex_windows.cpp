// A named lock: the system's own mutex, which is recursive and knows when its
// holder, thread or process, has died.
#include <windows.h>

#include <memory>
#include <utility>

#include "common/guard.h"
#include "common/handle_windows.h"
#include "common/platform.h"

namespace ksv::platform {
namespace {

class WindowsNamedMutex final : public NamedMutex {
 public:
  explicit WindowsNamedMutex(Handle mutex) : mutex_(std::move(mutex)) {}

  ~WindowsNamedMutex() override {
    while (unlock()) {
    }
  }

  LockResult lock() override {
    switch (WaitForSingleObject(mutex_.get(), INFINITE)) {
      case WAIT_OBJECT_0:
        return LockResult::kAcquired;
      case WAIT_ABANDONED:
        return LockResult::kAbandoned;
      default:
        return LockResult::kFailed;
    }
  }

  bool unlock() override { return ReleaseMutex(mutex_.get()) != 0; }

 private:
  const Handle mutex_;
};

}  // namespace

// A mutex without a name would be one that nobody shares.
std::unique_ptr<NamedMutex> NamedMutex::open(const char* name) {
  return guarded(std::unique_ptr<NamedMutex>(), [&]() -> std::unique_ptr<NamedMutex> {
    if (name[0] == '\0') return nullptr;
    Handle mutex(CreateMutexA(nullptr, FALSE, name));
    if (!mutex) return nullptr;
    return std::make_unique<WindowsNamedMutex>(std::move(mutex));
  });
}

}  // namespace ksv::platform
