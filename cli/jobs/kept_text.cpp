#include "cli/jobs/kept_text.h"

#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/kept_original.h"
#include "cli/system/sha256.h"

namespace ksv_cli {

using platform::FileFacts;
using platform::FileKind;

std::string sumOfFile(const std::string& path) {
  const FileFacts facts = platform::fileFacts(path);
  if (facts.kind == FileKind::kMissing) return "";
  if (facts.kind != FileKind::kRegular) throw Failure(path + " is not a regular file");
  std::string sum = sumOf(*platform::openInput(path));
  if (!platform::fileFacts(path).isSameTextAs(facts))
    throw Failure("another program is writing to " + path);
  return sum;
}

bool isElsewhere(const ConversionRecord& past) {
  const bool hasResult =
      past.outcome == ConversionOutcome::kConverted || past.outcome == ConversionOutcome::kSkipped;
  return hasResult && past.output != past.input;
}

namespace {

// Nothing stood at the place of the kept original when the intent was written: an empty file there
// held the name for it.
bool settleUntold(const ConversionRecord& past) {
  const FileFacts kept = platform::fileFacts(past.kept);
  if (kept.kind != FileKind::kRegular) return false;
  const FileFacts place = platform::fileFacts(past.output);
  if (place.kind == FileKind::kMissing) {
    if (sumOfFile(past.kept) != past.sumBefore) return false;
    platform::putOriginalBack(past.kept, past.output);
    return true;
  }
  if (kept.size == 0 && !kept.isSameFileAs(place) && sumOfFile(past.output) == past.sumBefore)
    platform::removeKept(past.kept);
  return false;
}

}  // namespace

bool settle(const ConversionRecord& past) {
  if (past.kept.empty()) return false;
  try {
    return settleUntold(past);
  } catch (const Failure& failure) {
    throw Failure("the original of " + past.output + ": " + failure.what());
  }
}

std::string passingNameFor(const std::string& run, const std::string& place) {
  constexpr size_t kLetters = 12;
  return ".ksv-" + sumOf(run + '\n' + place).substr(0, kLetters);
}

}  // namespace ksv_cli
