// Bound to POSIX systems, whose C library has iconv.
#include <iconv.h>

#include <array>
#include <stdexcept>

#include "tests/repertoire/iconv_reference.h"

namespace repertoire {
namespace {

constexpr const char* kUcs4 = "UCS-4BE";
constexpr size_t kFailed = static_cast<size_t>(-1);

class Descriptor {
 public:
  Descriptor(const std::string& target, const std::string& source)
      : descriptor_(iconv_open(target.c_str(), source.c_str())) {
    if (descriptor_ == reinterpret_cast<iconv_t>(-1)) {
      throw std::runtime_error("iconv does not convert " + source + " to " + target);
    }
  }
  ~Descriptor() { iconv_close(descriptor_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  // Converts a whole text into a buffer; nothing if any of it is refused.
  template <class Buffer>
  std::optional<Bytes> convert(Bytes input, Buffer buffer) {
    char* in = input.data();
    size_t inLeft = input.size();
    char* out = buffer.data();
    size_t outLeft = buffer.size();
    iconv(descriptor_, nullptr, nullptr, nullptr, nullptr);
    if (iconv(descriptor_, &in, &inLeft, &out, &outLeft) == kFailed || inLeft != 0 ||
        iconv(descriptor_, nullptr, nullptr, &out, &outLeft) == kFailed) {
      return std::nullopt;
    }
    return Bytes(buffer.data(), out);
  }

 private:
  iconv_t descriptor_;
};

using ShortText = std::array<char, 64>;

class IconvCodec : public Codec {
 public:
  explicit IconvCodec(const std::string& charset)
      : decoder_(kUcs4, charset), encoder_(charset, kUcs4) {}

  std::optional<Text> decode(const Bytes& sequence) override {
    const std::optional<Bytes> output = decoder_.convert(sequence, ShortText());
    return output ? std::optional(fromUcs4(*output)) : std::nullopt;
  }

  std::optional<Bytes> encode(char32_t character) override {
    std::optional<Bytes> output = encoder_.convert(toUcs4(Text(1, character)), ShortText());
    // Language tag characters are dropped without a word.
    return output && !output->empty() ? std::move(output) : std::nullopt;
  }

 private:
  Descriptor decoder_;
  Descriptor encoder_;
};

}  // namespace

std::unique_ptr<Codec> iconvCodec(const std::string& charset) {
  return std::make_unique<IconvCodec>(charset);
}

Bytes iconvText(const std::string& charset, const Text& text) {
  const Bytes input = toUcs4(text);
  std::optional<Bytes> output =
      Descriptor(charset, kUcs4).convert(input, Bytes(input.size(), '\0'));
  if (!output) {
    throw std::runtime_error("iconv does not convert all of the text to " + charset);
  }
  return std::move(*output);
}

}  // namespace repertoire
