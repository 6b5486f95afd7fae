#include <algorithm>
#include <string_view>

#include "cli/mail/alternatives.h"
#include "cli/mail/mail_output.h"
#include "cli/system/escapes.h"
#include "kit/charsets/name_matching.h"

namespace ksv_cli {
namespace {

constexpr std::string_view kUsualFields[] = {"From", "To", "Cc", "Date", "Subject", "Message-ID"};

// Line ends become those of the system's texts, and control characters, which could do things to a
// terminal, are shown.
std::string forReaders(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  for (size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '\r') {
      if (text.substr(at + 1).starts_with('\n')) continue;
      shown += '\n';
    } else if (isAsciiControl(c) && c != '\n' && c != '\t') {
      shown += "\uFFFD";
    } else {
      shown += c;
    }
  }
  return shown;
}

// In one line.
std::string asLine(std::string text) {
  for (char& c : text)
    if (c == '\n' || c == '\r') c = ' ';
  return forReaders(text);
}

class TextView {
 public:
  TextView(const MailMessage& message, const MailCharsets& charsets, const ShownFields& fields)
      : message_(message),
        charsets_(charsets),
        fields_(fields),
        texts_(charsets, message.charset),
        alternatives_(message) {}

  ShownMail show() {
    for (size_t index = 0; index < message_.parts.size(); ++index) {
      const MailPart& part = message_.parts[index];
      if (alternatives_.isBodyOfMessage(index)) showFields(part);
      showPart(part, index);
    }
    return {std::move(text_), invalidBytes_ + texts_.invalidBytes()};
  }

 private:
  // An empty line stands behind fields and behind texts, if something follows.
  void partFromText() {
    if (isBehindText_) text_ += '\n';
    isBehindText_ = false;
  }

  void showFields(const MailPart& part) {
    const size_t before = text_.size();
    using Which = ShownFields::Which;
    if (fields_.which == Which::kAll)
      for (const MailField& field : part.fields) showField(field);
    if (fields_.which == Which::kNamed)
      for (const std::string& name : fields_.names) showFieldsNamed(part, name);
    if (fields_.which == Which::kUsual)
      for (const std::string_view name : kUsualFields) showFieldsNamed(part, name);
    if (text_.size() != before) text_ += '\n';
  }

  void showFieldsNamed(const MailPart& part, std::string_view name) {
    for (const MailField& field : part.fields)
      if (ksv_kit::isSameButForCase(field.name, name)) showField(field);
  }

  void showField(const MailField& field) {
    text_ += asLine(texts_.text(field.name)) + ": " + asLine(texts_.text(field.value)) + "\n";
  }

  void showPart(const MailPart& part, size_t index) {
    if (part.kind == KSV_MAIL_MULTIPART) return;
    if (part.kind == KSV_MAIL_MESSAGE) {
      partFromText();
      text_ += "[message]\n";
    } else if (!part.isText) {
      showAttachment(part);
    } else if (alternatives_.isRead(index)) {
      showText(part);
    }
  }

  void showAttachment(const MailPart& part) {
    partFromText();
    const std::string name = part.fileName ? asLine(*part.fileName) : "no name";
    text_ += "[attachment: " + name + ", " + asLine(texts_.text(part.type)) + ", " +
             std::to_string(part.size) + (part.size == 1 ? " byte]\n" : " bytes]\n");
  }

  void showText(const MailPart& part) {
    const MailText read = charsets_.read(part.content, part.charset);
    invalidBytes_ += read.invalidBytes;
    const std::string text = forReaders(read.text);
    if (text.empty()) return;
    partFromText();
    if (part.type != "text/plain") text_ += "[" + asLine(texts_.text(part.type)) + "]\n";
    text_ += text;
    if (text_.back() != '\n') text_ += '\n';
    isBehindText_ = true;
  }

  const MailMessage& message_;
  const MailCharsets& charsets_;
  const ShownFields& fields_;
  FieldTexts texts_;
  const Alternatives alternatives_;
  std::string text_;
  bool isBehindText_ = false;
  uint64_t invalidBytes_ = 0;
};

}  // namespace

ShownFields shownFieldsNamed(const std::string& list) {
  using Which = ShownFields::Which;
  if (list == "usual") return {Which::kUsual};
  if (list == "all") return {Which::kAll};
  if (list == "none") return {Which::kNone};
  ShownFields fields{Which::kNamed};
  std::string_view rest = list;
  while (!rest.empty()) {
    const size_t end = std::min(rest.find(','), rest.size());
    fields.names.emplace_back(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return fields;
}

ShownMail mailAsText(const MailMessage& message, const MailCharsets& charsets,
                     const ShownFields& fields) {
  return TextView(message, charsets, fields).show();
}

}  // namespace ksv_cli
