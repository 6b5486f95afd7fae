// What a charset can say: every byte sequence that decodes, every character that can
// be written, as this library sees it and as outside references see it.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "tests/repertoire/converter.h"

namespace repertoire {

using Text = std::u32string;  // scalar values

constexpr char32_t kLastCharacter = 0x10FFFF;

constexpr bool isSurrogate(char32_t value) { return value >= 0xD800 && value <= 0xDFFF; }

// "815C", "U+2015", "U+304B+309A"; "-" for nothing.
std::string spell(const Bytes& sequence);
std::string spell(const Text& text);
Bytes parseBytes(std::string_view digits);
Text parseText(std::string_view spelled);

// Text as four bytes a character, most significant first, and back.
Bytes toUcs4(std::u32string_view text);
Text fromUcs4(std::string_view bytes);

// One charset as one implementation has it.
class Codec {
 public:
  virtual ~Codec() = default;

  // The characters of one code, or nothing if this is not one whole valid code.
  virtual std::optional<Text> decode(const Bytes& sequence) = 0;

  // The code of a character, or nothing if it has none.
  virtual std::optional<Bytes> encode(char32_t character) = 0;
};

class LibraryCodec : public Codec {
 public:
  explicit LibraryCodec(const std::string& charset, ByteOrder order = ByteOrder::kBig);

  std::optional<Text> decode(const Bytes& sequence) override;
  std::optional<Bytes> encode(char32_t character) override;

 private:
  Converter decoder_;
  Converter encoder_;
};

struct Repertoire {
  std::map<Bytes, Text> decoded;
  std::map<char32_t, Bytes> encoded;
};

// How the codes of a charset look, as references.txt has it.
enum class Shape {
  kBytes,
  kPairs,
  kEuc,
  kFour,
  kPlanes,
  kFixed,
  kEscapes,
  kEbcdic,
  kKorean,
  kChinese
};

// Whether others have shifts around the codes, so that only the scripts can ask them.
bool isStateless(Shape shape);

// Tries all byte sequences of a shape, and all characters. Codes of kEscapes stand with the
// escape sequence of their set.
Repertoire explore(Codec& codec, Shape shape);

// Reads what a script wrote down of a reference: *_reference.py beside this.
Repertoire readRepertoire(const std::filesystem::path& path, Shape shape = Shape::kPairs);

}  // namespace repertoire
