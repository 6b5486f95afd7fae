#include "tests/repertoire/repertoire.h"

#include <charconv>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <vector>

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

std::vector<Bytes> byteRange(int first, int last) {
  std::vector<Bytes> bytes;
  for (int byte = first; byte <= last; ++byte) bytes.push_back(Bytes(1, static_cast<char>(byte)));
  return bytes;
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

namespace {

const std::vector<Bytes>& allBytes() {
  static const std::vector<Bytes> kBytes = byteRange(0, 0xFF);
  return kBytes;
}

// What stands behind the sequences of one and two bytes that are tried of every shape.
std::vector<std::vector<Bytes>> longerSequences(Shape shape) {
  const std::vector<Bytes> high = byteRange(0x81, 0xFE);
  const std::vector<Bytes> digits = byteRange(0x30, 0x39);
  if (shape == Shape::kEuc) return {{"\x8F"}, allBytes(), allBytes()};
  if (shape == Shape::kFour) return {high, digits, high, digits};
  const std::vector<Bytes> graphic = byteRange(0xA1, 0xFE);
  if (shape == Shape::kPlanes) return {{"\x8E"}, byteRange(0xA1, 0xB0), graphic, graphic};
  if (shape == Shape::kChinese) return {{"\x8E"}, byteRange(0xA1, 0xA2), graphic, graphic};
  if (shape == Shape::kEbcdic) return {{"\xFE"}, allBytes(), allBytes()};
  return {};
}

// Every sequence of one element of each list.
void forEachProduct(const std::vector<std::vector<Bytes>>& lists, size_t from, const Bytes& before,
                    const std::function<void(const Bytes&)>& take) {
  if (from == lists.size()) return take(before);
  for (const Bytes& element : lists[from]) forEachProduct(lists, from + 1, before + element, take);
}

void forEachCandidate(Shape shape, const std::function<bool(const Bytes&)>& isCode) {
  const auto take = [&](const Bytes& sequence) { isCode(sequence); };
  if (shape == Shape::kFixed) return forEachProduct({allBytes(), allBytes()}, 0, {}, take);
  if (shape == Shape::kEscapes) {
    const std::vector<Bytes> graphic = byteRange(0x21, 0x7E);
    forEachProduct({{"\x1B(B", "\x1B(J", "\x1B(I"}, byteRange(0, 0x7F)}, 0, {}, take);
    forEachProduct({{"\x1B$B", "\x1B$@", "\x1B$(Q", "\x1B$(P"}, graphic, graphic}, 0, {}, take);
    return;
  }
  const bool hasPairs = shape != Shape::kBytes && shape != Shape::kEbcdic;
  for (const Bytes& first : allBytes()) {
    if (isCode(first) || !hasPairs) continue;
    for (const Bytes& second : allBytes()) isCode(first + second);
  }
  const auto longer = longerSequences(shape);
  if (!longer.empty()) forEachProduct(longer, 0, {}, take);
}

// A code with the escape sequence of its set in front and none behind it, however the text
// that holds it alone begins and ends.
Bytes withItsEscape(const Bytes& text) {
  static const Bytes kAscii = "\x1B(B";
  if (!text.starts_with('\x1B') || text.size() == 1) return kAscii + text;
  return text.ends_with(kAscii) ? text.substr(0, text.size() - kAscii.size()) : text;
}

}  // namespace

bool isStateless(Shape shape) {
  return shape == Shape::kEbcdic || shape == Shape::kKorean || shape == Shape::kChinese;
}

Repertoire explore(Codec& codec, Shape shape) {
  Repertoire repertoire;
  forEachCandidate(shape, [&](const Bytes& sequence) {
    const std::optional<Text> text = codec.decode(sequence);
    // An escape sequence that is unknown may be taken for so many characters.
    const bool isCode = text && !text->empty() && (text->size() == 1 || text->front() != U'\x1B');
    if (isCode) repertoire.decoded.emplace(sequence, *text);
    return isCode;
  });
  for (char32_t character = 0; character <= kLastCharacter; ++character) {
    if (isSurrogate(character)) continue;
    if (const std::optional<Bytes> sequence = codec.encode(character)) {
      repertoire.encoded.emplace_hint(
          repertoire.encoded.end(), character,
          shape == Shape::kEscapes ? withItsEscape(*sequence) : *sequence);
    }
  }
  return repertoire;
}

Repertoire readRepertoire(const std::filesystem::path& path, Shape shape) {
  Repertoire repertoire;
  std::ifstream file(path);
  std::string direction;
  std::string from;
  std::string to;
  while (file >> direction >> from >> to) {
    if (direction == "decode") {
      repertoire.decoded.emplace(parseBytes(from), parseText(to));
    } else {
      repertoire.encoded.emplace_hint(
          repertoire.encoded.end(), parseText(from).at(0),
          shape == Shape::kEscapes ? withItsEscape(parseBytes(to)) : parseBytes(to));
    }
  }
  if (repertoire.encoded.empty()) {
    throw std::runtime_error("nothing read from " + path.string());
  }
  return repertoire;
}

}  // namespace repertoire
