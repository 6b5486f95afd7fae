#include <cstddef>
#include <cstdlib>

#include "ksv_memory.h"

void* KSV_malloc(int32_t size) {
  return size < 0 ? nullptr : std::malloc(static_cast<size_t>(size));
}

void KSV_free(void* block) { std::free(block); }

void* KSV_realloc(void* block, int32_t size) {
  return size < 0 ? nullptr : std::realloc(block, static_cast<size_t>(size));
}

void* KSV_calloc(int32_t count, int32_t size) {
  if (size < 0 || (count < 0 && size > 0)) return nullptr;
  return std::calloc(count < 0 ? 0 : static_cast<size_t>(count), static_cast<size_t>(size));
}

void KSV_memend(void*) {}
