#include "cli/jobs/result_line.h"

#include "cli/system/base64.h"
#include "cli/system/escapes.h"
#include "kit/text/unicode_check.h"

namespace ksv_cli {

using ksv_kit::ScanEnd;
using ksv_kit::scanUnicode;
using ksv_kit::UnicodeForm;

namespace {

std::string joined(const std::vector<std::string>& words, char between) {
  std::string text;
  for (size_t i = 0; i < words.size(); ++i) {
    if (i != 0) text += between;
    text += words[i];
  }
  return text;
}

bool isUtf8(const std::string& text) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  return scanUnicode(UnicodeForm::kUtf8, false, bytes, text.size()).end == ScanEnd::kAll;
}

}  // namespace

nlohmann::ordered_json emptyRecord() {
  return nlohmann::ordered_json(nlohmann::ordered_json::value_t::object);
}

nlohmann::ordered_json recordOf(const std::string& path, ResultForm form) {
  nlohmann::ordered_json line = emptyRecord();
  if (form == ResultForm::kFull)
    addPath(line, "path", path);
  else
    line["path"] = path;
  return line;
}

void addPath(nlohmann::ordered_json& line, const std::string& field, const std::string& path) {
  line[field] = path;
  if (!isUtf8(path)) line[field + "Bytes"] = base64(path);
}

nlohmann::ordered_json errorField(const Failure& failure) {
  nlohmann::ordered_json error = emptyRecord();
  error["reason"] = failure.reason();
  error["offset"] = nullptr;
  if (failure.offset()) error["offset"] = *failure.offset();
  return error;
}

nlohmann::ordered_json failureRecord(const std::string& path, const Failure& failure) {
  nlohmann::ordered_json record = recordOf(path, ResultForm::kFull);
  record["error"] = errorField(failure);
  return record;
}

std::string nameField(const std::string& name, ResultForm form) {
  return form == ResultForm::kClassic ? name : shownName(name);
}

std::string textLine(const std::vector<std::string>& fields) { return joined(fields, '\t') + "\n"; }

std::string orHyphen(const char* text) { return text == nullptr ? "-" : text; }

std::string joinedByCommas(const std::vector<std::string>& words) {
  return words.empty() ? "-" : joined(words, ',');
}

}  // namespace ksv_cli
