// What a batch tells of each input.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "cli/jobs/conversion_record.h"
#include "cli/jobs/verbosity.h"
#include "cli/system/console.h"

namespace ksv_cli {

// May be used from several threads.
class ConversionTelling {
 public:
  // console stays the caller's.
  ConversionTelling(Console& console, Verbosity verbosity);

  // The charset has been found out, and nothing is converted yet.
  void tellSource(const ConversionRecord& record);
  // All that will happen to the input has happened, failures included.
  void tellEnd(const ConversionRecord& record);
  // The last one has come to its end.
  void tellSums();

 private:
  void add(const ConversionRecord& record);

  Console& console_;
  const Verbosity verbosity_;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::mutex mutex_;
  std::array<size_t, 4> outcomes_{};  // how many there are of each
  uint64_t bytes_ = 0;
};

}  // namespace ksv_cli
