// What the fuzz targets share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ksv_fuzz {

// Aborts with the message unless the condition holds.
void require(bool condition, const char* message);

// The bytes of an input, taken from the front; zeroes behind its end.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  uint8_t byte();
  uint16_t word();
  std::string_view rest() const { return {reinterpret_cast<const char*>(data_), size_}; }

 private:
  const uint8_t* data_;
  size_t size_;
};

// The first count strings of bytes, each ended by a zero; empty ones behind the end.
std::vector<std::string> stringsOf(std::string_view bytes, size_t count);

// How the bytes of an input become a file: as they are, or each byte widened to one
// unit, so that a mutation of one byte is a mutation of one character.
enum class Widening { kNone, kTwoLittle, kTwoBig, kFourLittle, kFourBig };
std::string widen(std::string_view text, Widening widening);

// The bytes of a rule file, or of a table that it declares: UTF-16 with a mark.
std::string ruleFile(std::string_view text);

// The text repeated until it has at least so many bytes.
std::string repeated(std::string_view text, size_t leastSize);

}  // namespace ksv_fuzz
