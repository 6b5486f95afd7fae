// What a judge reads of a text: its beginning, and of the rest the lines that tell something. Which
// they are does not depend on how the text was cut into pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ksv_kit::judge {

class TextSample {
 public:
  // Takes a piece of the text, whatever the sample has room for.
  void take(const uint8_t* bytes, size_t length);

  // The first bytes as they are, and the lines. What was taken of a line that is not at its end is
  // among them; then they are put together in what is handed in.
  const std::vector<uint8_t>& head() const { return head_; }
  std::span<const uint8_t> lines(std::vector<uint8_t>& joined) const;
  // Where a byte of the lines stands in the text.
  uint64_t placeOf(size_t inLines) const;
  // Of the lines that tell something how many bytes there are.
  size_t telling() const { return telling_; }
  bool isFull() const { return telling_ >= kMost; }
  // Whether the lines may end inside a character although the text does not.
  bool endsAnywhere() const { return endsAnywhere_; }

  static constexpr size_t kHead = 4096;
  static constexpr size_t kMost = 16 * 1024;

 private:
  size_t skipPlain(const uint8_t* bytes, size_t length);
  size_t takePiece(const uint8_t* bytes, size_t length);
  void consider(const uint8_t* bytes, size_t length, uint64_t place, bool isCut);

  std::vector<uint8_t> head_;
  std::vector<uint8_t> lines_;
  struct Place {
    size_t inLines;
    uint64_t inText;
  };
  std::vector<Place> places_;   // of each line that was taken
  uint64_t position_ = 0;       // of what comes next
  std::vector<uint8_t> piece_;  // what has been taken of the line, or of its present piece
  bool pieceBeginsAnywhere_ = false;
  bool endsAnywhere_ = false;
  size_t telling_ = 0;
  size_t maybeTelling_ = 0;
};

}  // namespace ksv_kit::judge
