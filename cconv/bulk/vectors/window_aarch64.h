// What windows, and rows of one of them, need of the instructions of aarch64.
#pragma once

#include "cconv/bulk/vectors/window.h"

namespace ksv::vector_runs::by_windows {
namespace {

KSV_IN_LOOP uint8x16_t neon(Bytes bytes) { return as<uint8x16_t>(bytes); }

KSV_IN_LOOP Window windowAt(const void* bytes) {
  return as<Window>(vld1q_u8(static_cast<const uint8_t*>(bytes)));
}

KSV_IN_LOOP void storeWindow(uint8_t* output, Window bytes) { vst1q_u8(output, neon(bytes)); }

KSV_IN_LOOP Window halfWindowAt(const uint8_t* bytes) {
  return as<Window>(vcombine_u8(vld1_u8(bytes), vdup_n_u8(0)));
}

KSV_IN_LOOP void storeHalf(uint8_t* output, Window bytes) {
  vst1_u8(output, vget_low_u8(neon(bytes)));
}

KSV_IN_LOOP Bytes rowAt(const uint8_t* bytes) { return windowAt(bytes); }

KSV_IN_LOOP void storeRow(uint8_t* output, Bytes bytes) { storeWindow(output, bytes); }

KSV_IN_LOOP Bytes repeated(const uint8_t (&bytes)[kWindow]) { return windowAt(bytes); }

KSV_IN_LOOP Window shuffledWindow(Window bytes, Window places) {
  return as<Window>(vqtbl1q_u8(neon(bytes), neon(places)));
}

KSV_IN_LOOP Bytes shuffled(Bytes bytes, Bytes places) { return shuffledWindow(bytes, places); }

KSV_IN_LOOP uint8x16_t spreadSigns(Bytes bytes) {
  return vreinterpretq_u8_s8(vshrq_n_s8(vreinterpretq_s8_u8(neon(bytes)), 7));
}

// Of each eight bytes another bit each.
KSV_IN_LOOP uint8x16_t weightedSigns(Bytes bytes) {
  static constexpr uint8_t kWeights[kWindow] = {1, 2, 4, 8, 16, 32, 64, 128,
                                                1, 2, 4, 8, 16, 32, 64, 128};
  return vandq_u8(spreadSigns(bytes), vld1q_u8(kWeights));
}

KSV_IN_LOOP uint32_t signs(Bytes bytes) {
  const uint8x16_t weighted = weightedSigns(bytes);
  const uint8x8_t pairs = vpadd_u8(vget_low_u8(weighted), vget_high_u8(weighted));
  const uint8x8_t fours = vpadd_u8(pairs, pairs);
  return vget_lane_u16(vreinterpret_u16_u8(vpadd_u8(fours, fours)), 0);
}

KSV_IN_LOOP uint64_t signsOfBlock(const Bytes (&rows)[kRows]) {
  const uint8x16_t first = vpaddq_u8(weightedSigns(rows[0]), weightedSigns(rows[1]));
  const uint8x16_t second = vpaddq_u8(weightedSigns(rows[2]), weightedSigns(rows[3]));
  const uint8x16_t fours = vpaddq_u8(first, second);
  return vgetq_lane_u64(vreinterpretq_u64_u8(vpaddq_u8(fours, fours)), 0);
}

KSV_IN_LOOP Bytes chosen(Bytes signs, Bytes where, Bytes otherwise) {
  return as<Bytes>(vbslq_u8(spreadSigns(signs), neon(where), neon(otherwise)));
}

KSV_IN_LOOP Units widened(const uint8_t* bytes) { return as<Units>(vmovl_u8(vld1_u8(bytes))); }

template <uint32_t kWhich>
KSV_IN_LOOP Window windowOf(Bytes row) {
  static_assert(kWhich == 0);
  return row;
}

KSV_IN_LOOP Bytes lowerBytes(Units first, Units second) {
  return as<Bytes>(vuzp1q_u8(neon(bytesOf(first)), neon(bytesOf(second))));
}

KSV_IN_LOOP Window zippedLow(Window first, Window second) {
  return as<Window>(vzip1q_u8(neon(first), neon(second)));
}

KSV_IN_LOOP Window zippedHigh(Window first, Window second) {
  return as<Window>(vzip2q_u8(neon(first), neon(second)));
}

KSV_IN_LOOP Window fourOf(uint32_t first, uint32_t second, uint32_t third, uint32_t fourth) {
  return as<Window>(FourValues{first, second, third, fourth});
}

KSV_IN_LOOP uint32_t lengthsOfFour(Window entries) {
  constexpr FourValues kLower = {0, 1, 2, 3};
  constexpr FourValues kUpper = {4, 5, 6, 7};
  const auto lengths = as<FourValues>(entries) >> 24;
  const FourValues placed = (lengths & 1) << kLower | (lengths >> 1 & 1) << kUpper;
  return vaddvq_u32(as<uint32x4_t>(placed));
}

KSV_IN_LOOP Bytes UpperHalf::of(Bytes bytes) const {
  const uint8x16_t places = neon(bytes ^ 0x80);
  const uint8x16_t found = vqtbl4q_u8(vld1q_u8_x4(meanings_), places);
  return as<Bytes>(
      vqtbx4q_u8(found, vld1q_u8_x4(meanings_ + 64), vsubq_u8(places, vdupq_n_u8(64))));
}

}  // namespace
}  // namespace ksv::vector_runs::by_windows
