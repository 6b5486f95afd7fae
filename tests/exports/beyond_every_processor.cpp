// What processor_levels.py has to find: an external function that not every processor can run.
#include <immintrin.h>

namespace ksv::test {

[[gnu::target("avx2")]] __m256i doubled(const __m256i* values) {
  return _mm256_add_epi32(*values, *values);
}

}  // namespace ksv::test
