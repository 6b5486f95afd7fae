// Texts in memory as what conversions read and write.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "cli/system/streams.h"

namespace ksv_cli {

// The text stays the caller's.
class TextSource : public ByteSource {
 public:
  explicit TextSource(std::string_view text) : text_(text) {}

  size_t read(uint8_t* buffer, size_t size) override {
    const size_t count = text_.copy(reinterpret_cast<char*>(buffer), size);
    text_.remove_prefix(count);
    return count;
  }

 private:
  std::string_view text_;
};

class TextSink : public ByteSink {
 public:
  void write(const uint8_t* bytes, size_t size) override {
    text.append(reinterpret_cast<const char*>(bytes), size);
  }

  std::string text;
};

}  // namespace ksv_cli
