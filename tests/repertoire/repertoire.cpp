#include "tests/repertoire/repertoire.h"

#include <array>
#include <charconv>
#include <fstream>
#include <stdexcept>

namespace repertoire {

namespace {

constexpr const char* kUcs4 = "ISO-10646-UCS-4";

std::string hexadecimal(uint32_t value, size_t digits) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string spelled;
  for (size_t place = 8; place-- > 0;) {
    const uint32_t digit = value >> (4 * place) & 0xF;
    if (digit != 0 || !spelled.empty() || place < digits) {
      spelled += kDigits[digit];
    }
  }
  return spelled;
}

uint32_t parseHexadecimal(std::string_view digits) {
  uint32_t value = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value, 16);
  if (error != std::errc() || stop != end) {
    throw std::runtime_error("not a hexadecimal number: " + std::string(digits));
  }
  return value;
}

iconv_t openIconv(const std::string& target, const std::string& source) {
  const iconv_t descriptor = iconv_open(target.c_str(), source.c_str());
  if (descriptor == reinterpret_cast<iconv_t>(-1)) {
    throw std::runtime_error("iconv does not convert " + source + " to " + target);
  }
  return descriptor;
}

// Converts a whole short text; nothing if any of it is refused.
std::optional<Bytes> runIconv(iconv_t descriptor, const Bytes& input) {
  constexpr size_t kFailed = static_cast<size_t>(-1);
  Bytes source = input;
  std::array<char, 64> buffer;
  char* in = source.data();
  size_t inLeft = source.size();
  char* out = buffer.data();
  size_t outLeft = buffer.size();
  iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
  if (iconv(descriptor, &in, &inLeft, &out, &outLeft) == kFailed || inLeft != 0 ||
      iconv(descriptor, nullptr, nullptr, &out, &outLeft) == kFailed) {
    return std::nullopt;
  }
  return Bytes(buffer.data(), out);
}

}  // namespace

std::string spell(const Bytes& sequence) {
  std::string spelled;
  for (const char byte : sequence) {
    spelled += hexadecimal(static_cast<uint8_t>(byte), 2);
  }
  return spelled.empty() ? "-" : spelled;
}

std::string spell(const Text& text) {
  std::string spelled;
  for (const char32_t character : text) {
    spelled += '+' + hexadecimal(character, 4);
  }
  return spelled.empty() ? "-" : 'U' + spelled;
}

Bytes parseBytes(std::string_view digits) {
  Bytes sequence;
  for (size_t place = 0; place < digits.size(); place += 2) {
    sequence += static_cast<char>(parseHexadecimal(digits.substr(place, 2)));
  }
  return sequence;
}

Text parseText(std::string_view spelled) {
  Text text;
  for (size_t plus = spelled.find('+'); plus != std::string_view::npos;) {
    const size_t next = spelled.find('+', plus + 1);
    text += parseHexadecimal(spelled.substr(plus + 1, next - plus - 1));
    plus = next;
  }
  return text;
}

Bytes toUcs4(std::u32string_view text) {
  Bytes bytes;
  bytes.reserve(4 * text.size());
  for (const char32_t character : text) {
    for (const int shift : {24, 16, 8, 0}) {
      bytes += static_cast<char>(character >> shift & 0xFF);
    }
  }
  return bytes;
}

Text fromUcs4(std::string_view bytes) {
  Text text;
  text.reserve(bytes.size() / 4);
  for (size_t place = 0; place + 4 <= bytes.size(); place += 4) {
    char32_t character = 0;
    for (const char byte : bytes.substr(place, 4)) {
      character = character << 8 | static_cast<uint8_t>(byte);
    }
    text += character;
  }
  return text;
}

LibraryCodec::LibraryCodec(const std::string& charset, ByteOrder order)
    : decoder_(charset, kUcs4, order), encoder_(kUcs4, charset, order) {}

std::optional<Text> LibraryCodec::decode(const Bytes& sequence) {
  const ConversionResult result = decoder_.convert(sequence);
  if (result.status != KSV_STATUS_DONE || result.charactersRead != 1 ||
      result.position != static_cast<int32_t>(sequence.size())) {
    return std::nullopt;
  }
  return fromUcs4(result.output);
}

std::optional<Bytes> LibraryCodec::encode(char32_t character) {
  ConversionResult result = encoder_.convert(toUcs4(Text(1, character)));
  if (result.status != KSV_STATUS_DONE) {
    return std::nullopt;
  }
  return std::move(result.output);
}

IconvCodec::IconvCodec(const std::string& charset)
    : decoder_(openIconv("UCS-4BE", charset)), encoder_(openIconv(charset, "UCS-4BE")) {}

IconvCodec::~IconvCodec() {
  iconv_close(decoder_);
  iconv_close(encoder_);
}

std::optional<Text> IconvCodec::decode(const Bytes& sequence) {
  const std::optional<Bytes> output = runIconv(decoder_, sequence);
  return output ? std::optional(fromUcs4(*output)) : std::nullopt;
}

std::optional<Bytes> IconvCodec::encode(char32_t character) {
  std::optional<Bytes> output = runIconv(encoder_, toUcs4(Text(1, character)));
  // Language tag characters are dropped without a word.
  return output && !output->empty() ? std::move(output) : std::nullopt;
}

Repertoire explore(Codec& codec) {
  Repertoire repertoire;
  const auto trySequence = [&](const Bytes& sequence) {
    const std::optional<Text> text = codec.decode(sequence);
    if (text) {
      repertoire.decoded.emplace(sequence, *text);
    }
    return text.has_value();
  };
  for (int first = 0; first < 0x100; ++first) {
    if (trySequence({static_cast<char>(first)})) {
      continue;
    }
    for (int second = 0; second < 0x100; ++second) {
      trySequence({static_cast<char>(first), static_cast<char>(second)});
    }
  }
  for (char32_t character = 0; character <= kLastCharacter; ++character) {
    if (isSurrogate(character)) {
      continue;
    }
    if (const std::optional<Bytes> sequence = codec.encode(character)) {
      repertoire.encoded.emplace_hint(repertoire.encoded.end(), character, *sequence);
    }
  }
  return repertoire;
}

Repertoire readRepertoire(const std::filesystem::path& path) {
  Repertoire repertoire;
  std::ifstream file(path);
  std::string direction;
  std::string from;
  std::string to;
  while (file >> direction >> from >> to) {
    if (direction == "decode") {
      repertoire.decoded.emplace(parseBytes(from), parseText(to));
    } else {
      repertoire.encoded.emplace(parseText(from).at(0), parseBytes(to));
    }
  }
  if (repertoire.decoded.empty()) {
    throw std::runtime_error("nothing read from " + path.string());
  }
  return repertoire;
}

}  // namespace repertoire
