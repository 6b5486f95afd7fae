// From what a caller says to what is done.
#pragma once

#include "kit/charsets/charset_names.h"
#include "kit/convert/pipeline.h"
#include "ksv.h"

namespace ksv_kit {

// What this library knows of the options, which may be null; fields that the caller's library did
// not have yet are 0. Throws BadArgument.
ksv_options knownOptions(const ksv_options* options);

// options may be null. Throws UnknownCharset, and BadArgument for what cannot be followed.
ConversionTask taskOf(const CharsetNames& names, const char* from, const char* to,
                      const ksv_options* options);

// The same between charsets that are known already.
ConversionTask taskBetween(const CharsetNames& names, const CharsetChoice& from,
                           const CharsetChoice& to, const ksv_options& options);

// Throws BadArgument when a text of the policies cannot be written in the target.
void checkReplacements(const ConversionTask& task);

}  // namespace ksv_kit
