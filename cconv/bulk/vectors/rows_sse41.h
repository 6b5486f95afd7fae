// Rows of one window, with SSE4.1.
#pragma once

#include "cconv/bulk/vectors/window_x86_64.h"

namespace ksv::vector_runs::by_windows {
namespace {

KSV_IN_LOOP Bytes rowAt(const uint8_t* bytes) {
  return as<Bytes>(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)));
}

KSV_IN_LOOP void storeRow(uint8_t* output, Bytes bytes) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(output), as<__m128i>(bytes));
}

KSV_IN_LOOP Bytes repeated(const uint8_t (&bytes)[kWindow]) { return rowAt(bytes); }

KSV_IN_LOOP Bytes shuffled(Bytes bytes, Bytes places) {
  return as<Bytes>(_mm_shuffle_epi8(as<__m128i>(bytes), as<__m128i>(places)));
}

KSV_IN_LOOP uint32_t signs(Bytes bytes) {
  return static_cast<uint32_t>(_mm_movemask_epi8(as<__m128i>(bytes)));
}

KSV_IN_LOOP Bytes chosen(Bytes signs, Bytes where, Bytes otherwise) {
  return as<Bytes>(_mm_blendv_epi8(as<__m128i>(otherwise), as<__m128i>(where), as<__m128i>(signs)));
}

KSV_IN_LOOP Units widened(const uint8_t* bytes) {
  return as<Units>(_mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes))));
}

template <uint32_t kWhich>
KSV_IN_LOOP Window windowOf(Bytes row) {
  static_assert(kWhich == 0);
  return row;
}

KSV_IN_LOOP Bytes lowerBytes(Units first, Units second) {
  return as<Bytes>(_mm_packus_epi16(as<__m128i>(first & 0xFF), as<__m128i>(second & 0xFF)));
}

KSV_IN_LOOP Bytes placesBelow16(Bytes places) {
  return as<Bytes>(_mm_adds_epu8(as<__m128i>(places), _mm_set1_epi8(0x70)));
}

}  // namespace
}  // namespace ksv::vector_runs::by_windows
