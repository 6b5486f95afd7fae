#include "kit/text/chunk_boundary.h"

#include "common/byte_order.h"
#include "common/utf16.h"

namespace ksv_kit {
namespace {

struct Character {
  size_t start;
  uint32_t value;
};

Character utf8Before(const uint8_t* text, size_t end) {
  size_t start = end - 1;
  while (start > 0 && (text[start] & 0xC0) == 0x80) --start;
  const size_t length = end - start;
  uint32_t value = length == 1 ? text[start] : text[start] & (0x7Fu >> length);
  for (size_t i = start + 1; i < end; ++i) value = value << 6 | (text[i] & 0x3Fu);
  return {start, value};
}

// Surrogates need no joining: no mark or base of interest lies above U+FFFF.
Character utf16Before(const uint8_t* text, size_t end, bool bigEndian) {
  const uint32_t last = ksv::readUnit16(text + end - 2, bigEndian);
  return {end - (ksv::isLowSurrogate(last) ? 4 : 2), last};
}

// The marks that combine are these five. The two tone letters are bases of each
// other besides; the other three are never a base.
bool isToneLetter(uint32_t value) { return value == 0x02E5 || value == 0x02E9; }
bool isPureMark(uint32_t value) { return value == 0x309A || value == 0x0300 || value == 0x0301; }

class Cutter {
 public:
  Cutter(UnicodeForm form, bool bigEndian, const uint8_t* text, size_t length)
      : form_(form), bigEndian_(bigEndian), text_(text), length_(length) {}

  size_t cut() const {
    const Character last = before(length_);
    if (isPureMark(last.value)) return length_;
    if (!isToneLetter(last.value)) return last.start;
    return cutToneLetters(last.start);
  }

 private:
  static constexpr size_t kToneLetterSize = 2;  // in UTF-8 and in UTF-16

  Character before(size_t end) const {
    return form_ == UnicodeForm::kUtf8 ? utf8Before(text_, end)
                                       : utf16Before(text_, end, bigEndian_);
  }

  // Which of a run of tone letters are pairs shows only from the run's beginning.
  size_t cutToneLetters(size_t lastStart) const {
    size_t at = lastStart;
    while (at > 0) {
      const Character previous = before(at);
      if (!isToneLetter(previous.value)) break;
      at = previous.start;
    }
    while (at + kToneLetterSize < length_) at += isPair(at) ? 2 * kToneLetterSize : kToneLetterSize;
    return at;
  }

  bool isPair(size_t at) const {
    return before(at + kToneLetterSize).value != before(at + 2 * kToneLetterSize).value;
  }

  UnicodeForm form_;
  bool bigEndian_;
  const uint8_t* text_;
  size_t length_;
};

}  // namespace

size_t safeCut(UnicodeForm form, bool bigEndian, const uint8_t* text, size_t length) {
  const bool combines = form == UnicodeForm::kUtf8 || form == UnicodeForm::kUtf16;
  if (!combines || length == 0) return length;
  return Cutter(form, bigEndian, text, length).cut();
}

}  // namespace ksv_kit
