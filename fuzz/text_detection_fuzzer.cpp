// A text file in any encoding, or in none: dtctText has to answer what slow detection,
// which runs every scorer on every chunk, answers.
//
// Input: a byte that chooses the language; a byte that says how often the text is
// repeated, so that a small input reaches over the border of chunks; the text.
#include <cstdint>
#include <string>

#include "fuzz/scratch_directory.h"
#include "fuzz/support.h"
#include "ksv_detect.h"
#include "tests/detect/slow_detection.h"

namespace {

constexpr const char* kLanguages[] = {"japanese", "simplified chinese", "traditional chinese",
                                      "korean", "english"};
constexpr size_t kMostBytes = 3 * 2048 + 100;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ksv_fuzz::ScratchDirectory directory;
  ksv_fuzz::Input input(data, size);
  const char* language = kLanguages[input.byte() % 5];
  const size_t least = size_t{input.byte()} * 32;
  std::string text(input.rest());
  if (!text.empty()) text = ksv_fuzz::repeated(text, least);
  if (text.size() > kMostBytes) text.resize(kMostBytes);

  directory.write("text", text);
  const uint32_t expected = ksv_detect_tests::slowDetect({text.begin(), text.end()}, language);
  ksv_fuzz::require(dtctText(directory.pathOf("text").c_str(), language) == expected,
                    "detected as slowly");
  return 0;
}
