#include "cli/jobs/conversion_telling.h"

#include "cli/jobs/conversion_lines.h"
#include "cli/jobs/result_line.h"
#include "cli/system/inputs.h"

namespace ksv_cli {

void ConversionTelling::tellSource(const ConversionRecord& record) {
  list_.console().report(nameForMessages(record.input), record.reason);
}

bool ConversionTelling::tellEnd(size_t index, const ConversionRecord& record) {
  const std::string name = nameForMessages(record.input);
  if (record.failure && !record.failure->quiet())
    list_.console().report(name, record.failure->what());
  else if (!record.failure && record.losses.any())
    list_.console().report(name, record.losses.inWords());
  return !tellsJson_ || list_.writeRecord(index, jsonLine(conversionFields(record)));
}

}  // namespace ksv_cli
