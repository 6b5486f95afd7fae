// The characters of names, which may be no UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ksv_cli {

// A byte that belongs to no character is one of its own, behind all that there are.
inline constexpr uint32_t kFirstLoneByte = 0x110000;

struct NameCharacter {
  uint32_t value;
  size_t length;  // in bytes
};

// The first one of a text that is not empty.
NameCharacter firstCharacterOf(std::string_view text);

// How many columns of a terminal the text takes: two for each wide character, none for a mark that
// is put over another one.
size_t columnsOf(std::string_view text);

// The text in so many columns at most: where it is too wide, with "..." for what is left out of its
// middle. Bytes of no character become question marks.
std::string fittedInto(size_t columns, std::string_view text);

}  // namespace ksv_cli
