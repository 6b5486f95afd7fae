// What a batch tells of each input.
#pragma once

#include <cstddef>

#include "cli/jobs/conversion_record.h"
#include "cli/jobs/work_list.h"

namespace ksv_cli {

// May be used from several threads.
class ConversionTelling {
 public:
  // list stays the caller's. json: a record of each input is written to standard output.
  ConversionTelling(WorkList& list, bool json) : list_(list), tellsJson_(json) {}

  // The charset has been found out, and nothing is converted yet.
  void tellSource(const ConversionRecord& record);
  // All that will happen to the input has happened, failures included. False where that cannot be
  // told.
  bool tellEnd(size_t index, const ConversionRecord& record);

 private:
  WorkList& list_;
  const bool tellsJson_;
};

}  // namespace ksv_cli
