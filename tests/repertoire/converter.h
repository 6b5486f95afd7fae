// Conversions through the public interface, for the tests of what the charset
// directory holds.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "ksv_cconv.h"

namespace repertoire {

using Bytes = std::string;

// The charset directory of the build.
std::filesystem::path charsetDirectory();

// The library with the rule files of one directory, for as long as it lives.
class RuleBase {
 public:
  explicit RuleBase(const std::filesystem::path& directory = charsetDirectory());
  ~RuleBase();
  RuleBase(const RuleBase&) = delete;
  RuleBase& operator=(const RuleBase&) = delete;

  // The names of all charsets, as the library enumerates them.
  std::vector<std::string> charsetNames() const;
};

enum class ByteOrder { kBig, kLittle };

struct ConversionResult {
  uint32_t status;         // KSV_STATUS_...
  int32_t position;        // bytes of the input that were used up
  int32_t charactersRead;  // characters decoded
  uint32_t decodedGroup;   // the subset of the last character
  Bytes output;
};

// A converter between two charsets, each text on its own. Nothing is replaced or
// skipped; both sides have the same byte order.
class Converter {
 public:
  Converter(const std::string& source, const std::string& target, ByteOrder order);

  ConversionResult convert(std::string_view input);

 private:
  ConverterRecord record_;
  std::vector<uint8_t> buffer_;
};

}  // namespace repertoire
