// What windows and rows of them need of the instructions of x86-64.
#pragma once

#include "cconv/bulk/vectors/window.h"

namespace ksv::vector_runs::by_windows {
namespace {

KSV_IN_LOOP Window windowAt(const void* bytes) {
  return as<Window>(_mm_loadu_si128(static_cast<const __m128i*>(bytes)));
}

KSV_IN_LOOP void storeWindow(uint8_t* output, Window bytes) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(output), as<__m128i>(bytes));
}

KSV_IN_LOOP Window halfWindowAt(const uint8_t* bytes) {
  return as<Window>(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes)));
}

KSV_IN_LOOP void storeHalf(uint8_t* output, Window bytes) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(output), as<__m128i>(bytes));
}

KSV_IN_LOOP Window shuffledWindow(Window bytes, Window places) {
  return as<Window>(_mm_shuffle_epi8(as<__m128i>(bytes), as<__m128i>(places)));
}

KSV_IN_LOOP Window zippedLow(Window first, Window second) {
  return as<Window>(_mm_unpacklo_epi8(as<__m128i>(first), as<__m128i>(second)));
}

KSV_IN_LOOP Window zippedHigh(Window first, Window second) {
  return as<Window>(_mm_unpackhi_epi8(as<__m128i>(first), as<__m128i>(second)));
}

KSV_IN_LOOP Window fourOf(uint32_t first, uint32_t second, uint32_t third, uint32_t fourth) {
  const __m128i low =
      _mm_insert_epi32(_mm_cvtsi32_si128(static_cast<int>(first)), static_cast<int>(second), 1);
  const __m128i high =
      _mm_insert_epi32(_mm_cvtsi32_si128(static_cast<int>(third)), static_cast<int>(fourth), 1);
  return as<Window>(_mm_unpacklo_epi64(low, high));
}

KSV_IN_LOOP uint32_t lengthsOfFour(Window entries) {
  const auto values = as<FourValues>(entries);
  const auto lower = static_cast<uint32_t>(_mm_movemask_ps(as<__m128>(values << 7)));
  const auto upper = static_cast<uint32_t>(_mm_movemask_ps(as<__m128>(values << 6)));
  return upper << 4 | lower;
}

KSV_IN_LOOP uint64_t signsOfBlock(const Bytes (&rows)[kRows]) {
  uint64_t all = 0;
  for (uint32_t i = 0; i < kRows; ++i) all |= uint64_t{signs(rows[i])} << i * kRow;
  return all;
}

// Keeps places below 16, and sets the upper bit of others.
Bytes placesBelow16(Bytes places);

KSV_IN_LOOP Bytes UpperHalf::of(Bytes bytes) const {
  Bytes found = noBytes();
  for (uint32_t i = 0; i < 8; ++i) {
    const auto& sixteen = *reinterpret_cast<const uint8_t(*)[kWindow]>(meanings_ + i * kWindow);
    const Bytes places = placesBelow16(bytes - static_cast<uint8_t>(0x80 + i * kWindow));
    found |= shuffled(repeated(sixteen), places);
  }
  return found;
}

}  // namespace
}  // namespace ksv::vector_runs::by_windows
