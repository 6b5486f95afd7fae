// Converts a text that is all there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "kit/convert/plan.h"

namespace ksv_kit {

// Where a whole text goes to.
class TextTarget {
 public:
  virtual ~TextTarget() = default;
  // Room for so many bytes at least, if there is so much; what is written there counts from the
  // beginning of the target.
  virtual uint8_t* begin(size_t wanted, size_t& capacity) = 0;
  // The target holds these bytes and nothing else.
  virtual void settle(size_t size) = 0;
  // More bytes, which may be more than there is room for: they are counted then.
  virtual void append(const uint8_t* bytes, size_t size) = 0;
  virtual void clear() = 0;
};

// None when all was converted; else the problem that ended the text.
std::optional<Problem> convertWhole(const Plan& plan, const uint8_t* text, size_t length,
                                    TextTarget& target);

}  // namespace ksv_kit
