// What a batch tells of each input.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

#include "cli/jobs/conversion_record.h"
#include "cli/jobs/verbosity.h"
#include "cli/jobs/work_list.h"

namespace ksv_cli {

// May be used from several threads.
class ConversionTelling {
 public:
  // list stays the caller's. json: a record of each input is written to standard output.
  ConversionTelling(WorkList& list, bool json, Verbosity verbosity);

  // The charset has been found out, and nothing is converted yet.
  void tellSource(const ConversionRecord& record);
  // All that will happen to the input has happened, failures included. False where that cannot be
  // told.
  bool tellEnd(size_t index, const ConversionRecord& record);
  // The last one has come to its end.
  void tellSums();

 private:
  void report(const ConversionRecord& record, const std::string& words);
  void tellInWords(const ConversionRecord& record);
  void add(const ConversionRecord& record);

  WorkList& list_;
  const bool tellsJson_;
  const Verbosity verbosity_;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::mutex mutex_;
  std::array<size_t, 4> outcomes_{};  // how many there are of each
  uint64_t bytes_ = 0;
};

}  // namespace ksv_cli
