// What the tests of detection share.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/common/temporary_directory.h"
#include "tests/detect/slow_scorers.h"

namespace ksv_detect_tests {

inline Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

inline std::string repeated(const std::string& text, size_t length) {
  std::string result;
  while (result.size() < length) result += text;
  result.resize(length);
  return result;
}

// Each letter as a unit of so many bytes.
std::string widened(const std::string& text, size_t width, bool bigEndian);

// The seed of the random tests: KSV_TEST_SEED, else a fixed number.
uint32_t testSeed();

// A text of so many bytes, at most, of characters that are drawn from an alphabet.
// Noise is the share of bytes drawn at random instead, in thousandths.
using Alphabet = std::vector<std::string>;
std::string randomText(std::mt19937& random, const Alphabet& alphabet, size_t length,
                       uint32_t noise);

// An alphabet for each encoding that can be detected, under the scorers' names, with
// every kind of character and line end; then some that fit none or several.
struct NamedAlphabet {
  std::string name;
  Alphabet characters;
};
const std::vector<NamedAlphabet>& alphabets();
const Alphabet& alphabet(const std::string& name);

// A file of the tests' own for dtctText to read.
class TextFile {
 public:
  TextFile() : directory_("ksv_detect") {}

  void write(const std::string& bytes) const;
  std::string path() const { return ksv::test::textOf(directory_.path() / "text"); }
  // Writes the bytes and detects them.
  uint32_t detect(const std::string& bytes, const char* language = "English") const;

 private:
  ksv::test::TemporaryDirectory directory_;
};

}  // namespace ksv_detect_tests
