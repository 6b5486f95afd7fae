#include "offset_sweep.h"

#include <gtest/gtest.h>

#include <ostream>

#include "in_process.h"

namespace ksv_cli_tests {
namespace {

constexpr size_t kBlock = 32;

std::string repeated(const std::string& one, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) text += one;
  return text;
}

std::string atOffset(size_t offset) { return " at byte offset " + std::to_string(offset); }

}  // namespace

void PrintTo(const BadText& text, std::ostream* out) {
  *out << text.reason << " behind " << text.fill;
}

void expectBadBytesNamed(const BadText& text) {
  const std::string one = encoded(text.charset, text.fill);
  const std::string tail = encoded(text.charset, "漢A");
  for (size_t lead = 0; lead < 8; ++lead) {
    const std::string ascii = encoded(text.charset, std::string(lead, 'x'));
    for (size_t count = 0; count < 3 * kBlock / one.size(); ++count) {
      const std::string before = ascii + repeated(one, count);
      const Conversion result =
          converting().inPieces(text.charset, "UTF-8", before + text.bad + tail, kBlock);
      ASSERT_EQ(result.failure, text.reason + atOffset(before.size()));
      ASSERT_EQ(result.output, converting().inPieces(text.charset, "UTF-8", before, 4096).output);
    }
  }
}

void PrintTo(const LackingText& text, std::ostream* out) {
  *out << text.reason << " from " << text.source;
}

void expectLackingCharacterNamed(const LackingText& text) {
  const std::string one = encoded(text.source, text.fill);
  const std::string lacking = encoded(text.source, text.lacking);
  const std::string tail = encoded(text.source, "漢A");
  for (size_t lead = 0; lead < 8; ++lead) {
    std::string before = encoded(text.source, std::string(lead, 'x'));
    while (before.size() < 3 * kBlock) {
      const Conversion result =
          converting().inPieces(text.source, text.target, before + lacking + tail, kBlock);
      ASSERT_EQ(result.failure, text.reason + atOffset(before.size()));
      before += one;
    }
  }
}

void expectTruncatedCharacterNamed(const std::string& charset) {
  const std::string one = encoded(charset, "漢");
  for (size_t count = 0; count < 40; ++count)
    for (size_t kept = 1; kept < one.size(); ++kept) {
      const std::string text = repeated(one, count);
      const Conversion result =
          converting().inPieces(charset, "UTF-8", text + one.substr(0, kept), 16);
      ASSERT_EQ(result.failure.find("the text ends inside a "), 0u) << charset;
      ASSERT_TRUE(result.failure.ends_with(atOffset(text.size())))
          << charset << ": " << result.failure << ", not " << text.size();
    }
}

}  // namespace ksv_cli_tests
