// Where the bytes of a conversion come from and go to.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ksv_cli {

class ByteSource {
 public:
  virtual ~ByteSource() = default;
  // Reads at least one byte and at most size; 0 means the end. Throws Failure.
  virtual size_t read(uint8_t* buffer, size_t size) = 0;
};

class ByteSink {
 public:
  virtual ~ByteSink() = default;
  // Writes all bytes. Throws Failure.
  virtual void write(const uint8_t* bytes, size_t size) = 0;
};

}  // namespace ksv_cli
