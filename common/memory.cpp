#include <cstddef>

#include "common/heap.h"
#include "ksv_memory.h"

namespace heap = ksv::heap;

constinit std::atomic<const heap::Functions*> heap::functionsForTests = nullptr;

void* KSV_malloc(int32_t size) {
  return size < 0 ? nullptr : heap::allocate(static_cast<size_t>(size));
}

void KSV_free(void* block) { heap::release(block); }

void* KSV_realloc(void* block, int32_t size) {
  return size < 0 ? nullptr : heap::resize(block, static_cast<size_t>(size));
}

void* KSV_calloc(int32_t count, int32_t size) {
  if (size < 0 || (count < 0 && size > 0)) return nullptr;
  return heap::allocateZeroed(count < 0 ? 0 : static_cast<size_t>(count),
                              static_cast<size_t>(size));
}

void KSV_memend(void*) {}
