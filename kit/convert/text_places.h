// Lines and columns of a text that comes in pieces, for whoever asks about a place in it.
//
// Nothing is counted before somebody asks, but for line ends: the bytes of the line that is under
// way are kept, and are decoded where a column is asked for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "kit/charsets/charset_names.h"

namespace ksv_kit {

struct TextPlace {
  uint64_t line;    // from 1 on; a line ends with LF, CR or both
  uint64_t column;  // in characters, from 1 on
};

class TextPlaces {
 public:
  // The charset outlives this.
  explicit TextPlaces(const CharsetChoice& charset);

  void restart();
  // The text goes on with these bytes.
  void add(const uint8_t* bytes, size_t size);
  // Nobody asks about a place in front of the offset any more.
  void settle(uint64_t offset);

  // The offset is not in front of the one that was settled last. A place inside a character is that
  // of the character.
  TextPlace placeOf(uint64_t offset) const;

 private:
  struct Line {
    uint64_t number = 1;
    uint64_t columnsBefore = 0;  // characters of the line in front of what is held of it
    size_t begin = 0;            // of what is held
    bool isBehindReturn = false;
  };

  Line lineAt(size_t end) const;
  uint32_t unitAt(size_t at) const;
  bool isLineEnd(uint32_t unit) const;
  struct Decoded {
    uint64_t characters;
    size_t end;  // of the last whole one
  };
  Decoded decodeByPipeline(size_t begin, size_t end) const;
  Decoded decode(size_t begin, size_t end) const;
  void findLineEnds();
  void learnOrder();

  const CharsetChoice& charset_;
  size_t unitSize_;
  uint32_t lineFeed_ = '\n';
  uint32_t carriageReturn_ = '\r';
  uint32_t nextLine_ = 0xFFFFFFFF;
  std::vector<uint8_t> held_;
  uint64_t base_ = 0;  // the offset of the first byte that is held
  size_t mark_ = 0;    // the length of the byte-order mark that the text begins with
  bool bigEndian_;
  bool knowsOrder_ = false;
  Line first_;  // the line that what is held begins with
};

// The place of an offset in a text that is all there.
TextPlace placeIn(const CharsetChoice& charset, const uint8_t* text, size_t length,
                  uint64_t offset);

}  // namespace ksv_kit
