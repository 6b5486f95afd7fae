// A message, taken apart.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/mail/header_parameters.h"
#include "cli/mail/header_words.h"
#include "cli/mail/mail_charsets.h"
#include "cli/mail/stored_message.h"
#include "cli/mail_module/mail_module.h"

namespace ksv_cli {

struct MailField {
  std::string name;
  std::string value;  // unfolded, otherwise as it stands there
};

struct MailPart {
  std::string path;  // "1"; of its parts "1.1", "1.2"
  std::string type;
  ksv_mail_kind kind = KSV_MAIL_LEAF;
  std::vector<MailField> fields;

  // Of a leaf.
  uint64_t size = 0;      // without the transfer encoding
  uint64_t badBytes = 0;  // of the transfer encoding
  std::string sha256;
  bool isText = false;                 // to be read, and no attachment
  std::string content;                 // of a text: the bytes
  bool isCutShort = false;             // there are more than these
  std::optional<std::string> charset;  // that is declared
  std::optional<std::string> fileName;
  std::string savedAs;  // the path; empty: nowhere

  const MailField* find(std::string_view name) const;
  ParameterField parameters(std::string_view name) const;
  std::optional<std::string> declaredCharset() const;
  std::optional<std::string> disposition() const;  // "attachment", "inline"
  std::optional<std::string> transferEncoding() const;

  // Whether it stands in the other one.
  bool isIn(const MailPart& other) const;
};

struct MailMessage {
  uint64_t index = 0;
  uint64_t offset = 0;
  uint64_t size = 0;
  std::vector<MailPart> parts;  // each behind the one it stands in, the message itself in front
  std::vector<MailProblem> problems;
  uint64_t untoldProblems = 0;
  std::optional<std::string> charset;  // what a part declares first
};

// Fields as UTF-8, with what was lost on the way.
class FieldTexts {
 public:
  // charsets stays the caller's. neighbour: see MailCharsets::readField.
  FieldTexts(const MailCharsets& charsets, std::optional<std::string> neighbour)
      : charsets_(charsets), neighbour_(std::move(neighbour)) {}

  std::string text(std::string_view field) { return text(headerRuns(field)); }
  std::string text(const std::vector<HeaderRun>& runs);
  uint64_t invalidBytes() const { return invalidBytes_; }

 private:
  const MailCharsets& charsets_;
  const std::optional<std::string> neighbour_;
  uint64_t invalidBytes_ = 0;
};

// The name of the file that the part is, as UTF-8.
std::optional<std::string> fileNameOf(const MailPart& part, FieldTexts& texts);

}  // namespace ksv_cli
