// The vectors of NIST for SHA-256, and texts of all lengths around the borders of blocks.

#include "cli/system/sha256.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ksv_cli_tests {
namespace {

using ksv_cli::Sha256;
using ksv_cli::sumOf;

TEST(Sha256Sum, is_that_of_the_examples_of_the_standard) {
  EXPECT_EQ(sumOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(sumOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(sumOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(sumOf("abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopq"
                  "klmnopqrlmnopqrsmnopqrstnopqrstu"),
            "cf5b16a778af8380036ce59e7b0492370b249b11e8f07a51afac45037afee9d1");
  EXPECT_EQ(sumOf(std::string(1'000'000, 'a')),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256Sum, does_not_depend_on_how_the_text_comes) {
  for (size_t size = 0; size < 200; ++size) {
    const std::string text(size, 'x');
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    for (const size_t piece : {1u, 7u, 63u, 64u, 65u, 128u}) {
      Sha256 sum;
      for (size_t at = 0; at < size; at += piece)
        sum.update(bytes + at, std::min<size_t>(piece, size - at));
      EXPECT_EQ(sum.finish(), sumOf(text)) << size << " in pieces of " << piece;
    }
  }
}

}  // namespace
}  // namespace ksv_cli_tests
