// A change, asked for a text in pieces.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kit/unicode/text_change.h"
#include "kit/unicode/utf8_text.h"

namespace ksv_kit {

struct Changed {
  std::string text;
  std::vector<uint64_t> origins;  // of each byte

  friend bool operator==(const Changed&, const Changed&) = default;
};

class PieceFeeder {
 public:
  explicit PieceFeeder(TextChange& change) : change_(change) { change_.restart(); }

  void feed(std::string_view piece, bool isEnd) {
    change_.change(piece, isEnd, all_.text);
    // Of what the call before has put out it must still be known.
    for (size_t at = beforeLatest_; at < all_.text.size(); ++at) {
      const uint64_t origin = change_.originOf(at);
      if (at < all_.origins.size()) {
        EXPECT_EQ(origin, all_.origins[at]) << at;
      } else {
        all_.origins.push_back(origin);
      }
    }
    beforeLatest_ = latest_;
    latest_ = all_.text.size();
  }

  const Changed& all() const { return all_; }

 private:
  TextChange& change_;
  Changed all_;
  size_t beforeLatest_ = 0;
  size_t latest_ = 0;
};

inline Changed changedWhole(TextChange& change, std::string_view text) {
  PieceFeeder feeder(change);
  feeder.feed(text, true);
  return feeder.all();
}

inline Changed changedByCharacters(TextChange& change, std::string_view text) {
  PieceFeeder feeder(change);
  for (size_t length; !text.empty(); text.remove_prefix(length)) {
    length = utf8LengthOf(text[0]);
    feeder.feed(text.substr(0, length), false);
  }
  feeder.feed("", true);
  return feeder.all();
}

inline Changed changedInTwo(TextChange& change, std::string_view text, size_t cut) {
  PieceFeeder feeder(change);
  feeder.feed(text.substr(0, cut), false);
  feeder.feed(text.substr(cut), true);
  return feeder.all();
}

// The same at every cut between two characters, and cut between all of them.
inline Changed changedAtEveryCut(TextChange& change, std::string_view text) {
  Changed whole = changedWhole(change, text);
  for (size_t cut = 0; cut < text.size(); cut += utf8LengthOf(text[cut])) {
    EXPECT_EQ(changedInTwo(change, text, cut), whole) << text << " cut at " << cut;
  }
  EXPECT_EQ(changedByCharacters(change, text), whole) << text;
  return whole;
}

}  // namespace ksv_kit
