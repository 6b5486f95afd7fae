// What a processor of x86-64 can do, asked of itself where it matters. What compilers offer for it
// comes with an initialiser that runs wherever the library is loaded; and each question costs some
// microseconds on a virtual machine, where the host answers it.
#pragma once

#include <cpuid.h>

#include <cstdint>

namespace ksv::x86_64 {

// What a leaf of the CPUID instruction says; zeros where there is no such leaf.
struct Leaf {
  uint32_t a = 0;
  uint32_t b = 0;
  uint32_t c = 0;
  uint32_t d = 0;

  explicit Leaf(uint32_t number) { __get_cpuid_count(number, 0, &a, &b, &c, &d); }
};

constexpr bool hasAll(uint32_t features, uint32_t wanted) { return (features & wanted) == wanted; }

// Registers of 32 and of 64 bytes, as bits of what the system keeps for each thread.
constexpr uint32_t kYmm = 0x06;
constexpr uint32_t kZmm = 0xE6;

// The registers that the system keeps for each thread. `basic` is the first leaf.
inline uint32_t keptRegisters(const Leaf& basic) {
  if (!hasAll(basic.c, bit_OSXSAVE)) return 0;
  uint32_t low = 0;
  uint32_t high = 0;
  asm("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

// `extended` is the seventh leaf.
inline bool hasAvx2(const Leaf& basic, const Leaf& extended) {
  return hasAll(keptRegisters(basic), kYmm) && hasAll(basic.c, bit_AVX) &&
         hasAll(extended.b, bit_AVX2);
}

}  // namespace ksv::x86_64
