// What 'ksv detect' writes of a text by the judge of the library.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "ksv.hpp"

namespace ksv_cli {

// What was found out about an input. The segments are there where they are asked for.
struct Verdict {
  ksv::Detection detection;
  std::optional<std::vector<ksv::Segment>> segments;

  // Nothing can be told of the text, or of one of its segments.
  bool isUndetermined() const;
};

// A line, or with all of them a line for each guess.
std::string verdictLines(const std::string& path, const Verdict& verdict, bool tellsAll);

// A line for each segment; one line of what has none.
std::string segmentLines(const std::string& path, const Verdict& verdict);

std::string verdictRecord(const std::string& path, const Verdict& verdict, bool tellsAll);

// What records say of a segment.
nlohmann::ordered_json segmentFields(const ksv::Segment& segment);

// "0.97"
std::string confidenceInWords(double confidence);

}  // namespace ksv_cli
