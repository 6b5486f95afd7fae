// What bytes mean in a charset, asked of the engine.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace ksv_kit::judge {

using Bytes = std::span<const uint8_t>;

// Characters in units of UTF-16, in memory that is not cleared first.
class Units {
 public:
  explicit Units(size_t capacity) : units_(std::make_unique_for_overwrite<char16_t[]>(capacity)) {}

  char16_t* data() { return units_.get(); }
  void shrink(size_t size) { size_ = size; }
  operator std::span<const char16_t>() const { return {units_.get(), size_}; }
  const char16_t* begin() const { return units_.get(); }
  const char16_t* end() const { return units_.get() + size_; }
  size_t size() const { return size_; }

 private:
  std::unique_ptr<char16_t[]> units_;
  size_t size_ = 0;
};

// The characters of the text; none when it is not wholly of the charset, or the directory does not
// have it. mayEndInside: up to three bytes at the end may be left over. Throws UnusableEngine.
std::optional<Units> decodeSound(const char* charset, Bytes text, bool mayEndInside);

// The same for charsets that the engine has not by itself: with shifts, UTF-7, HZ.
std::optional<Units> decodeInSteps(const char* charset, Bytes text);

// Whether the text is wholly of the charset; of long ones, too.
bool isSound(const char* charset, Bytes text);

// Whether most of the first bytes above ASCII look like characters of UTF-8: texts in other
// charsets are told so without being read to their end.
bool looksLikeUtf8(Bytes bytes);

// The first byte that is no text in the charset; none when all of it is.
std::optional<uint64_t> firstInvalid(const char* charset, Bytes text);

// The characters of a damaged text: U+FFFD stands for what is none.
std::optional<Units> decodeDamaged(const char* charset, Bytes text);

// What each byte of a charset of single bytes is; kNoCharacter where it is none. Null when the
// directory does not have it.
using ByteTable = std::array<char16_t, 256>;
inline constexpr char16_t kNoCharacter = 0xFFFF;
const ByteTable* byteTable(const char* charset);
// Whether every character of a charset with this table is one byte: leads of others are none.
bool isOfSingleBytes(const ByteTable& table);

}  // namespace ksv_kit::judge
