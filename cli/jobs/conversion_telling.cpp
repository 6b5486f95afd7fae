#include "cli/jobs/conversion_telling.h"

#include "cli/system/inputs.h"

namespace ksv_cli {

void ConversionTelling::tellSource(const ConversionRecord& record) {
  console_.report(nameForMessages(record.input), record.reason);
}

void ConversionTelling::tellEnd(const ConversionRecord& record) {
  if (record.failure) {
    if (!record.failure->quiet())
      console_.report(nameForMessages(record.input), record.failure->what());
  } else if (record.losses.any()) {
    console_.report(nameForMessages(record.input), record.losses.inWords());
  }
}

}  // namespace ksv_cli
