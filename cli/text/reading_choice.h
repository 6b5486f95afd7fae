// Which of the readings of a text is taken, if one leads clearly.
#pragma once

#include <string>
#include <vector>

#include "cli/text/byte_facts.h"
#include "cli/text/detection.h"
#include "cli/text/text_language.h"
#include "cli/text/text_readings.h"
#include "kit/charsets/charset_names.h"

namespace ksv_cli {

using ksv_kit::ByteOrder;

// guess: where none leads clearly, the first is taken. Throws Failure, with the charsets that the
// text may be in, when none is clear.
ChosenSource chooseReading(const std::vector<TextReading>& readings, const ByteFacts& facts,
                           TextLanguage language, bool guess);

inline constexpr char kItsBytesFit[] = "its bytes fit best";

// "read as DISPLAY, which holds NAME: WHY, big-endian"
std::string reasonFor(const std::string& name, const std::string& display, ByteOrder order,
                      const std::string& why);

}  // namespace ksv_cli
