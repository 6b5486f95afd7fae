#include "cli/jobs/verdict_lines.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "cli/jobs/result_line.h"
#include "cli/system/escapes.h"
#include "cli/text/text_verdict.h"

namespace ksv_cli {
namespace {

using nlohmann::ordered_json;

constexpr char kUndetermined[] = "undetermined";

bool isNamed(const ksv::Segment& segment) { return segment.confidence >= kLeastToName; }

// What stands in the place of the charset of a text that has none.
const char* wordInsteadOfCharset(const ksv::Detection& detection) {
  const bool isKnownForNone =
      detection.content == KSV_CONTENT_EMPTY || detection.content == KSV_CONTENT_BINARY;
  return isKnownForNone ? contentName(detection.content) : kUndetermined;
}

std::string wordOrHyphen(const std::string& text) { return text.empty() ? "-" : text; }

std::string lineWithout(const std::string& path, const ksv::Detection& detection, bool tellsAll) {
  std::vector<std::string> fields = {
      shownName(path), wordInsteadOfCharset(detection), "-", "-", "-", "-", "-"};
  if (tellsAll) fields.emplace_back("-");
  return textLine(fields);
}

std::string lineOf(const std::string& path, const ksv::Detection& detection,
                   const ksv::Guess& guess, bool tellsAll) {
  std::vector<std::string> fields = {
      shownName(path),
      guess.charset,
      confidenceInWords(guess.confidence),
      wordOrHyphen(guess.language),
      orHyphen(lineEndName(guess.line_end)),
      guess.mark_length != 0 ? "bom" : "-",
      detection.misread_as ? "misread=" + *detection.misread_as : "-"};
  if (tellsAll) fields.push_back(shownName(guess.reason));
  return textLine(fields);
}

// More digits than four say nothing. Without the library of mathematics, which every start of the
// command would load.
double told(double confidence) {
  return static_cast<double>(static_cast<int>(confidence * 1e4 + 0.5)) / 1e4;
}

template <typename Value>
ordered_json valueOrNull(const std::optional<Value>& value) {
  return value ? ordered_json(*value) : ordered_json();
}

void addGuess(ordered_json& line, const ksv::Guess& guess) {
  line["charset"] = guess.charset;
  line["decodeAs"] = valueOrNull(guess.decode_as);
  line["confidence"] = told(guess.confidence);
  line["language"] = textOrNull(guess.language);
  line["reason"] = guess.reason;
  line["lineEnd"] = orNull(lineEndName(guess.line_end));
  line["mark"] = guess.mark_length != 0;
  line["valid"] = !guess.invalid_offset;
  line["invalidOffset"] = valueOrNull(guess.invalid_offset);
}

void addNoGuess(ordered_json& line) {
  for (const char* const field : {"charset", "decodeAs", "confidence", "language", "reason",
                                  "lineEnd", "mark", "valid", "invalidOffset"})
    line[field] = nullptr;
}

}  // namespace

bool Verdict::isUndetermined() const {
  if (segments && !segments->empty())
    return !std::all_of(segments->begin(), segments->end(), isNamed);
  return ksv_cli::isUndetermined(detection);
}

std::string verdictLines(const std::string& path, const Verdict& verdict, bool tellsAll) {
  const ksv::Detection& detection = verdict.detection;
  if (!tellsAll) {
    const ksv::Guess* const guess = namedGuess(detection);
    return guess != nullptr ? lineOf(path, detection, *guess, false)
                            : lineWithout(path, detection, false);
  }
  if (detection.guesses.empty()) return lineWithout(path, detection, true);
  std::string lines;
  for (const ksv::Guess& guess : detection.guesses) lines += lineOf(path, detection, guess, true);
  return lines;
}

std::string segmentLines(const std::string& path, const Verdict& verdict) {
  if (!verdict.segments || verdict.segments->empty())
    return textLine({shownName(path), "-", "-", wordInsteadOfCharset(verdict.detection), "-"});
  std::string lines;
  for (const ksv::Segment& segment : *verdict.segments)
    lines +=
        textLine({shownName(path), std::to_string(segment.offset), std::to_string(segment.length),
                  isNamed(segment) ? segment.charset : kUndetermined,
                  isNamed(segment) ? confidenceInWords(segment.confidence) : "-"});
  return lines;
}

std::string verdictRecord(const std::string& path, const Verdict& verdict, bool tellsAll) {
  const ksv::Detection& detection = verdict.detection;
  ordered_json line = recordOf(path, ResultForm::kFull);
  if (const ksv::Guess* const guess = namedGuess(detection))
    addGuess(line, *guess);
  else
    addNoGuess(line);
  line["content"] = contentName(detection.content);
  line["settled"] = detection.settled;
  line["bytesLookedAt"] = detection.bytes;
  line["misreadAs"] = valueOrNull(detection.misread_as);
  if (tellsAll) {
    line["guesses"] = ordered_json::array();
    for (const ksv::Guess& guess : detection.guesses) {
      ordered_json fields = emptyRecord();
      addGuess(fields, guess);
      line["guesses"].push_back(std::move(fields));
    }
  }
  if (verdict.segments) {
    line["segments"] = ordered_json::array();
    for (const ksv::Segment& segment : *verdict.segments)
      line["segments"].push_back(segmentFields(segment));
  }
  return jsonLine(line);
}

ordered_json segmentFields(const ksv::Segment& segment) {
  ordered_json fields = emptyRecord();
  fields["offset"] = segment.offset;
  fields["length"] = segment.length;
  fields["charset"] = textOrNull(segment.charset);
  fields["decodeAs"] = valueOrNull(segment.decode_as);
  fields["confidence"] = told(segment.confidence);
  return fields;
}

std::string confidenceInWords(double confidence) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "%.2f", confidence);
  return digits;
}

}  // namespace ksv_cli
