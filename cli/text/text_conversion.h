// Converts a whole text, by the way that its charsets ask for.
#pragma once

#include "cli/system/streams.h"
#include "cli/text/file_converter.h"

namespace ksv_cli {

// Throws Failure as FileConverter does. Some texts are made UTF-8 on their way: mail
// encodings, and those whose codes the target would take over as they are, though it
// writes them otherwise. Returns what was left out and replaced.
ConversionCounts convertText(const ConversionSettings& settings, ByteSource& source,
                             ByteSink& sink);

}  // namespace ksv_cli
