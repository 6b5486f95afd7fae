#include "fuzz/support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace ksv_fuzz {

void require(bool condition, const char* message) {
  if (condition) return;
  // Not to standard error, which belongs to the command in the target that runs it.
  std::printf("fuzz: violated: %s\n", message);
  std::fflush(stdout);
  std::abort();
}

uint8_t Input::byte() {
  if (size_ == 0) return 0;
  --size_;
  return *data_++;
}

uint16_t Input::word() {
  const uint32_t high = byte();
  return static_cast<uint16_t>(high << 8 | byte());
}

std::vector<std::string> stringsOf(std::string_view bytes, size_t count) {
  std::vector<std::string> strings;
  while (strings.size() < count) {
    const size_t end = std::min(bytes.find('\0'), bytes.size());
    strings.emplace_back(bytes.substr(0, end));
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
  }
  return strings;
}

std::string widen(std::string_view text, Widening widening) {
  if (widening == Widening::kNone) return std::string(text);
  const bool four = widening == Widening::kFourLittle || widening == Widening::kFourBig;
  const bool big = widening == Widening::kTwoBig || widening == Widening::kFourBig;
  const std::string zeroes(four ? 3 : 1, '\0');
  std::string units;
  for (const char c : text) {
    if (big) units += zeroes;
    units += c;
    if (!big) units += zeroes;
  }
  return units;
}

std::string ruleFile(std::string_view text) {
  return "\xFF\xFE" + widen(text, Widening::kTwoLittle);
}

std::string repeated(std::string_view text, size_t leastSize) {
  std::string whole(text);
  while (!text.empty() && whole.size() < leastSize) whole += text;
  return whole;
}

}  // namespace ksv_fuzz
