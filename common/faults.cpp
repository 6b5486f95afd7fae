#include "common/faults.h"

#include <atomic>
#include <cstddef>
#include <utility>

namespace ksv {
namespace {

constexpr size_t kLongestPath = 511;
constexpr uint64_t kKept = 64;

struct NotedFault {
  uint64_t number;  // from 1 on; 0: none
  FaultSubject subject;
  platform::SystemError error;
  char path[kLongestPath + 1];
};

constinit std::atomic<uint64_t> noted = 0;
// The latest, each at the place of its number.
constinit NotedFault faults[kKept] = {};
constinit std::atomic_flag inUse;

std::string subjectOf(const Fault& fault) {
  switch (fault.subject) {
    case FaultSubject::kCharsetDirectory:
      return "the charset directory " + fault.path + " cannot be read: ";
    case FaultSubject::kRuleFile:
      return "the rule file " + fault.path + " cannot be read: ";
    case FaultSubject::kCodeTable:
      return "the code table " + fault.path + " cannot be read: ";
    case FaultSubject::kMemory:
      break;
  }
  return "";
}

void copyText(std::string_view from, char* text, size_t size) noexcept {
  text[from.copy(text, size - 1)] = '\0';
}

void writeInWords(uint64_t count, char* text, size_t size) noexcept {
  try {
    copyText(faultInWords(faultBehind(count)), text, size);
  } catch (...) {
    copyText("there is no memory", text, size);
  }
}

constinit thread_local platform::SystemError unwrittenTable = 0;

// Keeps threads apart, for as long as copying a path takes. It is not waited for longer: in a
// forked process nobody may be left to give it back.
class Access {
 public:
  Access() {
    for (int spin = 0; spin < 1 << 16 && !isGranted_; ++spin)
      isGranted_ = !inUse.test_and_set(std::memory_order_acquire);
  }
  ~Access() {
    if (isGranted_) inUse.clear(std::memory_order_release);
  }
  Access(const Access&) = delete;
  Access& operator=(const Access&) = delete;
  explicit operator bool() const { return isGranted_; }

 private:
  bool isGranted_ = false;
};

}  // namespace

void noteFault(FaultSubject subject, std::string_view path, platform::SystemError error) noexcept {
  if (error == 0) return;
  const uint64_t number = noted.fetch_add(1, std::memory_order_acq_rel) + 1;
  const Access access;
  if (!access) return;
  NotedFault& fault = faults[number % kKept];
  fault.number = number;
  fault.subject = subject;
  fault.error = error;
  fault.path[path.copy(fault.path, kLongestPath)] = '\0';
}

void noteNoMemory(std::string_view path) noexcept {
  noteFault(FaultSubject::kMemory, path, platform::outOfMemory());
}

uint64_t faultCount() noexcept { return noted.load(std::memory_order_acquire); }

Fault faultBehind(uint64_t count) {
  const Access access;
  const uint64_t last = faultCount();
  for (uint64_t number = count + 1; access && number <= last; ++number) {
    if (last - number >= kKept) number = last - kKept + 1;
    const NotedFault& fault = faults[number % kKept];
    if (fault.number == number) return {fault.subject, fault.path, fault.error};
  }
  return {FaultSubject::kMemory, "", platform::outOfMemory()};
}

std::string faultInWords(const Fault& fault) {
  return subjectOf(fault) + platform::errorText(fault.error);
}

constinit const FaultAccess kFaultAccess = {faultCount, writeInWords};

void noteUnwrittenTable(platform::SystemError error) noexcept {
  if (unwrittenTable == 0) unwrittenTable = error;
}

platform::SystemError takeUnwrittenTable() noexcept { return std::exchange(unwrittenTable, 0); }

}  // namespace ksv
