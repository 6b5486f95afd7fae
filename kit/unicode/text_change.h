// What happens to a text between two charsets.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ksv_kit {

// Rewrites text between two charsets, as UTF-8, piece by piece; the result does not depend on where
// the pieces are cut.
class TextChange {
 public:
  virtual ~TextChange() = default;
  // text: whole well-formed characters. Appends to out what becomes of it; what has to wait for
  // more text is kept. isEnd: nothing is kept.
  virtual void change(std::string_view text, bool isEnd, std::string& out) = 0;
  // From the beginning of a new text on.
  virtual void restart() = 0;
  // The place in the text handed in that a byte of what came out stems from (both counted from the
  // beginning of the text). Asked only for what the latest two calls put out.
  virtual uint64_t originOf(uint64_t made) const = 0;
};

}  // namespace ksv_kit
