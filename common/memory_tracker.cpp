#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <exception>
#include <map>
#include <new>
#include <string>

#include "common/heap.h"
#include "common/stream.h"
#include "ksv_memory.h"

namespace ksv {
namespace {

constexpr char kLogPath[] = "memdbg_log.txt";
constexpr char kGuard[] = "SAMPLE";
// The guard and its terminator take 7 bytes; the 8th is never touched.
constexpr size_t kGuardRoom = 8;

struct Allocation {
  int32_t size;
  uint32_t serial;  // for the debugger: the how-manieth block this was
  std::string label;
  int32_t number;
};

// Keyed by address.
using Tracker = std::map<uint64_t, Allocation>;

Tracker* tracker = nullptr;
uint32_t nextSerial = 0;

uint64_t addressOf(const void* block) { return reinterpret_cast<uintptr_t>(block); }

unsigned lowBits(uint64_t address) { return static_cast<unsigned>(address & 0xFFFFFFFF); }

const char* textOf(const char* text) { return text == nullptr ? "" : text; }

// The file is opened for each line, so that a crash of the host loses none.
__attribute__((format(printf, 1, 2))) void logLine(const char* format, ...) {
  if (tracker == nullptr) return;
  const Stream log(std::fopen(kLogPath, "a"));
  if (log == nullptr) return;
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(log.get(), format, arguments);
  va_end(arguments);
  std::fputc('\n', log.get());
}

void writeGuard(void* block, int32_t size) {
  std::memcpy(static_cast<char*>(block) + size, kGuard, sizeof kGuard);
}

bool guardIsWhole(const void* block, int32_t size) {
  return std::memcmp(static_cast<const char*>(block) + size, kGuard, sizeof kGuard) == 0;
}

// A block whose entry finds no memory goes untracked: better a hole in the log
// than a host brought down by its diagnosis.
void record(const void* block, int32_t size, const char* label, int32_t number) {
  if (tracker == nullptr) return;
  try {
    tracker->insert_or_assign(addressOf(block),
                              Allocation{size, nextSerial, textOf(label), number});
    ++nextSerial;
  } catch (const std::exception&) {
    tracker->erase(addressOf(block));
  }
}

void* allocateGuarded(void* old, int32_t size) {
  if (size < 0) return nullptr;
  void* block = heap::resize(old, static_cast<size_t>(size) + kGuardRoom);
  if (block != nullptr) writeGuard(block, size);
  return block;
}

// A product that does not fit 32 bits wraps: callers have always got, and the log
// has always shown, the wrapped size.
int32_t wrappedProduct(int32_t count, int32_t size) {
  return static_cast<int32_t>(static_cast<uint32_t>(count) * static_cast<uint32_t>(size));
}

}  // namespace
}  // namespace ksv

using ksv::tracker;

void* KSV_malloc_dbg(int32_t size, const char* label, int32_t number) {
  void* block = ksv::allocateGuarded(nullptr, size);
  if (block == nullptr) {
    ksv::logLine("malloc NULL");
    return nullptr;
  }
  ksv::record(block, size, label, number);
  return block;
}

void* KSV_calloc_dbg(int32_t count, int32_t size, const char* label, int32_t number) {
  const int32_t total = ksv::wrappedProduct(count, size);
  void* block = ksv::allocateGuarded(nullptr, total);
  if (block == nullptr) {
    ksv::logLine("calloc NULL %d %d", count, size);
    return nullptr;
  }
  std::memset(block, 0, static_cast<size_t>(total));
  ksv::record(block, total, label, number);
  return block;
}

void KSV_free_dbg(void* block) {
  if (tracker != nullptr && block != nullptr) {
    const auto entry = tracker->find(ksv::addressOf(block));
    if (entry == tracker->end()) {
      ksv::logLine("unallocated free %x", ksv::lowBits(ksv::addressOf(block)));
    } else {
      if (!ksv::guardIsWhole(block, entry->second.size)) ksv::logLine("overrun");
      tracker->erase(entry);
    }
  }
  ksv::heap::release(block);
}

// The old guard is not looked at, and the entry is gone even when the system then
// refuses: overruns are KSV_free_dbg's to find, and a block whose caller has been
// told that resizing it failed no longer counts as one of the caller's.
void* KSV_realloc_dbg(void* block, int32_t size, const char* label, int32_t number) {
  if (tracker != nullptr && block != nullptr && tracker->erase(ksv::addressOf(block)) == 0) {
    ksv::logLine("unallocated realloc %x", ksv::lowBits(ksv::addressOf(block)));
  }
  void* moved = ksv::allocateGuarded(block, size);
  if (moved == nullptr) {
    ksv::logLine("realloc NULL");
    return nullptr;
  }
  ksv::record(moved, size, label, number);
  return moved;
}

void KSV_start_mem_dbg(const char* title) {
  if (tracker != nullptr) return;
  tracker = new (std::nothrow) ksv::Tracker;
  ksv::logLine("%s", ksv::textOf(title));
}

void KSV_end_mem_dbg(void) {
  if (tracker == nullptr) return;
  for (const auto& [address, allocation] : *tracker) {
    ksv::logLine("leak %d %s %d", allocation.size, allocation.label.c_str(), allocation.number);
  }
  delete tracker;
  tracker = nullptr;
}
