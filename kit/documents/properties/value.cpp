#include "kit/documents/properties/value.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <iterator>

namespace ksv_kit::properties {
namespace {

struct TypeFacts {
  uint16_t type;
  const char* name;
  Layout layout;
  uint8_t size;
};

constexpr TypeFacts kTypes[] = {
    {kEmpty, "VT_EMPTY", Layout::kFixed, 0},
    {kNull, "VT_NULL", Layout::kFixed, 0},
    {kI2, "VT_I2", Layout::kFixed, 2},
    {kI4, "VT_I4", Layout::kFixed, 4},
    {kR4, "VT_R4", Layout::kFixed, 4},
    {kR8, "VT_R8", Layout::kFixed, 8},
    {kCurrency, "VT_CY", Layout::kFixed, 8},
    {kDate, "VT_DATE", Layout::kFixed, 8},
    {kBstr, "VT_BSTR", Layout::kCounted, 0},
    {kError, "VT_ERROR", Layout::kFixed, 4},
    {kBool, "VT_BOOL", Layout::kFixed, 2},
    {kVariant, "VT_VARIANT", Layout::kVariant, 0},
    {kDecimal, "VT_DECIMAL", Layout::kFixed, 16},
    {kI1, "VT_I1", Layout::kFixed, 1},
    {kUi1, "VT_UI1", Layout::kFixed, 1},
    {kUi2, "VT_UI2", Layout::kFixed, 2},
    {kUi4, "VT_UI4", Layout::kFixed, 4},
    {kI8, "VT_I8", Layout::kFixed, 8},
    {kUi8, "VT_UI8", Layout::kFixed, 8},
    {kInt, "VT_INT", Layout::kFixed, 4},
    {kUint, "VT_UINT", Layout::kFixed, 4},
    {kLpstr, "VT_LPSTR", Layout::kCounted, 0},
    {kLpwstr, "VT_LPWSTR", Layout::kWide, 0},
    {kFileTime, "VT_FILETIME", Layout::kFixed, 8},
    {kBlob, "VT_BLOB", Layout::kCounted, 0},
    {kStream, "VT_STREAM", Layout::kCounted, 0},
    {kStorage, "VT_STORAGE", Layout::kCounted, 0},
    {kStreamedObject, "VT_STREAMED_OBJECT", Layout::kCounted, 0},
    {kStoredObject, "VT_STORED_OBJECT", Layout::kCounted, 0},
    {kBlobObject, "VT_BLOB_OBJECT", Layout::kCounted, 0},
    {kClipboard, "VT_CF", Layout::kCounted, 0},
    {kClassId, "VT_CLSID", Layout::kFixed, 16},
    {kVersionedStream, "VT_VERSIONED_STREAM", Layout::kVersioned, 0},
};

const TypeFacts* factsOf(uint16_t baseType) {
  const TypeFacts* const found =
      std::find_if(std::begin(kTypes), std::end(kTypes),
                   [&](const auto& facts) { return facts.type == baseType; });
  return found == std::end(kTypes) ? nullptr : found;
}

uint64_t littleEndian(std::string_view bytes) {
  uint64_t value = 0;
  for (size_t i = std::min<size_t>(bytes.size(), 8); i > 0; --i)
    value = value << 8 | static_cast<uint8_t>(bytes[i - 1]);
  return value;
}

std::string bytesOf(uint64_t value, size_t size) {
  std::string bytes;
  for (size_t i = 0; i < size; ++i) bytes.push_back(static_cast<char>(value >> (8 * i)));
  return bytes;
}

// The digits of a number of 96 bits, by schoolbook division of its 32-bit limbs, highest first.
std::string digitsOf(uint32_t high, uint32_t middle, uint32_t low) {
  uint32_t limbs[] = {high, middle, low};
  std::string digits;
  while (limbs[0] != 0 || limbs[1] != 0 || limbs[2] != 0) {
    uint64_t rest = 0;
    for (uint32_t& limb : limbs) {
      rest = rest << 32 | limb;
      limb = static_cast<uint32_t>(rest / 10);
      rest %= 10;
    }
    digits.insert(digits.begin(), static_cast<char>('0' + rest));
  }
  return digits.empty() ? "0" : digits;
}

std::string scaled(std::string digits, size_t scale, bool isNegative) {
  if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
  if (scale > 0) digits.insert(digits.size() - scale, 1, '.');
  return isNegative ? "-" + digits : digits;
}

uint32_t tagOf(const Value& value) {
  return static_cast<uint32_t>(littleEndian(std::string_view(value.bytes).substr(0, 4)));
}

// What stands in front of the data of a clipboard value.
constexpr uint32_t kWindowsTag = 0xFFFFFFFF;
constexpr uint32_t kMacintoshTag = 0xFFFFFFFE;
constexpr uint32_t kFormatIdTag = 0xFFFFFFFD;

size_t clipboardHeaderSize(const Value& value) {
  const uint32_t tag = tagOf(value);
  if (tag == kWindowsTag || tag == kMacintoshTag) return 8;
  if (tag == kFormatIdTag) return 4 + 16;
  return 4 + size_t{tag};
}

std::string windowsFormatName(uint64_t format) {
  switch (format) {
    case 1:
      return "text";
    case 2:
      return "bitmap";
    case 3:
      return "Windows metafile";
    case 8:
      return "device-independent bitmap";
    case 14:
      return "enhanced metafile";
    case 17:
      return "device-independent bitmap, version 5";
    default:
      return "clipboard format " + std::to_string(format);
  }
}

}  // namespace

Layout layoutOf(uint16_t baseType) {
  const TypeFacts* const facts = factsOf(baseType);
  return facts == nullptr ? Layout::kUnknown : facts->layout;
}

size_t fixedSizeOf(uint16_t baseType) {
  const TypeFacts* const facts = factsOf(baseType);
  return facts == nullptr ? 0 : facts->size;
}

Form formOf(uint16_t baseType) {
  switch (baseType) {
    case kEmpty:
    case kNull:
      return Form::kNothing;
    case kI1:
    case kI2:
    case kI4:
    case kI8:
    case kInt:
    case kError:
      return Form::kInteger;
    case kUi1:
    case kUi2:
    case kUi4:
    case kUi8:
    case kUint:
      return Form::kNatural;
    case kR4:
    case kR8:
      return Form::kReal;
    case kBool:
      return Form::kBoolean;
    case kFileTime:
      return Form::kTime;
    case kDate:
      return Form::kDate;
    case kCurrency:
    case kDecimal:
      return Form::kDecimal;
    case kClassId:
      return Form::kClassId;
    case kClipboard:
      return Form::kClipboard;
    default:
      return Form::kBytes;
  }
}

bool isCodePageText(uint16_t baseType) {
  return baseType == kLpstr || baseType == kBstr ||
         (baseType >= kStream && baseType <= kStoredObject) || baseType == kVersionedStream;
}

std::string typeName(uint16_t type) {
  std::string name;
  if ((type & kVectorBit) != 0) name += "VT_VECTOR|";
  if ((type & kArrayBit) != 0) name += "VT_ARRAY|";
  const uint16_t other = type & static_cast<uint16_t>(~(kVectorBit | kArrayBit));
  if (const TypeFacts* const facts = factsOf(other)) return name + facts->name;
  char number[16];
  std::snprintf(number, sizeof number, "VT_0x%X", other);
  return name + number;
}

size_t Value::elementCount() const {
  if (!isSequence()) return 0;
  const size_t size = fixedSizeOf(baseType());
  return size == 0 ? elements.size() : bytes.size() / size;
}

Value Value::element(size_t index) const {
  const size_t size = fixedSizeOf(baseType());
  if (size == 0) return elements[index];
  Value single;
  single.type = baseType();
  single.bytes = bytes.substr(index * size, size);
  return single;
}

int64_t signedOf(const Value& value) {
  const uint64_t bits = littleEndian(value.bytes);
  switch (value.bytes.size()) {
    case 1:
      return static_cast<int8_t>(bits);
    case 2:
      return static_cast<int16_t>(bits);
    case 4:
      return static_cast<int32_t>(bits);
    default:
      return static_cast<int64_t>(bits);
  }
}

uint64_t unsignedOf(const Value& value) { return littleEndian(value.bytes); }

double realOf(const Value& value) {
  const uint64_t bits = littleEndian(value.bytes);
  if (value.bytes.size() == 4)
    return static_cast<double>(std::bit_cast<float>(static_cast<uint32_t>(bits)));
  return std::bit_cast<double>(bits);
}

bool truthOf(const Value& value) { return littleEndian(value.bytes) != 0; }

std::string decimalOf(const Value& value) {
  if (value.baseType() == kCurrency) {
    const int64_t amount = signedOf(value);
    const uint64_t size =
        amount < 0 ? ~static_cast<uint64_t>(amount) + 1 : static_cast<uint64_t>(amount);
    return scaled(std::to_string(size), 4, amount < 0);
  }
  if (value.baseType() != kDecimal || value.bytes.size() != 16) return "";
  const std::string_view bytes = value.bytes;
  const auto limb = [&](size_t at) {
    return static_cast<uint32_t>(littleEndian(bytes.substr(at, 4)));
  };
  // No decimal has more places than its digits could fill.
  constexpr uint8_t kMostPlaces = 28;
  const auto scale = static_cast<uint8_t>(bytes[2]);
  if (scale > kMostPlaces) return "";
  return scaled(digitsOf(limb(4), limb(12), limb(8)), scale, (bytes[3] & 0x80) != 0);
}

std::string_view clipboardBytes(const Value& value) {
  const std::string_view bytes = value.bytes;
  return bytes.substr(std::min(bytes.size(), clipboardHeaderSize(value)));
}

std::string clipboardFormat(const Value& value) {
  const std::string_view bytes = value.bytes;
  const uint32_t tag = tagOf(value);
  const size_t header = clipboardHeaderSize(value);
  if (bytes.size() < header || bytes.size() < 4) return "";
  const std::string_view name = bytes.substr(4, header - 4);
  if (tag == kWindowsTag) return windowsFormatName(littleEndian(name));
  if (tag == kMacintoshTag) return "Macintosh format " + std::to_string(littleEndian(name));
  if (tag == kFormatIdTag) return "format " + guidText(name);
  return std::string(name.substr(0, name.find('\0')));
}

std::string guidText(std::string_view guid) {
  if (guid.size() != 16) return "";
  const auto number = [&](size_t at, size_t size) {
    return static_cast<unsigned>(littleEndian(guid.substr(at, size)));
  };
  char text[40];
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                number(0, 4), number(4, 2), number(6, 2), number(8, 1), number(9, 1), number(10, 1),
                number(11, 1), number(12, 1), number(13, 1), number(14, 1), number(15, 1));
  return text;
}

Value numberValue(uint16_t type, uint64_t bits) {
  Value value;
  value.type = type;
  value.bytes = bytesOf(bits, fixedSizeOf(type));
  return value;
}

Value booleanValue(bool truth) { return numberValue(kBool, truth ? 0xFFFF : 0); }

Value realValue(double real) { return numberValue(kR8, std::bit_cast<uint64_t>(real)); }

}  // namespace ksv_kit::properties
