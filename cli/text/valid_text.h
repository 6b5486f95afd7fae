// Whether a text needs no conversion.
#pragma once

#include "cli/text/conversion_settings.h"
#include "cli/text/rereadable_text.h"
#include "kit/charsets/charset_names.h"

namespace ksv_cli {

// Whether the whole text is of the charset. Throws Failure when it cannot be read.
bool isWhollyOf(RereadableText& text, const ksv_kit::CharsetNames& names,
                const ksv_kit::CharsetChoice& charset);

// Whether all of the text is valid in the target of the settings. Of targets whose units have a
// byte order it needs a mark of the order that would be written, since nearly every text of even
// length could be one without. Throws Failure where it cannot be read, or where the answer could
// rest on what the system refused.
bool isTextOf(RereadableText& text, const ksv_kit::CharsetNames& names,
              const ConversionSettings& settings);

}  // namespace ksv_cli
