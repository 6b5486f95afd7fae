// The judge of charsets on any bytes: what is found out of a text in pieces does not depend on
// where they were cut, segments hold the whole text one behind the other, what is mended is UTF-8,
// and all that is told can be what it says it is.
//
// Input: which hints there are; length of a piece; four hints, each ended by a zero; the text.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/support.h"
#include "ksv.hpp"
#include "tests/system/system.h"

namespace {

using ksv_fuzz::require;

struct Case {
  ksv::Hints hints;
  std::string charsets;  // the hint; empty: none
  size_t piece = 1;
  std::string_view text;
};

Case caseOf(std::string_view rest, uint8_t which, size_t piece) {
  constexpr size_t kHints = 4;
  const std::vector<std::string> words = ksv_fuzz::stringsOf(rest, kHints);
  Case made;
  if (which & 1) made.hints.languages(words[0]);
  if (which & 2) made.hints.charsets(made.charsets = words[1]);
  if (which & 4) made.hints.declared(words[2]);
  if (which & 8) made.hints.file_name(words[3]);
  size_t begin = 0;
  for (const std::string& word : words) begin += word.size() + 1;
  made.text = rest.substr(std::min(begin, rest.size()));
  made.piece = piece;
  return made;
}

bool isValid(const std::string& charset, std::string_view text) {
  return static_cast<bool>(ksv::try_convert(charset, "UTF-8", text));
}

void checkGuess(const ksv::Guess& guess, std::string_view text) {
  require(!guess.charset.empty(), "a guess names a charset");
  require(guess.confidence >= 0 && guess.confidence <= 1, "a confidence is one from 0 to 1");
  require(guess.reason.find('\n') == std::string::npos, "a reason is one line");
  require(isValid("UTF-8", guess.reason), "a reason is UTF-8");
  require(!guess.invalid_offset || *guess.invalid_offset < text.size(),
          "what is no text is in the text");
  require(guess.mark_length <= text.size(), "a mark is in the text");
  if (guess.decode_as)
    require(ksv::Charset::find(*guess.decode_as).has_value(), "what is converted from is known");
}

void checkDetection(const ksv::Detection& found, std::string_view text) {
  require(found.bytes <= text.size(), "no more is looked at than there is");
  require((found.content == KSV_CONTENT_EMPTY) == text.empty(), "without bytes it is empty");
  require((found.content == KSV_CONTENT_TEXT) == !found.guesses.empty(), "a text has a guess");
  for (const ksv::Guess& guess : found.guesses) checkGuess(guess, text);
}

bool areSame(const ksv::Guess& a, const ksv::Guess& b) {
  return a.charset == b.charset && a.decode_as == b.decode_as && a.language == b.language &&
         a.reason == b.reason && a.confidence == b.confidence &&
         a.invalid_offset == b.invalid_offset && a.line_end == b.line_end &&
         a.mark_length == b.mark_length;
}

bool areSame(const ksv::Detection& a, const ksv::Detection& b) {
  return a.content == b.content && a.settled == b.settled && a.bytes == b.bytes &&
         a.misread_as == b.misread_as &&
         std::equal(a.guesses.begin(), a.guesses.end(), b.guesses.begin(), b.guesses.end(),
                    [](const ksv::Guess& x, const ksv::Guess& y) { return areSame(x, y); });
}

// What a text in one piece is found to be beyond all others, pieces are found to be, too.
void checkPieces(const Case& made) {
  ksv::Detector whole(made.hints);
  const bool isSettled = whole.feed(made.text);
  ksv::Detector pieces(made.hints);
  bool isSettledToo = false;
  for (size_t at = 0; at < made.text.size(); at += made.piece) {
    isSettledToo = pieces.feed(made.text.substr(at, made.piece));
    if (at == 0) checkDetection(pieces.verdict(false), made.text.substr(0, made.piece));
  }
  require(isSettled == isSettledToo, "a text settles however it is cut");
  const ksv::Detection found = whole.verdict();
  checkDetection(found, made.text);
  require(areSame(found, pieces.verdict()), "pieces are found to be what the text is");
  require(areSame(found, whole.verdict()), "a verdict changes nothing");
}

void checkSegments(const Case& made) {
  uint64_t end = 0;
  for (const ksv::Segment& segment : ksv::segments(made.text, made.hints)) {
    require(segment.offset == end && segment.length != 0, "segments follow each other");
    require(segment.confidence >= 0 && segment.confidence <= 1, "a confidence is one from 0 to 1");
    end += segment.length;
  }
  require(end == made.text.size(), "segments hold the whole text");
}

void checkRepair(std::string_view text) {
  const bool isUtf8 = isValid("UTF-8", text);
  try {
    const ksv::Repair repair = ksv::repair(text);
    require(isUtf8, "only UTF-8 is mended");
    require(isValid("UTF-8", repair.text), "what is mended is UTF-8");
    require(repair.counts.repaired != 0 || repair.text == text, "nothing else changes");
    const bool isAnyLeft = repair.counts.lost + repair.counts.ambiguous != 0;
    require(isAnyLeft == (repair.counts.first_left != KSV_NO_OFFSET),
            "the first line left is told");
    require(!isAnyLeft || repair.counts.first_left < text.size(), "it is in the text");
  } catch (const ksv::Error& error) {
    require(error.result() == KSV_INVALID && !isUtf8, "only what is no UTF-8 is refused");
  }
}

// A text of a charset that the hint does not name is never answered.
void checkAllowed(const Case& made, const ksv::Detection& found) {
  if (made.charsets != "EUC-JP") return;
  for (const ksv::Guess& guess : found.guesses)
    require(guess.charset.find("EUC-JP") != std::string::npos ||
                guess.decode_as.value_or("").find("EUC-JP") != std::string::npos,
            "only what is among the hints is answered");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool isSet =
      (ksv::test::setVariable("Charsetpath", std::string(KSV_FUZZ_CHARSET_DIRECTORY)), true);
  require(isSet, "the charset directory is named");
  ksv_fuzz::Input input(data, size);
  const uint8_t which = input.byte();
  const size_t piece = 1 + input.byte();
  const Case made = caseOf(input.rest(), which, piece);
  const ksv::Detection found = ksv::detect(made.text, made.hints);
  checkDetection(found, made.text);
  checkAllowed(made, found);
  checkPieces(made);
  checkSegments(made);
  checkRepair(made.text);
  return 0;
}
