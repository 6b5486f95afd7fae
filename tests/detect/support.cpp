#include "tests/detect/support.h"

#include <cstdlib>

#include "ksv_detect.h"
#include "tests/common/support.h"

namespace ksv_detect_tests {

using namespace std::string_literals;

std::string widened(const std::string& text, size_t width, bool bigEndian) {
  std::string result;
  for (const char c : text) {
    const std::string zeroes(width - 1, '\0');
    result += bigEndian ? zeroes + c : c + zeroes;
  }
  return result;
}

uint32_t testSeed() {
  const char* seed = std::getenv("KSV_TEST_SEED");
  return seed == nullptr ? 20260121u : static_cast<uint32_t>(std::strtoul(seed, nullptr, 10));
}

std::string randomText(std::mt19937& random, const Alphabet& alphabet, size_t length,
                       uint32_t noise) {
  std::string text;
  while (text.size() < length) {
    if (random() % 1000 < noise) {
      text += static_cast<char>(random() % 256);
    } else {
      text += alphabet[random() % alphabet.size()];
    }
  }
  text.resize(length);
  return text;
}

namespace {

// Units of a form with a byte order.
Alphabet units(const std::vector<uint32_t>& values, size_t width, bool bigEndian) {
  Alphabet result;
  for (const uint32_t value : values) {
    std::string unit;
    for (size_t i = 0; i < width; ++i)
      unit += static_cast<char>(value >> 8 * (bigEndian ? width - 1 - i : i));
    result.push_back(unit);
  }
  return result;
}

Alphabet withLineEnds(Alphabet characters) {
  for (const char* plain : {"A", "z", " ", "\t", "\r", "\n", "\r\n", "0", "~"})
    characters.emplace_back(plain);
  return characters;
}

std::vector<NamedAlphabet> makeAlphabets() {
  const std::vector<uint32_t> units16 = {0x41,   0x20,   0x0D,   0x0A,   0x3042, 0x4E00,
                                         0x9FA5, 0x2028, 0x2029, 0xFF21, 0xD83D, 0xDE00,
                                         0x4EA6, 0xFB3E, 0x0009, 0x5B57, 0x65E5, 0xFEFF};
  const std::vector<uint32_t> units32 = {0x41,    0x20,   0x0D,    0x0A,    0x3042,   0x4E00,
                                         0x2028,  0x2029, 0x20000, 0xE0001, 0x10FFFD, 0x1F600,
                                         0x40000, 0x9,    0x5B57,  0xFEFF};
  return {
      {"ASCII", withLineEnds({"the", "quick", "#", "{"})},
      {"Shift_JIS", withLineEnds({"\x82\xA0", "\x93\xFA", "\x8E\x9A", "\xB1", "\xDF", "\xE0\x40",
                                  "\xEA\xA4", "\x87\x40", "\xED\x7F", "\xFA\x40", "\xFC\x4B"})},
      {"EUC-JP",
       withLineEnds({"\xA4\xA2", "\xC6\xFC", "\xBB\xFA", "\x8E\xB1", "\x8F\xB0\xA1", "\xF4\xFE"})},
      {"GBK", withLineEnds({"\xB0\xA1", "\xD6\xD0", "\x81\x40", "\xA1\xA1", "\xA2\xB1", "\xD7\xF9",
                            "\xFE\x50"})},
      {"Big5", withLineEnds({"\xA4\xA4", "\xA4\x40", "\xC8\x7B", "\xF9\xFE", "\xB0\x5C"})},
      {"Korean",
       withLineEnds({"\xB0\xA1", "\xC7\xD1", "\xA1\x41", "\xAC\xD1", "\xFE\xA0", "\xB1\x80"})},
      {"ISO-2022-JP",
       withLineEnds({"\x1B$B\x24\x22\x1B(B", "\x1B$@\x30\x21", "\x1B(J", "\x1B$(D\x22\x2F",
                     "\x1B(B", "\x1B(I\xB1\xDF\x1B(B", "\x24\x22", "\x1B$B"})},
      {"UTF-8", withLineEnds({"あ", "é", "日本語", "😀", "\xE2\x80\xA8", "\xF9\x80\x80\x80\x80",
                              "\xFD\x80\x80\x80\x80\x80", "字"})},
      {"UTF-16BE", units(units16, 2, true)},
      {"UTF-16LE", units(units16, 2, false)},
      {"UCS-4BE", units(units32, 4, true)},
      {"UCS-4LE", units(units32, 4, false)},
      {"EUC-JP-FIX",
       {"\0A"s, "\0 "s, "\0\r\0\n"s, "\0\r"s, "\0\n"s, "\0\t"s, "\0\xB1"s, "\xA4\xA2", "\xB0\x21",
        "\xC6\xFC", "\xF4\xFF"}},
      {"controls",
       withLineEnds({"\x01", "\x7F", "\0"s, "\x1B", "\x80", "\xA0", "\xFD", "\xFE", "\xFF"})},
      // Several of the encodings made of pairs take these.
      {"shared pairs", withLineEnds({"\xB0\xA1", "\xC4\xE3", "\xD0\xD0", "\xA4\xA4"})},
  };
}

}  // namespace

const std::vector<NamedAlphabet>& alphabets() {
  static const std::vector<NamedAlphabet> all = makeAlphabets();
  return all;
}

const Alphabet& alphabet(const std::string& name) {
  for (const NamedAlphabet& named : alphabets())
    if (named.name == name) return named.characters;
  throw std::out_of_range(name);
}

// Some file systems write to the disk at once what takes the place of other contents.
void TextFile::write(const std::string& bytes) const {
  std::filesystem::remove(directory_.path() / "text");
  ksv::test::writeFile(path(), bytes);
}

uint32_t TextFile::detect(const std::string& bytes, const char* language) const {
  write(bytes);
  return dtctText(path().c_str(), language);
}

}  // namespace ksv_detect_tests
