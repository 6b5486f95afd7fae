// Paths arrive here as formats, and paths come from anywhere: "%n" would write to
// memory, "%s" read from it, "%999999999d" fill the disk. So every conversion is taken
// apart, and only one that is known to be harmless is put together anew for fprintf.
#include "common/log_format.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <optional>

namespace ksv {
namespace {

constexpr char kFlags[] = "-+ #0";
constexpr size_t kFlagCount = sizeof kFlags - 1;

// What every C library is sure to print of one conversion.
constexpr int kMostCharacters = 4095;

struct Conversion {
  std::array<bool, kFlagCount> flags = {};
  int width = 0;
  int precision = -1;  // none
  int shortness = 0;   // 1 for h, 2 for hh; the longer lengths change nothing
  char letter = 0;
};

// Takes a conversion off a format, from behind its per-cent sign; none when it is not
// to be carried out. No step goes over another per-cent sign, which keeps work in
// proportion to the format.
class ConversionReader {
 public:
  explicit ConversionReader(const char* at) : at_(at) {}

  std::optional<Conversion> read() {
    readFlags();
    if (!readNumber(conversion_.width)) return std::nullopt;
    if (take('.') && !readNumber(conversion_.precision)) return std::nullopt;
    const bool hasLength = readLength();
    conversion_.letter = *at_;
    if (conversion_.letter == '\0') return std::nullopt;
    // A length would make these two something else.
    const char* const letters = hasLength ? "diouxX" : "diouxXcp";
    if (std::strchr(letters, conversion_.letter) == nullptr) return std::nullopt;
    ++at_;
    return conversion_;
  }

  const char* end() const { return at_; }

 private:
  bool take(char character) {
    if (*at_ != character) return false;
    ++at_;
    return true;
  }

  void readFlags() {
    for (; *at_ != '\0'; ++at_) {
      const auto* flag = static_cast<const char*>(std::memchr(kFlags, *at_, kFlagCount));
      if (flag == nullptr) return;
      conversion_.flags[static_cast<size_t>(flag - kFlags)] = true;
    }
  }

  bool readNumber(int& number) {
    number = 0;
    for (; *at_ >= '0' && *at_ <= '9'; ++at_) {
      number = std::min(number * 10 + (*at_ - '0'), kMostCharacters + 1);
    }
    return number <= kMostCharacters;
  }

  bool readLength() {
    if (take('h')) {
      conversion_.shortness = take('h') ? 2 : 1;
      return true;
    }
    if (take('l')) {
      take('l');
      return true;
    }
    return take('j') || take('z') || take('t');
  }

  const char* at_;
  Conversion conversion_;
};

// Room for "%", every flag, "*.*", "hh", a letter and the terminator.
using Specification = std::array<char, 1 + kFlagCount + 3 + 2 + 1 + 1>;

Specification specificationOf(const Conversion& conversion) {
  Specification text = {'%'};
  size_t length = 1;
  const auto append = [&](char character) { text[length++] = character; };
  for (size_t i = 0; i < kFlagCount; ++i) {
    if (conversion.flags[i]) append(kFlags[i]);
  }
  for (const char character : {'*', '.', '*'}) append(character);
  for (int i = 0; i < conversion.shortness; ++i) append('h');
  append(conversion.letter);
  return text;
}

void print(std::FILE* stream, const Conversion& conversion, int32_t argument) {
  const Specification specification = specificationOf(conversion);
  const auto printValue = [&](auto value) {
    std::fprintf(stream, specification.data(), conversion.width, conversion.precision, value);
  };
  const auto bits = static_cast<uint32_t>(argument);
  switch (conversion.letter) {
    case 'd':
    case 'i':
    case 'c':
      return printValue(int{argument});
    case 'p':
      return printValue(reinterpret_cast<void*>(static_cast<uintptr_t>(bits)));
    default:
      return printValue(unsigned{bits});
  }
}

void printText(std::FILE* stream, const char* begin, const char* end) {
  std::fwrite(begin, 1, static_cast<size_t>(end - begin), stream);
}

}  // namespace

void printFormat(std::FILE* stream, const char* format, int32_t argument) {
  bool argumentUsed = false;
  const char* text = format;  // from here on nothing has been written
  const char* at = format;    // from here on no per-cent sign has been looked at
  while (const char* sign = std::strchr(at, '%')) {
    if (sign[1] == '%') {
      printText(stream, text, sign + 1);
      text = at = sign + 2;
      continue;
    }
    at = sign + 1;
    ConversionReader reader(at);
    const std::optional<Conversion> conversion = argumentUsed ? std::nullopt : reader.read();
    if (!conversion) continue;
    printText(stream, text, sign);
    print(stream, *conversion, argument);
    argumentUsed = true;
    text = at = reader.end();
  }
  printText(stream, text, text + std::strlen(text));
}

}  // namespace ksv
