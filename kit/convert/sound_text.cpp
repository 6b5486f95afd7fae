#include "kit/convert/sound_text.h"

#include <functional>

#include "kit/text/unicode_check.h"

namespace ksv_kit {

SoundText::SoundText(const CharsetChoice& source, bool bigEndian, const uint8_t* text,
                     size_t length)
    : RunWatch{[](RunWatch& watch, const ksv::ReadPart& part) noexcept {
        static_cast<SoundText&>(watch).pass(part);
      }},
      source_(source),
      bigEndian_(bigEndian),
      end_(text + length),
      known_(text) {}

// In the other forms runs read surrogates, and values beyond Unicode, like everything else.
bool SoundText::canBeWatched() const {
  return source_.kind == CharsetKind::kIso2022 || source_.form == UnicodeForm::kUtf8 ||
         source_.form == UnicodeForm::kUtf16;
}

bool SoundText::isSound() { return isSound_ && look(end_); }

// A run may read again what an earlier one has read.
void SoundText::pass(const ksv::ReadPart& part) {
  if (!isSound_ || part.end <= known_ || part.begin == part.end) return;
  const bool isOfText = std::less_equal<>{}(part.end, end_);
  isSound_ = isOfText && (part.begin <= known_ || look(part.begin));
  const bool isIso2022 = source_.kind == CharsetKind::kIso2022;
  if (isSound_ && isIso2022 && part.begin >= known_)
    isSound_ = iso2022_.isInPairs() == part.beginsInPairs;
  known_ = part.end;
  if (isIso2022) iso2022_.goBehind(part.endsInPairs);
}

bool SoundText::look(const uint8_t* end) {
  const auto length = static_cast<size_t>(end - known_);
  const ScanResult found = source_.kind == CharsetKind::kIso2022
                               ? iso2022_.scan(known_, length)
                               : scanUnicode(source_.form, bigEndian_, known_, length);
  known_ = end;
  return found.end == ScanEnd::kAll;
}

}  // namespace ksv_kit
