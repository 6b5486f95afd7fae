// SHA-256 (FIPS 180-4), by which texts are told apart.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "cli/system/streams.h"

namespace ksv_cli {

class Sha256 {
 public:
  void update(const uint8_t* bytes, size_t size);

  // In hexadecimal, as sha256sum writes it. To be called once, at the end.
  std::string finish();

  static constexpr size_t kDigits = 64;

 private:
  static constexpr size_t kBlock = 64;

  void fill(const uint8_t* bytes, size_t size);

  std::array<uint32_t, 8> state_ = {0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A,
                                    0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19};
  std::array<uint8_t, kBlock> block_{};
  uint64_t size_ = 0;
};

// Of all that the source still has. Throws Failure.
std::string sumOf(ByteSource& source);
std::string sumOf(const std::string& text);

}  // namespace ksv_cli
