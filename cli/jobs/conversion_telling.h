// What a batch tells of each input.
#pragma once

#include "cli/jobs/conversion_record.h"
#include "cli/system/console.h"

namespace ksv_cli {

// May be used from several threads.
class ConversionTelling {
 public:
  // console stays the caller's.
  explicit ConversionTelling(Console& console) : console_(console) {}

  // The charset has been found out, and nothing is converted yet.
  void tellSource(const ConversionRecord& record);
  // All that will happen to the input has happened, failures included.
  void tellEnd(const ConversionRecord& record);

 private:
  Console& console_;
};

}  // namespace ksv_cli
