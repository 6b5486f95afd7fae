#include "tests/faults/memory_faults.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

#include "common/heap.h"

namespace {

constinit std::atomic<int64_t> liveBlocks = 0;
constinit std::atomic<int64_t> liveBytes = 0;

enum class Watch { kNobody, kThread, kEverybody };
constinit std::atomic<Watch> watch = Watch::kNobody;
constinit thread_local bool isWatched = false;
constinit std::atomic<uint64_t> asked = 0;
constinit std::atomic<uint64_t> refused = 0;
constinit uint64_t firstRefused = 0;
constinit uint64_t lastRefused = 0;

bool mayHaveMemory() {
  const Watch watched = watch.load(std::memory_order_acquire);
  if (watched == Watch::kNobody || (watched == Watch::kThread && !isWatched)) return true;
  const uint64_t number = asked.fetch_add(1);
  if (number < firstRefused || number > lastRefused) return true;
  ++refused;
  return false;
}

// In front of each block, so that it can be counted off when it goes.
struct alignas(std::max_align_t) Head {
  void* start;  // of what the C library gave
  size_t size;  // that was asked for
};

Head* headOf(void* block) { return static_cast<Head*>(block) - 1; }

// Not inlined: the compiler would take malloc and free for a pair that does not belong to
// operator new and delete.
[[gnu::noinline]] void* allocate(size_t size, size_t alignment = alignof(Head)) {
  const size_t extra = sizeof(Head) + alignment;
  if (size > SIZE_MAX - extra || !mayHaveMemory()) return nullptr;
  void* const start = std::malloc(size + extra);
  if (start == nullptr) return nullptr;
  const auto behindHead = reinterpret_cast<uintptr_t>(start) + sizeof(Head);
  void* const block = reinterpret_cast<void*>((behindHead + alignment - 1) / alignment * alignment);
  *headOf(block) = {start, size};
  ++liveBlocks;
  liveBytes += static_cast<int64_t>(size);
  return block;
}

[[gnu::noinline]] void release(void* block) noexcept {
  if (block == nullptr) return;
  const Head head = *headOf(block);
  --liveBlocks;
  liveBytes -= static_cast<int64_t>(head.size);
  std::free(head.start);
}

void* allocateOrThrow(size_t size, size_t alignment = alignof(Head)) {
  if (void* block = allocate(size, alignment)) return block;
  throw std::bad_alloc();
}

void* allocatePlain(size_t size) { return allocate(size); }

void* allocateZeroed(size_t count, size_t size) {
  if (size != 0 && count > SIZE_MAX / size) return nullptr;
  void* const block = allocate(count * size);
  if (block != nullptr) std::memset(block, 0, count * size);
  return block;
}

void* resize(void* block, size_t size) {
  void* const moved = allocate(size);
  if (moved == nullptr || block == nullptr) return moved;
  const size_t before = headOf(block)->size;
  std::memcpy(moved, block, before < size ? before : size);
  release(block);
  return moved;
}

constexpr ksv::heap::Functions kFunctions = {allocatePlain, allocateZeroed, resize, release};

constexpr size_t valueOf(std::align_val_t alignment) {
  const auto value = static_cast<size_t>(alignment);
  return value < alignof(Head) ? alignof(Head) : value;
}

}  // namespace

void* operator new(size_t size) { return allocateOrThrow(size); }
void* operator new[](size_t size) { return allocateOrThrow(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new(size_t size, std::align_val_t alignment) {
  return allocateOrThrow(size, valueOf(alignment));
}
void* operator new[](size_t size, std::align_val_t alignment) {
  return allocateOrThrow(size, valueOf(alignment));
}
void* operator new(size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(size, valueOf(alignment));
}
void* operator new[](size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(size, valueOf(alignment));
}

void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, size_t) noexcept { release(block); }
void operator delete[](void* block, size_t) noexcept { release(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { release(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { release(block); }
void operator delete(void* block, std::align_val_t) noexcept { release(block); }
void operator delete[](void* block, std::align_val_t) noexcept { release(block); }
void operator delete(void* block, size_t, std::align_val_t) noexcept { release(block); }
void operator delete[](void* block, size_t, std::align_val_t) noexcept { release(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept {
  release(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
  release(block);
}

namespace ksv::test {

void watchBlocksOfLibrary() { heap::functionsForTests = &kFunctions; }

LiveMemory liveMemory() { return {liveBlocks, liveBytes}; }

FailingMemory::FailingMemory(uint64_t number, Refused which, Thread thread) {
  ::asked = 0;
  ::refused = 0;
  firstRefused = number;
  lastRefused = which == Refused::kOne ? number : kNoAllocation;
  isWatched = true;
  watch.store(thread == Thread::kAny ? Watch::kEverybody : Watch::kThread,
              std::memory_order_release);
}

void FailingMemory::stop() {
  watch.store(Watch::kNobody, std::memory_order_release);
  isWatched = false;
}

uint64_t FailingMemory::asked() { return ::asked; }
uint64_t FailingMemory::refused() { return ::refused; }

}  // namespace ksv::test
