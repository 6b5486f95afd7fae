#include "kit/documents/properties/property_set_writer.h"

#include <string_view>
#include <utility>
#include <vector>

namespace ksv_kit::properties {
namespace {

void append16(std::string& bytes, uint32_t value) {
  bytes.push_back(static_cast<char>(value));
  bytes.push_back(static_cast<char>(value >> 8));
}

void append32(std::string& bytes, uint32_t value) {
  append16(bytes, value & 0xFFFF);
  append16(bytes, value >> 16);
}

void appendSize(std::string& bytes, size_t size) { append32(bytes, static_cast<uint32_t>(size)); }

// Up to four bytes from the place given.
void fill(std::string& bytes, size_t from = 0) {
  while ((bytes.size() - from) % 4 != 0) bytes.push_back('\0');
}

class ValueWriter {
 public:
  ValueWriter(uint16_t codePage, std::string& bytes) : codePage_(codePage), bytes_(bytes) {}

  void writeTyped(const Value& value) {
    append16(bytes_, value.type);
    append16(bytes_, 0);
    if (value.isSequence())
      writeSequence(value);
    else
      writeSingle(value);
  }

 private:
  void writeSingle(const Value& value);
  void writeSequence(const Value& value);
  bool staysUnfilled(const Value& text) const;

  const uint16_t codePage_;
  std::string& bytes_;
};

void ValueWriter::writeSingle(const Value& value) {
  const Layout layout = layoutOf(value.baseType());
  std::string_view rest = value.bytes;
  if (layout == Layout::kVersioned) {
    bytes_ += rest.substr(0, 16);
    rest.remove_prefix(16);
  }
  if (layout == Layout::kCounted || layout == Layout::kVersioned) appendSize(bytes_, rest.size());
  if (layout == Layout::kWide) appendSize(bytes_, rest.size() / 2);
  bytes_ += rest;
}

// Texts of bytes follow each other in vectors without anything between, as writers of documents
// have always had it; others begin at multiples of four.
bool ValueWriter::staysUnfilled(const Value& text) const {
  return !text.isSequence() && isCodePageText(text.baseType()) && codePage_ != kUtf16Page;
}

void ValueWriter::writeSequence(const Value& value) {
  if ((value.type & kArrayBit) != 0) {
    append32(bytes_, value.baseType());
    appendSize(bytes_, value.dimensions.size());
    for (const Dimension& dimension : value.dimensions) {
      append32(bytes_, dimension.size);
      append32(bytes_, static_cast<uint32_t>(dimension.lowest));
    }
  } else {
    appendSize(bytes_, value.elementCount());
  }
  bytes_ += value.bytes;
  for (const Value& element : value.elements) {
    const size_t begin = bytes_.size();
    if (value.baseType() == kVariant)
      writeTyped(element);
    else
      writeSingle(element);
    if (!staysUnfilled(element)) fill(bytes_, begin);
  }
}

std::string writtenDictionary(const Section& section) {
  std::string bytes;
  appendSize(bytes, section.dictionary.size());
  const bool isWide = section.codePage == kUtf16Page;
  for (const DictionaryEntry& entry : section.dictionary) {
    append32(bytes, entry.id);
    appendSize(bytes, entry.bytes.size() / (isWide ? 2 : 1));
    bytes += entry.bytes;
    if (isWide) fill(bytes);
  }
  fill(bytes);
  return bytes;
}

std::string writtenSection(const Section& section) {
  std::vector<std::pair<uint32_t, std::string>> parts;
  if (!section.dictionary.empty()) parts.emplace_back(kDictionaryId, writtenDictionary(section));
  for (const Property& property : section.properties) {
    std::string bytes = property.stored;
    if (bytes.empty()) bytes = writtenValue(property.value, section.codePage);
    fill(bytes);
    parts.emplace_back(property.id, std::move(bytes));
  }
  std::string list;
  std::string values;
  const size_t listSize = 8 + 8 * parts.size();
  for (const auto& [id, bytes] : parts) {
    append32(list, id);
    appendSize(list, listSize + values.size());
    values += bytes;
  }
  std::string whole;
  appendSize(whole, listSize + values.size());
  appendSize(whole, parts.size());
  return whole + list + values;
}

}  // namespace

std::string writtenValue(const Value& value, uint16_t codePage) {
  std::string bytes;
  ValueWriter(codePage, bytes).writeTyped(value);
  fill(bytes);
  return bytes;
}

std::string written(const PropertySet& set) {
  std::string head;
  append16(head, kByteOrder);
  append16(head, set.version);
  append32(head, set.system);
  head += set.classId;
  appendSize(head, set.sections.size());
  const size_t headSize = head.size() + 20 * set.sections.size();
  std::string sections;
  for (const Section& section : set.sections) {
    head += section.format;
    appendSize(head, headSize + sections.size());
    sections += writtenSection(section);
  }
  return head + sections;
}

}  // namespace ksv_kit::properties
