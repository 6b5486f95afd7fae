// Texts with shifts, and the stateless charsets that their codes are read and written by.
//
// A charset of the directory finds a code's set in the code itself. In some encodings it stands in
// front: a shift, or an escape sequence, holds for all codes up to the next one. Their codes are
// given to the directory as stateless charsets, which mark each code by itself. A reading filter
// turns a text with shifts into the stateless form, a writing filter turns that into a text with
// shifts. Neither knows which codes have a character: that is for the charset to say.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace ksv_kit {

class ShiftFilter {
 public:
  virtual ~ShiftFilter() = default;

  // Appends what becomes of the bytes; what must wait for more is kept. With `isEnd` nothing is
  // kept back, and what closes the text is written.
  //
  // Returns how many of the bytes were used. They are fewer than `size` only in front of bytes
  // that are not well-formed: `bad` of them are refused, which is 0 otherwise. Refused bytes begin
  // `refusedBefore` in front of the place returned, since former calls may have used some that
  // were kept. Whoever goes on behind them leaves out those of this call, `bad` less
  // `refusedBefore` if that is any, and calls again for what follows. So a text is refused at the
  // same places, however it is cut.
  virtual size_t filter(const uint8_t* bytes, size_t size, bool isEnd, std::vector<uint8_t>& out,
                        size_t& bad) = 0;
  virtual size_t refusedBefore() const = 0;

  // The place in the filter's input that a place in its output comes from, both counted from the
  // beginning of the text. Nobody asks about output in front of what was told to be forgotten.
  virtual uint64_t originOf(uint64_t made) const = 0;
  virtual void forgetBefore(uint64_t made) = 0;
};

// By the usual name of the encoding in lower case, "ibm930" or "iso-2022-kr"; null for all others.
std::unique_ptr<ShiftFilter> readingFilter(std::string_view lowerName);
std::unique_ptr<ShiftFilter> writingFilter(std::string_view lowerName);

// The charset of the directory that has the codes; empty for other encodings.
std::string_view statelessCharsetOf(std::string_view lowerName);

}  // namespace ksv_kit
