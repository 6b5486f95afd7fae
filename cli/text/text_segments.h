// Texts whose parts are in different charsets, such as mailboxes and logs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/system/streams.h"
#include "cli/text/conversion_counts.h"
#include "cli/text/conversion_settings.h"
#include "kit/charsets/charset_names.h"
#include "ksv.hpp"

namespace ksv_cli {

struct TextSegment {
  ksv::Segment found;
  ksv_kit::CharsetChoice charset;  // to read it in
};

// The parts of a text, in their order. guess: also where it is not likely enough which charset
// one of them is in. Throws Failure with its place otherwise, and ksv::Error.
std::vector<TextSegment> readableSegments(std::string_view text, const ksv::Hints& hints,
                                          const ksv_kit::CharsetNames& names, bool guess);

// What they are read in, each charset once.
std::vector<std::string> charsetsOf(const std::vector<TextSegment>& segments);

// "read as UTF-8 and EUC-JP-MS: 3 segments"
std::string segmentsInWords(const std::vector<TextSegment>& segments);

// As convertText(), of the text that these are the parts of; offsets are those of the text.
ConversionCounts convertSegments(const ConversionSettings& settings,
                                 const std::vector<TextSegment>& segments, ByteSource& source,
                                 ByteSink& sink);

}  // namespace ksv_cli
