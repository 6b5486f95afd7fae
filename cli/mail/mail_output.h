// What a message looks like: as text for people, or as a record.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/mail/mail_charsets.h"
#include "cli/mail/mail_message.h"
#include "cli/mail_module/mail_module.h"

namespace ksv_cli {

// Which fields a text shows.
struct ShownFields {
  enum class Which { kUsual, kAll, kNone, kNamed };
  Which which = Which::kUsual;
  std::vector<std::string> names = {};  // of kNamed
};

// "usual", "all", "none", or names with commas between.
ShownFields shownFieldsNamed(const std::string& list);

// With what was lost on the way.
struct ShownMail {
  std::string text;  // UTF-8, with line ends
  uint64_t invalidBytes = 0;
};
ShownMail mailAsText(const MailMessage& message, const MailCharsets& charsets,
                     const ShownFields& fields);

struct RecordedMail {
  nlohmann::ordered_json record;
  uint64_t invalidBytes = 0;
};
// record: what it begins with.
RecordedMail mailAsRecord(nlohmann::ordered_json record, const MailMessage& message,
                          const MailCharsets& charsets, const ksv_mail_reader& reader);

// "2024-02-29T12:34:56+09:00"; empty of a time that has no such form.
std::string rfc3339(int64_t seconds, int32_t minutesAhead);

}  // namespace ksv_cli
