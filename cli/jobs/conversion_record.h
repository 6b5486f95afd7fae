// What was done with one input of a batch: filled while it is converted, and read by all that
// tells.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/system/failure.h"
#include "cli/text/conversion_counts.h"

namespace ksv_cli {

// What has become of the text. A conversion may count as a failure although its result is there.
enum class ConversionOutcome {
  kFailed,     // there is no result
  kConverted,  // the result is in its place
  kUnchanged,  // its file has the bytes of the result already, and was left alone
  kSkipped     // it was not to be converted
};

struct ConversionRecord {
  std::string input;
  std::string source;  // the charset it was read in; empty: not known
  std::string reason;  // how that was found out; empty: it was named
  std::string target;
  ConversionOutcome outcome = ConversionOutcome::kFailed;
  std::optional<uint64_t> sizeBefore;  // as far as it was known in front
  std::optional<uint64_t> sizeAfter;   // of the result
  ConversionCounts losses;
  std::string output;  // empty: standard output
  std::string kept;    // where the original is kept; empty: nowhere
  std::optional<Failure> failure;
};

}  // namespace ksv_cli
