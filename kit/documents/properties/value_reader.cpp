#include "kit/documents/properties/value_reader.h"

#include <utility>

namespace ksv_kit::properties {
namespace {

// The format has two: a vector of variants, of which none is a vector of variants.
constexpr int kDeepest = 8;

class ValueReader {
 public:
  enum class Texts { kUnfilled, kFilled };

  ValueReader(Bytes bytes, uint64_t at, Texts texts) : cursor_(bytes, at), texts_(texts) {}

  ValueEnd readTyped(Value& value, int depth);

  size_t place() const { return cursor_.place(); }
  // Whether each text in vectors ends with a zero, and nothing stands where nothing has to.
  bool isOrderly() const { return isOrderly_; }
  bool hasTextsInVectors() const { return hasTextsInVectors_; }

 private:
  ValueEnd readSingle(Value& value);
  ValueEnd readSequence(Value& value, int depth);
  ValueEnd readCount(Value& value, uint64_t& count);
  ValueEnd readElements(Value& value, uint64_t count, int depth);
  ValueEnd readElement(Value& value, uint16_t baseType, int depth);
  bool readCounted(size_t unit, std::string& bytes);
  void lookAtText(const Value& value);

  ByteCursor cursor_;
  const Texts texts_;
  bool isOrderly_ = true;
  bool hasTextsInVectors_ = false;
};

ValueEnd ValueReader::readTyped(Value& value, int depth) {
  if (depth > kDeepest) return ValueEnd::kTooDeep;
  uint32_t type = 0;
  uint32_t reserved = 0;
  if (!cursor_.take16(type) || !cursor_.take16(reserved)) return ValueEnd::kCut;
  if (reserved != 0) isOrderly_ = false;
  value.type = static_cast<uint16_t>(type);
  return value.isSequence() ? readSequence(value, depth) : readSingle(value);
}

bool ValueReader::readCounted(size_t unit, std::string& bytes) {
  uint32_t count = 0;
  std::string_view taken;
  if (!cursor_.take32(count) || !cursor_.take(uint64_t{count} * unit, taken)) return false;
  bytes += taken;
  return true;
}

ValueEnd ValueReader::readSingle(Value& value) {
  std::string_view taken;
  bool isThere = false;
  switch (layoutOf(value.baseType())) {
    case Layout::kFixed:
      isThere = cursor_.take(fixedSizeOf(value.baseType()), taken);
      value.bytes = taken;
      break;
    case Layout::kCounted:
      isThere = readCounted(1, value.bytes);
      break;
    case Layout::kWide:
      isThere = readCounted(2, value.bytes);
      break;
    case Layout::kVersioned:
      isThere = cursor_.take(16, taken);
      value.bytes = taken;
      isThere = isThere && readCounted(1, value.bytes);
      break;
    case Layout::kVariant:
    case Layout::kUnknown:
      return ValueEnd::kUnknownType;
  }
  return isThere ? ValueEnd::kWhole : ValueEnd::kCut;
}

ValueEnd ValueReader::readCount(Value& value, uint64_t& count) {
  uint32_t number = 0;
  if ((value.type & kArrayBit) == 0) {
    if (!cursor_.take32(number)) return ValueEnd::kCut;
    count = number;
    return ValueEnd::kWhole;
  }
  uint32_t type = 0;
  if (!cursor_.take32(type) || !cursor_.take32(number)) return ValueEnd::kCut;
  count = number == 0 ? 0 : 1;
  for (uint32_t i = 0; i < number; ++i) {
    uint32_t size = 0;
    uint32_t lowest = 0;
    if (!cursor_.take32(size) || !cursor_.take32(lowest)) return ValueEnd::kCut;
    value.dimensions.push_back({size, static_cast<int32_t>(lowest)});
    // More elements than bytes are too many, however many more.
    if (size != 0 && count > UINT32_MAX / size)
      count = UINT32_MAX;
    else
      count *= size;
  }
  return ValueEnd::kWhole;
}

ValueEnd ValueReader::readSequence(Value& value, int depth) {
  const Layout layout = layoutOf(value.baseType());
  const size_t size = fixedSizeOf(value.baseType());
  const bool isBoth = (value.type & kVectorBit) != 0 && (value.type & kArrayBit) != 0;
  if (isBoth || layout == Layout::kUnknown || (layout == Layout::kFixed && size == 0))
    return ValueEnd::kUnknownType;
  uint64_t count = 0;
  if (const ValueEnd end = readCount(value, count); end != ValueEnd::kWhole) return end;
  if (layout != Layout::kFixed) return readElements(value, count, depth);
  std::string_view taken;
  if (!cursor_.take(count * size, taken)) return ValueEnd::kCut;
  value.bytes = taken;
  return ValueEnd::kWhole;
}

ValueEnd ValueReader::readElements(Value& value, uint64_t count, int depth) {
  for (uint64_t i = 0; i < count; ++i) {
    Value element;
    const size_t begin = cursor_.place();
    const ValueEnd end = readElement(element, value.baseType(), depth);
    if (end != ValueEnd::kWhole) return end;
    const bool isOfCodePage = !element.isSequence() && isCodePageText(element.baseType());
    if (isOfCodePage) lookAtText(element);
    if (!isOfCodePage || texts_ == Texts::kFilled) cursor_.alignFrom(begin);
    value.elements.push_back(std::move(element));
  }
  return ValueEnd::kWhole;
}

ValueEnd ValueReader::readElement(Value& value, uint16_t baseType, int depth) {
  if (layoutOf(baseType) == Layout::kVariant) return readTyped(value, depth + 1);
  value.type = baseType;
  return readSingle(value);
}

void ValueReader::lookAtText(const Value& value) {
  hasTextsInVectors_ = true;
  if (!value.bytes.empty() && value.bytes.back() != '\0') isOrderly_ = false;
}

}  // namespace

ReadValue readValue(Bytes bytes, uint64_t at) {
  const auto readWith = [&](ValueReader::Texts texts, bool& isLikely) {
    ValueReader reader(bytes, at, texts);
    ReadValue result;
    result.end = reader.readTyped(result.value, 0);
    result.behind = reader.place();
    result.looked = result.behind - static_cast<size_t>(at);
    isLikely =
        !reader.hasTextsInVectors() || (result.end == ValueEnd::kWhole && reader.isOrderly());
    return result;
  };
  bool isLikely = false;
  ReadValue unfilled = readWith(ValueReader::Texts::kUnfilled, isLikely);
  if (isLikely) return unfilled;
  ReadValue filled = readWith(ValueReader::Texts::kFilled, isLikely);
  const bool isBetter =
      filled.end == ValueEnd::kWhole && (isLikely || unfilled.end != ValueEnd::kWhole);
  const size_t looked = unfilled.looked + filled.looked;
  ReadValue chosen = std::move(isBetter ? filled : unfilled);
  chosen.looked = looked;
  return chosen;
}

}  // namespace ksv_kit::properties
