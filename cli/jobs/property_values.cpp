#include "cli/jobs/property_values.h"

#include <cmath>
#include <string_view>
#include <vector>

#include "cli/jobs/result_line.h"
#include "cli/system/base64.h"
#include "kit/documents/properties/times.h"

namespace ksv_cli {
namespace {

using nlohmann::ordered_json;
using properties::Value;

std::string withPlainLineEnds(const std::string& text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r') {
      plain += text[i];
      continue;
    }
    plain += '\n';
    if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
  }
  return plain;
}

ordered_json bytesField(std::string_view bytes) {
  ordered_json field = emptyRecord();
  field["base64"] = base64(bytes);
  return field;
}

ordered_json clipboardField(const Value& value) {
  ordered_json field = emptyRecord();
  field["format"] = properties::clipboardFormat(value);
  field["base64"] = base64(properties::clipboardBytes(value));
  return field;
}

// A time beyond the calendar stays a number.
ordered_json timeField(uint64_t time) {
  const std::string text = properties::isoTime(time);
  return text.empty() ? ordered_json(time) : ordered_json(text);
}

ordered_json dateField(double days) {
  const std::string text = properties::isoDate(days);
  return text.empty() ? ordered_json(days) : ordered_json(text);
}

ordered_json versionedField(const Value& value) {
  ordered_json field = emptyRecord();
  field["version"] = properties::guidText(std::string_view(value.bytes).substr(0, 16));
  field["stream"] = value.text;
  return field;
}

ordered_json singleValue(const Value& value) {
  using namespace properties;
  if (value.isText()) {
    if (value.baseType() == kVersionedStream) return versionedField(value);
    return withPlainLineEnds(value.text);
  }
  switch (formOf(value.baseType())) {
    case Form::kNothing:
      return nullptr;
    case Form::kInteger:
      return signedOf(value);
    case Form::kNatural:
      return unsignedOf(value);
    case Form::kReal:
      return std::isfinite(realOf(value)) ? ordered_json(realOf(value)) : ordered_json(nullptr);
    case Form::kBoolean:
      return truthOf(value);
    case Form::kTime:
      return timeField(unsignedOf(value));
    case Form::kDate:
      return dateField(realOf(value));
    case Form::kDecimal:
      return decimalOf(value);
    case Form::kClassId:
      return guidText(value.bytes);
    case Form::kClipboard:
      return clipboardField(value);
    case Form::kBytes:
      break;
  }
  return bytesField(value.bytes);
}

ordered_json elementsOf(const Value& value) {
  // Bytes by the thousand are no numbers that anyone would read.
  if (value.baseType() == properties::kUi1) return bytesField(value.bytes);
  ordered_json elements = ordered_json::array();
  for (size_t i = 0; i < value.elementCount(); ++i) elements.push_back(valueOf(value.element(i)));
  return elements;
}

ordered_json dimensionsOf(const Value& value) {
  ordered_json dimensions = ordered_json::array();
  for (const properties::Dimension& dimension : value.dimensions) {
    ordered_json one = emptyRecord();
    one["size"] = dimension.size;
    one["lowest"] = dimension.lowest;
    dimensions.push_back(std::move(one));
  }
  return dimensions;
}

// What the bits say that documents keep of who may do what.
ordered_json securityField(int64_t bits) {
  constexpr const char* kWords[] = {"password", "readOnlyRecommended", "readOnlyEnforced",
                                    "locked"};
  ordered_json words = ordered_json::array();
  for (size_t i = 0; i < std::size(kWords); ++i)
    if ((bits >> i & 1) != 0) words.push_back(kWords[i]);
  return words.empty() ? ordered_json(nullptr) : words;
}

// Headings and how many parts each has.
ordered_json headingsField(const Value& value) {
  ordered_json headings = ordered_json::array();
  for (size_t i = 0; i + 1 < value.elements.size(); i += 2) {
    ordered_json heading = emptyRecord();
    heading["heading"] = valueOf(value.elements[i]);
    heading["parts"] = valueOf(value.elements[i + 1]);
    headings.push_back(std::move(heading));
  }
  return headings;
}

ordered_json packedField(const Value& value, std::string_view key) {
  if (key == "headingPairs" && value.baseType() == properties::kVariant)
    return headingsField(value);
  if (key == "applicationVersion" && value.type == properties::kI4) {
    const uint64_t version = properties::unsignedOf(value);
    return std::to_string(version >> 16) + "." + std::to_string(version & 0xFFFF);
  }
  return nullptr;
}

ordered_json thumbnailField(const Value& value) {
  ordered_json field = emptyRecord();
  field["format"] = properties::clipboardFormat(value);
  field["size"] = properties::clipboardBytes(value).size();
  return field;
}

// Set once a document has been printed, edited, saved.
bool isNoTimeYet(const Value& value) {
  return value.type == properties::kFileTime && properties::unsignedOf(value) == 0;
}

// Without the padding four characters stand for three bytes.
std::string sizeInWords(std::string_view base64) {
  const size_t padding = base64.size() - (base64.find_last_not_of('=') + 1);
  return std::to_string(base64.size() / 4 * 3 - padding) + " bytes";
}

std::string objectInWords(const ordered_json& value) {
  if (value.contains("base64"))
    return (value.contains("format") ? inWords(value["format"]) + ", " : "") +
           sizeInWords(value["base64"].get_ref<const std::string&>());
  if (value.contains("heading"))
    return inWords(value["heading"]) + " (" + inWords(value["parts"]) + ")";
  if (value.contains("size") && value.contains("format"))
    return inWords(value["format"]) + ", " + inWords(value["size"]) + " bytes";
  std::string words;
  for (const auto& [key, field] : value.items())
    words += (words.empty() ? "" : " ") + key + "=" + inWords(field);
  return words;
}

}  // namespace

ordered_json valueOf(const Value& value) {
  if (properties::layoutOf(value.baseType()) == properties::Layout::kUnknown)
    return bytesField(value.bytes);
  if (!value.isSequence()) return singleValue(value);
  if (value.dimensions.empty()) return elementsOf(value);
  ordered_json array = emptyRecord();
  array["dimensions"] = dimensionsOf(value);
  array["elements"] = elementsOf(value);
  return array;
}

ordered_json valueOf(const Value& value, const properties::KnownProperty& known) {
  using properties::Meaning;
  if (isNoTimeYet(value) || (value.isText() && value.text.empty())) return nullptr;
  switch (known.meaning) {
    case Meaning::kDuration:
      if (value.type == properties::kFileTime)
        return properties::isoDuration(properties::unsignedOf(value));
      break;
    case Meaning::kThumbnail:
      if (value.type == properties::kClipboard) return thumbnailField(value);
      break;
    case Meaning::kSecurity:
      if (value.type == properties::kI4) return securityField(properties::signedOf(value));
      break;
    case Meaning::kPacked:
      return packedField(value, known.key);
    case Meaning::kAsTyped:
      break;
  }
  return valueOf(value);
}

std::string inWords(const ordered_json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_object()) return objectInWords(value);
  if (!value.is_array()) return value.is_null() ? "" : value.dump();
  std::string words;
  for (const ordered_json& element : value) words += (words.empty() ? "" : ", ") + inWords(element);
  return words;
}

}  // namespace ksv_cli
