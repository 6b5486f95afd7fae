// Half-width and full-width forms of characters.
#pragma once

#include <memory>

#include "kit/unicode/text_change.h"

namespace ksv_kit {

enum class Width { kKept, kHalf, kFull };

// Each choice for itself.
struct WidthChoices {
  // Katakana, their punctuation and sound marks. Half-width ones are joined with the sound mark
  // behind them where JIS X 0208 has the sound as one character: FF76 FF9E becomes 30AC; and back.
  Width katakana = Width::kKept;
  // The printable characters of ASCII: 21 to 7E, and FF01 to FF5E.
  Width ascii = Width::kKept;
  // 20 and 3000.
  Width space = Width::kKept;
};

// None where nothing is chosen.
std::unique_ptr<TextChange> widthChange(const WidthChoices& choices);

}  // namespace ksv_kit
