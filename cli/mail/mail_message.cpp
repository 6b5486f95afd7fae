#include "cli/mail/mail_message.h"

#include <algorithm>

#include "kit/charsets/name_matching.h"

namespace ksv_cli {

const MailField* MailPart::find(std::string_view name) const {
  const auto found = std::ranges::find_if(
      fields, [&](const MailField& field) { return ksv_kit::isSameButForCase(field.name, name); });
  return found == fields.end() ? nullptr : &*found;
}

ParameterField MailPart::parameters(std::string_view name) const {
  const MailField* field = find(name);
  return field == nullptr ? ParameterField() : parameterField(field->value);
}

std::optional<std::string> MailPart::declaredCharset() const {
  const ParameterField field = parameters("Content-Type");
  const HeaderParameter* charset = field.find("charset");
  if (charset == nullptr) return std::nullopt;
  const std::string name = plainValue(*charset);
  if (name.empty()) return std::nullopt;
  return name;
}

std::optional<std::string> MailPart::disposition() const {
  const std::string value = parameters("Content-Disposition").value;
  if (value.empty()) return std::nullopt;
  return value;
}

std::optional<std::string> MailPart::transferEncoding() const {
  const MailField* field = find("Content-Transfer-Encoding");
  if (field == nullptr) return std::nullopt;
  return ksv_kit::lowered(field->value);
}

bool MailPart::isIn(const MailPart& other) const {
  return path.size() > other.path.size() && path.starts_with(other.path) &&
         path[other.path.size()] == '.';
}

std::string FieldTexts::text(const std::vector<HeaderRun>& runs) {
  std::string text;
  for (const HeaderRun& run : runs) {
    MailText read = run.charset ? charsets_.read(run.bytes, run.charset)
                                : charsets_.readField(run.bytes, neighbour_);
    text += read.text;
    invalidBytes_ += read.invalidBytes;
  }
  return text;
}

std::optional<std::string> fileNameOf(const MailPart& part, FieldTexts& texts) {
  const ParameterField disposition = part.parameters("Content-Disposition");
  const ParameterField type = part.parameters("Content-Type");
  const HeaderParameter* name = disposition.find("filename");
  if (name == nullptr) name = type.find("name");
  if (name == nullptr) return std::nullopt;
  return texts.text(name->value);
}

}  // namespace ksv_cli
