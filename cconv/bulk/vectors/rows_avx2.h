// Rows of two windows, with AVX2.
#pragma once

#include "cconv/bulk/vectors/window_x86_64.h"

namespace ksv::vector_runs::by_windows {
namespace {

KSV_IN_LOOP Bytes rowAt(const uint8_t* bytes) {
  return as<Bytes>(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes)));
}

KSV_IN_LOOP void storeRow(uint8_t* output, Bytes bytes) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(output), as<__m256i>(bytes));
}

KSV_IN_LOOP Bytes repeated(const uint8_t (&bytes)[kWindow]) {
  return as<Bytes>(
      _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))));
}

KSV_IN_LOOP Bytes shuffled(Bytes bytes, Bytes places) {
  return as<Bytes>(_mm256_shuffle_epi8(as<__m256i>(bytes), as<__m256i>(places)));
}

KSV_IN_LOOP uint32_t signs(Bytes bytes) {
  return static_cast<uint32_t>(_mm256_movemask_epi8(as<__m256i>(bytes)));
}

KSV_IN_LOOP Bytes chosen(Bytes signs, Bytes where, Bytes otherwise) {
  return as<Bytes>(
      _mm256_blendv_epi8(as<__m256i>(otherwise), as<__m256i>(where), as<__m256i>(signs)));
}

KSV_IN_LOOP Units widened(const uint8_t* bytes) {
  return as<Units>(_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))));
}

template <uint32_t kWhich>
KSV_IN_LOOP Window windowOf(Bytes row) {
  return as<Window>(_mm256_extracti128_si256(as<__m256i>(row), kWhich));
}

KSV_IN_LOOP Bytes lowerBytes(Units first, Units second) {
  return as<Bytes>(_mm256_packus_epi16(as<__m256i>(first & 0xFF), as<__m256i>(second & 0xFF)));
}

KSV_IN_LOOP Bytes placesBelow16(Bytes places) {
  return as<Bytes>(_mm256_adds_epu8(as<__m256i>(places), _mm256_set1_epi8(0x70)));
}

}  // namespace
}  // namespace ksv::vector_runs::by_windows
