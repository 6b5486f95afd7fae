// The blocks that the library takes from the C library itself: those that it hands out, and
// large zeroed ones that the system gives page by page. Everything else is made by new.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdlib>

namespace ksv::heap {

struct Functions {
  void* (*allocate)(size_t size);
  void* (*allocateZeroed)(size_t count, size_t size);
  void* (*resize)(void* block, size_t size);
  void (*release)(void* block);
};

// For tests: where it is set, called in place of the C library. Null otherwise. Blocks go
// back to the functions that they came from, so it is set before there are any.
extern constinit std::atomic<const Functions*> functionsForTests;

inline const Functions* functionsOfTest() {
  return functionsForTests.load(std::memory_order_relaxed);
}

inline void* allocate(size_t size) {
  const Functions* test = functionsOfTest();
  return test != nullptr ? test->allocate(size) : std::malloc(size);
}
inline void* allocateZeroed(size_t count, size_t size) {
  const Functions* test = functionsOfTest();
  return test != nullptr ? test->allocateZeroed(count, size) : std::calloc(count, size);
}
inline void* resize(void* block, size_t size) {
  const Functions* test = functionsOfTest();
  return test != nullptr ? test->resize(block, size) : std::realloc(block, size);
}
inline void release(void* block) {
  const Functions* test = functionsOfTest();
  test != nullptr ? test->release(block) : std::free(block);
}

}  // namespace ksv::heap
