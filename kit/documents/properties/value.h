// The values of properties, as the published format of property sets ("OLE property set data
// structures") numbers and lays out their types.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ksv_kit::properties {

using Bytes = std::span<const uint8_t>;

enum Type : uint16_t {
  kEmpty = 0,
  kNull = 1,
  kI2 = 2,
  kI4 = 3,
  kR4 = 4,
  kR8 = 5,
  kCurrency = 6,
  kDate = 7,
  kBstr = 8,
  kError = 10,
  kBool = 11,
  kVariant = 12,
  kDecimal = 14,
  kI1 = 16,
  kUi1 = 17,
  kUi2 = 18,
  kUi4 = 19,
  kI8 = 20,
  kUi8 = 21,
  kInt = 22,
  kUint = 23,
  kLpstr = 30,
  kLpwstr = 31,
  kFileTime = 64,
  kBlob = 65,
  kStream = 66,
  kStorage = 67,
  kStreamedObject = 68,
  kStoredObject = 69,
  kBlobObject = 70,
  kClipboard = 71,
  kClassId = 72,
  kVersionedStream = 73
};
inline constexpr uint16_t kBaseTypes = 0x0FFF;
inline constexpr uint16_t kVectorBit = 0x1000;
inline constexpr uint16_t kArrayBit = 0x2000;

// How the bytes of a type are laid out.
enum class Layout {
  kFixed,      // as many bytes as fixedSizeOf() says
  kCounted,    // the number of bytes, then these
  kWide,       // the number of 16-bit units, then these
  kVersioned,  // 16 bytes, then as kCounted
  kVariant,    // a type, then a value of it: only inside vectors and arrays
  kUnknown
};
Layout layoutOf(uint16_t baseType);
size_t fixedSizeOf(uint16_t baseType);

// What a single value says that is no text.
enum class Form {
  kNothing,
  kInteger,
  kNatural,
  kReal,
  kBoolean,
  kTime,     // FILETIME
  kDate,     // days
  kDecimal,  // currency, too
  kClassId,
  kClipboard,
  kBytes
};
Form formOf(uint16_t baseType);

// Whether the bytes are text in the code page of the section.
bool isCodePageText(uint16_t baseType);
// "VT_LPSTR", "VT_VECTOR|VT_UI1", "VT_0x1FF".
std::string typeName(uint16_t type);

// One dimension of an array.
struct Dimension {
  uint32_t size = 0;
  int32_t lowest = 0;

  bool operator==(const Dimension&) const = default;
};

struct Value {
  uint16_t type = kEmpty;  // with the bits for vectors and arrays
  // As they stand in the set, without lengths and padding; of vectors and arrays whose elements
  // have a fixed size those of all elements. Of texts the terminator is one of them.
  std::string bytes;
  std::string text;                   // UTF-8, of texts and names
  std::vector<Value> elements;        // of vectors and arrays whose elements have no fixed size
  std::vector<Dimension> dimensions;  // of arrays

  uint16_t baseType() const { return type & kBaseTypes; }
  bool isSequence() const { return (type & (kVectorBit | kArrayBit)) != 0; }
  bool isText() const {
    return !isSequence() && (isCodePageText(baseType()) || baseType() == kLpwstr);
  }
  size_t elementCount() const;
  // By its index, below the count.
  Value element(size_t index) const;

  bool operator==(const Value&) const = default;
};

// What a value says, by what it is; each is to be asked of a single value of the types named.
int64_t signedOf(const Value& value);       // of signed integers, errors, currency (in 1/10,000)
uint64_t unsignedOf(const Value& value);    // of unsigned integers and FILETIME
double realOf(const Value& value);          // of R4, R8, DATE
bool truthOf(const Value& value);           // of BOOL
std::string decimalOf(const Value& value);  // "-12.345", of DECIMAL and currency; or empty
// The bytes behind the tag of a clipboard value, and what the tag says: "Windows metafile".
std::string_view clipboardBytes(const Value& value);
std::string clipboardFormat(const Value& value);

using Guid = std::string;  // 16 bytes
// "{F29F85E0-4FF9-1068-AB91-08002B27B3D9}".
std::string guidText(std::string_view guid);

Value numberValue(uint16_t type, uint64_t bits);
Value realValue(double real);
Value booleanValue(bool truth);

}  // namespace ksv_kit::properties
