// What a manifest tells of the runs that wrote it.
//
// A manifest is lines of JSON. The first is the head; behind it stand, as things come about, the
// intent to give a file its converted bytes, and the result of each input. The intent is on the
// disk before the file is touched: whatever ends the run, the sums in it tell whether the file is
// as it was or converted.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cli/jobs/conversion_record.h"

namespace ksv_cli {

using OptionList = std::vector<std::pair<std::string, std::string>>;

// The head of a manifest.
struct RunHead {
  std::string run;        // a name that no other run has
  std::string directory;  // that paths are seen from
  OptionList options;     // those that decide what comes out
};

std::string headLine(const RunHead& head);
// The record is that of a conversion that has come about.
std::string intentLine(const ConversionRecord& record);
std::string resultLine(const ConversionRecord& record);
// What stands in front of the lines of a run that goes on.
std::string resumptionLine();

// How many inputs came to what.
struct RunTotals {
  size_t converted = 0;
  size_t unchanged = 0;
  size_t skipped = 0;
  size_t failed = 0;

  void add(ConversionOutcome outcome);
};
std::string endLine(const RunTotals& totals);

// The latest that is known of an input.
struct PastConversion {
  ConversionRecord record;
  bool isIntended = false;  // its file may have been replaced
  bool hasResult = false;   // and is, as far as it was to be
};

class RunHistory {
 public:
  // Throws UsageError for a file that is no manifest, and Failure for one that cannot be read or
  // has a damaged line. One that is cut off in its first line has no head.
  static RunHistory read(const std::string& path);

  bool hasHead() const { return !head_.run.empty(); }
  const RunHead& head() const { return head_; }
  // Of all its whole lines, in bytes. What is behind them was being written when the run ended.
  size_t wholeSize() const { return wholeSize_; }

  // In the order in which they are first named.
  const std::vector<PastConversion>& conversions() const { return conversions_; }
  // Null when nothing is known of the input.
  const PastConversion* find(const std::string& input) const;

 private:
  void readLine(const std::string& line);
  void takeIntent(ConversionRecord record);
  void takeResult(ConversionRecord record);
  PastConversion& at(const std::string& input);

  RunHead head_;
  size_t wholeSize_ = 0;
  std::vector<PastConversion> conversions_;
  std::unordered_map<std::string, size_t> places_;
};

}  // namespace ksv_cli
