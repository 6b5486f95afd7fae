// Converts a whole text.
#pragma once

#include "cli/system/streams.h"
#include "cli/text/conversion_counts.h"
#include "cli/text/conversion_settings.h"
#include "kit/convert/pipeline.h"

namespace ksv_cli {

// The same as libksv does it. Throws ksv_kit::BadArgument for changes that cannot be made.
ksv_kit::ConversionTask conversionTask(const ConversionSettings& settings);

// Throws Failure with the reason and the offset; what was converted before the bad character has
// gone to the sink by then. A source that throws ends the text; what was read before is converted,
// too. Returns what was left out and replaced.
ConversionCounts convertText(const ConversionSettings& settings, ByteSource& source,
                             ByteSink& sink);

}  // namespace ksv_cli
