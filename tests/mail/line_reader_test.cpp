#include "cli/mail/line_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "cli/system/memory_streams.h"

namespace ksv_cli {
namespace {

// Hands out one byte a read.
class SlowSource : public ByteSource {
 public:
  explicit SlowSource(const std::string& text) : source_(text) {}
  size_t read(uint8_t* buffer, size_t) override { return source_.read(buffer, 1); }

 private:
  TextSource source_;
};

TEST(LineReader, gives_lines_with_their_ends_and_places) {
  const std::string text = "a\nbc\r\n\nd";
  for (const bool isSlow : {false, true}) {
    TextSource fast(text);
    SlowSource slow(text);
    LineReader lines(isSlow ? static_cast<ByteSource&>(slow) : fast);
    std::string shown;
    for (LinePiece piece; lines.next(piece);)
      shown += std::to_string(piece.offset) + ":" + std::string(piece.bytes) +
               (piece.endsLine ? "" : "$");
    EXPECT_EQ(shown, "0:a\n2:bc\r\n6:\n7:d$");
  }
}

TEST(LineReader, cuts_a_line_that_is_longer_than_a_block) {
  const std::string text = std::string(150'000, 'x') + "\ny\n";
  TextSource source(text);
  LineReader lines(source);
  LinePiece piece;
  std::string all;
  ASSERT_TRUE(lines.next(piece));
  EXPECT_TRUE(piece.beginsLine && !piece.endsLine);
  all += piece.bytes;
  ASSERT_TRUE(lines.next(piece));
  EXPECT_FALSE(piece.beginsLine || piece.endsLine);
  all += piece.bytes;
  while (lines.next(piece)) all += piece.bytes;
  EXPECT_EQ(all, text);
}

}  // namespace
}  // namespace ksv_cli
