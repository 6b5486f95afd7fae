#include "kit/convert/leading_piece.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "kit/convert/pipeline.h"
#include "kit/text/iso_2022_check.h"

namespace ksv_kit {
namespace {

// Where the last character begins if the text ends inside it; else the end.
size_t endOfWholeCharacters(const CharsetChoice& charset, const uint8_t* text, size_t length) {
  size_t end = length;
  ConversionTask task;
  task.source = charset;
  task.target = utf8ShownAs("UTF-8");
  task.keepsMark = true;
  task.unmappable.kind = PolicyKind::kSkip;
  task.invalid.kind = PolicyKind::kAsk;
  task.invalid.judge = [&end](const Problem& problem) -> Answer {
    if (problem.kind == ProblemKind::kTruncated)
      end = std::min(end, static_cast<size_t>(problem.offset));
    return {Answer::Kind::kLeaveOut, ""};
  };
  Pipeline(task).takeWhole(text, length, [](const ByteBuffer&) {});
  return end;
}

size_t escapesAtEnd(const uint8_t* text, size_t length) {
  Iso2022Scanner scanner;
  size_t at = 0;
  for (;;) {
    const ScanResult found = scanner.scan(text + at, length - at);
    at += found.wellFormed;
    if (found.end == ScanEnd::kAll) return scanner.escapesAtEnd();
    if (found.end == ScanEnd::kIncomplete) return 0;
    at += found.badLength;
  }
}

// The bytes at the end of whole characters that say what follows, where nothing does.
size_t openedAtEnd(const CharsetChoice& charset, const uint8_t* text, size_t length) {
  const std::string_view piece(reinterpret_cast<const char*>(text), length);
  const auto ifEnds = [&](std::string_view opening) {
    return piece.ends_with(opening) ? opening.size() : 0;
  };
  switch (charset.kind) {
    case CharsetKind::kIso2022:
      return escapesAtEnd(text, length);
    case CharsetKind::kUtf7:
      return ifEnds("+");
    case CharsetKind::kHz:
      return ifEnds("~{");
    case CharsetKind::kShifts:
      return ifEnds("\x0E");
    case CharsetKind::kCharset:
      break;
  }
  return 0;
}

// Whether ASCII stands for itself wherever no escape or shift sequence is open.
bool hasAsciiBetweenShifts(const CharsetChoice& charset) {
  if (charset.kind == CharsetKind::kShifts) return charset.shifts.starts_with("iso-2022");
  return charset.kind != CharsetKind::kCharset;
}

// What an ASCII character is in the charset.
std::string encoded(const CharsetChoice& charset, char character, bool bigEndian) {
  if (hasAsciiBetweenShifts(charset)) return {character};
  ConversionTask task;
  task.source = utf8ShownAs("UTF-8");
  task.target = charset;
  task.options.outputBigEndian = bigEndian;
  ByteBuffer out;
  Pipeline(task).take(reinterpret_cast<const uint8_t*>(&character), 1, PieceEnd::kEnd, out);
  return {reinterpret_cast<const char*>(out.data()), out.size()};
}

// Whether the place is between CR and LF, and how many bytes the CR has.
std::optional<size_t> partedReturn(const CharsetChoice& charset, std::string_view text,
                                   size_t place) {
  for (const bool bigEndian : {true, false}) {
    if (!bigEndian && !charset.hasByteOrder()) break;
    const std::string carriageReturn = encoded(charset, '\r', bigEndian);
    const std::string lineFeed = encoded(charset, '\n', bigEndian);
    const bool isParted = !lineFeed.empty() && text.substr(0, place).ends_with(carriageReturn) &&
                          text.substr(place).starts_with(lineFeed);
    if (isParted) return carriageReturn.size();
  }
  return std::nullopt;
}

}  // namespace

size_t leadingPiece(const CharsetChoice& charset, const uint8_t* text, size_t length,
                    size_t limit) {
  if (length <= limit) return length;
  size_t end = endOfWholeCharacters(charset, text, limit);
  const std::string_view all(reinterpret_cast<const char*>(text), length);
  if (const auto parted = partedReturn(charset, all, end)) end -= *parted;
  return end - openedAtEnd(charset, text, end);
}

}  // namespace ksv_kit
