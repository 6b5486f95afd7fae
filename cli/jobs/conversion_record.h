// What was done with one input of a batch: filled while it is converted, and read by all that
// tells.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/system/failure.h"
#include "cli/text/conversion_counts.h"
#include "cli/text/text_repair.h"
#include "ksv.hpp"

namespace ksv_cli {

// What has become of the text. A conversion may count as a failure although its result is there.
enum class ConversionOutcome {
  kFailed,     // there is no result
  kConverted,  // the result is in its place
  kUnchanged,  // its file has the bytes of the result already, and was left alone
  kSkipped     // it was not to be converted
};

// The word for it in records.
const char* outcomeName(ConversionOutcome outcome);
std::optional<ConversionOutcome> outcomeNamed(std::string_view name);

struct ConversionRecord {
  std::string input;
  std::string source;  // the charset it was read in; empty: not known
  std::string reason;  // how that was found out; empty: it was named
  std::string target;
  ConversionOutcome outcome = ConversionOutcome::kFailed;
  std::optional<uint64_t> sizeBefore;  // as far as it was known in front
  uint64_t bytesRead = 0;
  std::optional<uint64_t> sizeAfter;  // of the result
  ConversionCounts losses;
  std::optional<RepairFacts> repair;   // where that was asked for
  std::vector<ksv::Segment> segments;  // of a mixed text
  std::string output;                  // empty: standard output
  std::string kept;                    // where the original is kept; empty: nowhere
  std::optional<Failure> failure;
  // Of a run with a manifest only; empty: not known.
  std::string modifiedBefore;
  std::string modifiedAfter;
  std::string sumBefore;
  std::string sumAfter;

  // Of the text, as far as they are known.
  uint64_t bytes() const { return sizeBefore.value_or(bytesRead); }

  // A text whose lines lost bytes lacks them in the result as well.
  bool hasLosses() const { return losses.any() || (repair && repair->lost != 0); }
  std::string lossesInWords() const;
};

}  // namespace ksv_cli
