// A converter for tests: a record, its buffers, and the library around them.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ksv_cconv.h"

namespace ksv_test {

using Bytes = std::string;

// "82 A0" for the bytes, so that failures show them.
std::string hex(const Bytes& bytes);
// The bytes of "82 A0".
Bytes bytes(const std::string& hexText);

// What a conversion is set up with. Byte-oriented charsets are read and written
// most significant byte first unless a test says otherwise.
struct Conversion {
  std::string source;
  std::string target;
  ConvertOptions options = bigEndianOutput();
  std::array<uint32_t, 3> parameters = {1, 0, 0};  // big-endian, detect mark, skip invalid

  static ConvertOptions bigEndianOutput();
};

// The library with the charset directory of the build tree, for the life of a test.
class ShippedDirectory {
 public:
  ShippedDirectory();
  ~ShippedDirectory();
  ShippedDirectory(const ShippedDirectory&) = delete;
  ShippedDirectory& operator=(const ShippedDirectory&) = delete;
};

// Points the library at a directory; restores the setting when it goes.
class CharsetPath {
 public:
  explicit CharsetPath(const std::string& directory);
  ~CharsetPath();
  CharsetPath(const CharsetPath&) = delete;
  CharsetPath& operator=(const CharsetPath&) = delete;

 private:
  const std::optional<std::string> before_;
};

class Converter {
 public:
  explicit Converter(const Conversion& setup);

  // Replaces input and output; positions start at 0.
  void give(const Bytes& input, int32_t capacity);
  // Lets more of the input be seen.
  void showInput(int32_t length);
  // Keeps what was written and begins with an empty buffer of that size.
  void drain(int32_t capacity);

  uint32_t convert();
  uint32_t terminate();

  // All that has been written so far.
  Bytes written() const;

  ConverterRecord record = {};

 private:
  Bytes input_;
  std::vector<uint8_t> output_;
  Bytes drained_;
};

// The result of a whole conversion in one call, with ample room.
struct Result {
  uint32_t status;
  int32_t position;
  Bytes output;

  bool operator==(const Result&) const = default;
};
void PrintTo(const Result& result, std::ostream* out);

Result convertWhole(const Conversion& setup, const Bytes& input);

class ConversionTest : public testing::Test {
 protected:
  ShippedDirectory directory_;
};

}  // namespace ksv_test
