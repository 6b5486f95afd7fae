// Reads one value with its type.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kit/documents/properties/byte_cursor.h"
#include "kit/documents/properties/property_set.h"
#include "kit/documents/properties/value.h"

namespace ksv_kit::properties {

enum class ValueEnd { kWhole, kCut, kUnknownType, kTooDeep };

struct ReadValue {
  ValueEnd end = ValueEnd::kWhole;
  size_t behind = 0;  // the place behind the value; of one that is not whole, how far was looked
  size_t looked = 0;  // bytes that were gone through, more than once where there are two ways
  Value value;
};

// From a type on. Where texts stand in vectors, some writers fill each up to four bytes and some do
// not, which nothing tells but that only one of the two comes out right.
ReadValue readValue(Bytes bytes, uint64_t at);

}  // namespace ksv_kit::properties
