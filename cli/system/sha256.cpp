#include "cli/system/sha256.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>

namespace ksv_cli {
namespace {

// The first 32 bits behind the point of the cube roots of the first 64 primes.
constexpr uint32_t kRoots[64] = {
    0x428A2F98, 0x71374491, 0xB5C0FBCF, 0xE9B5DBA5, 0x3956C25B, 0x59F111F1, 0x923F82A4, 0xAB1C5ED5,
    0xD807AA98, 0x12835B01, 0x243185BE, 0x550C7DC3, 0x72BE5D74, 0x80DEB1FE, 0x9BDC06A7, 0xC19BF174,
    0xE49B69C1, 0xEFBE4786, 0x0FC19DC6, 0x240CA1CC, 0x2DE92C6F, 0x4A7484AA, 0x5CB0A9DC, 0x76F988DA,
    0x983E5152, 0xA831C66D, 0xB00327C8, 0xBF597FC7, 0xC6E00BF3, 0xD5A79147, 0x06CA6351, 0x14292967,
    0x27B70A85, 0x2E1B2138, 0x4D2C6DFC, 0x53380D13, 0x650A7354, 0x766A0ABB, 0x81C2C92E, 0x92722C85,
    0xA2BFE8A1, 0xA81A664B, 0xC24B8B70, 0xC76C51A3, 0xD192E819, 0xD6990624, 0xF40E3585, 0x106AA070,
    0x19A4C116, 0x1E376C08, 0x2748774C, 0x34B0BCB5, 0x391C0CB3, 0x4ED8AA4A, 0x5B9CCA4F, 0x682E6FF3,
    0x748F82EE, 0x78A5636F, 0x84C87814, 0x8CC70208, 0x90BEFFFA, 0xA4506CEB, 0xBEF9A3F7, 0xC67178F2};

uint32_t bigEndian(const uint8_t* bytes) {
  return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

void spread(const uint8_t* block, uint32_t (&schedule)[64]) {
  for (size_t i = 0; i < 16; ++i) schedule[i] = bigEndian(block + 4 * i);
  for (size_t i = 16; i < 64; ++i) {
    const uint32_t near = schedule[i - 2];
    const uint32_t far = schedule[i - 15];
    schedule[i] = (std::rotr(near, 17) ^ std::rotr(near, 19) ^ near >> 10) + schedule[i - 7] +
                  (std::rotr(far, 7) ^ std::rotr(far, 18) ^ far >> 3) + schedule[i - 16];
  }
}

// The eight variables of the standard go round by one place a step.
void mix(std::array<uint32_t, 8>& state, const uint8_t* block) {
  uint32_t schedule[64];
  spread(block, schedule);
  auto [a, b, c, d, e, f, g, h] = state;
  for (size_t i = 0; i < 64; ++i) {
    const uint32_t chosen = (e & f) ^ (~e & g);
    const uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) + chosen +
                           kRoots[i] + schedule[i];
    const uint32_t majority = (a & b) ^ (a & c) ^ (b & c);
    const uint32_t second = (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + majority;
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + second;
  }
  const uint32_t mixed[8] = {a, b, c, d, e, f, g, h};
  for (size_t i = 0; i < 8; ++i) state[i] += mixed[i];
}

}  // namespace

void Sha256::fill(const uint8_t* bytes, size_t size) {
  std::memcpy(block_.data() + size_ % kBlock, bytes, size);
  size_ += size;
  if (size_ % kBlock == 0) mix(state_, block_.data());
}

void Sha256::update(const uint8_t* bytes, size_t size) {
  if (const size_t held = size_ % kBlock; held != 0 && size != 0) {
    const size_t first = std::min(size, kBlock - held);
    fill(bytes, first);
    bytes += first;
    size -= first;
  }
  for (; size >= kBlock; bytes += kBlock, size -= kBlock, size_ += kBlock) mix(state_, bytes);
  if (size != 0) fill(bytes, size);
}

std::string Sha256::finish() {
  const uint64_t bits = size_ * 8;
  const uint8_t end = 0x80;
  const uint8_t zero = 0;
  fill(&end, 1);
  while (size_ % kBlock != kBlock - sizeof bits) fill(&zero, 1);
  uint8_t length[sizeof bits];
  for (size_t i = 0; i < sizeof bits; ++i) length[i] = static_cast<uint8_t>(bits >> (56 - 8 * i));
  fill(length, sizeof length);
  static constexpr char kHexDigits[] = "0123456789abcdef";
  std::string sum;
  for (const uint32_t word : state_)
    for (int shift = 28; shift >= 0; shift -= 4) sum += kHexDigits[word >> shift & 0xF];
  return sum;
}

std::string sumOf(ByteSource& source) {
  constexpr size_t kPiece = 64 * 1024;
  const auto piece = std::make_unique_for_overwrite<uint8_t[]>(kPiece);
  Sha256 sum;
  while (const size_t count = source.read(piece.get(), kPiece)) sum.update(piece.get(), count);
  return sum.finish();
}

std::string sumOf(const std::string& text) {
  Sha256 sum;
  sum.update(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  return sum.finish();
}

}  // namespace ksv_cli
