#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <utility>

#include "cli/mail/mail_addresses.h"
#include "cli/mail/mail_output.h"
#include "kit/charsets/name_matching.h"

namespace ksv_cli {
namespace {

using Record = nlohmann::ordered_json;

template <typename Value>
Record orNull(const std::optional<Value>& value) {
  return value ? Record(*value) : Record();
}

Record emptyObject() { return Record(Record::value_t::object); }

// As texts have them, however they were sent.
std::string withPlainLineEnds(const std::string& text) {
  std::string plain;
  plain.reserve(text.size());
  for (size_t at = 0; at < text.size(); ++at)
    if (text[at] != '\r' || at + 1 == text.size() || text[at + 1] != '\n') plain += text[at];
  return plain;
}

class RecordView {
 public:
  RecordView(const MailMessage& message, const MailCharsets& charsets,
             const ksv_mail_reader& reader)
      : message_(message),
        charsets_(charsets),
        reader_(reader),
        texts_(charsets, message.charset) {}

  RecordedMail record(Record record) {
    record["message"] = message_.index;
    record["offset"] = message_.offset;
    record["size"] = message_.size;
    addFields(record);
    record["parts"] = parts();
    record["problems"] = problems();
    if (message_.untoldProblems != 0) record["untold"] = message_.untoldProblems;
    return {std::move(record), invalidBytes_ + texts_.invalidBytes()};
  }

 private:
  const MailField* field(std::string_view name) const {
    return message_.parts.empty() ? nullptr : message_.parts.front().find(name);
  }

  void addFields(Record& record) {
    for (const auto& [key, name] : {std::pair{"from", "From"},
                                    {"to", "To"},
                                    {"cc", "Cc"},
                                    {"bcc", "Bcc"},
                                    {"replyTo", "Reply-To"},
                                    {"sender", "Sender"}})
      record[key] = addresses(name);
    record["date"] = date();
    record["subject"] = textOf("Subject");
    record["messageId"] = textOf("Message-ID");
    record["headers"] = message_.parts.empty() ? Record::array() : headers(message_.parts.front());
  }

  // A field may be there several times.
  Record addresses(std::string_view name) {
    Record list = Record::array();
    if (message_.parts.empty()) return list;
    for (const MailField& field : message_.parts.front().fields) {
      if (!isNamed(field, name)) continue;
      for (const MailAddress& address : addressesIn(field.value)) {
        Record entry = emptyObject();
        entry["name"] = texts_.text(address.name);
        entry["address"] = texts_.text(address.address);
        list.push_back(std::move(entry));
      }
    }
    return list;
  }

  static bool isNamed(const MailField& field, std::string_view name) {
    return ksv_kit::isSameButForCase(field.name, name);
  }

  Record textOf(std::string_view name) {
    const MailField* found = field(name);
    return found == nullptr ? Record() : Record(texts_.text(found->value));
  }

  Record date() {
    const MailField* found = field("Date");
    int64_t seconds = 0;
    int32_t minutesAhead = 0;
    if (found == nullptr || reader_.date(found->value.c_str(), &seconds, &minutesAhead) == 0)
      return {};
    const std::string text = rfc3339(seconds, minutesAhead);
    return text.empty() ? Record() : Record(text);
  }

  Record headers(const MailPart& part) {
    Record list = Record::array();
    for (const MailField& field : part.fields)
      list.push_back(Record::array({texts_.text(field.name), texts_.text(field.value)}));
    return list;
  }

  Record parts() {
    Record list = Record::array();
    for (size_t index = 0; index < message_.parts.size(); ++index) {
      const MailPart& part = message_.parts[index];
      Record entry = emptyObject();
      entry["path"] = part.path;
      entry["type"] = texts_.text(part.type);
      if (index != 0) entry["headers"] = headers(part);
      if (part.kind == KSV_MAIL_LEAF) addContent(entry, part);
      list.push_back(std::move(entry));
    }
    return list;
  }

  void addContent(Record& entry, const MailPart& part) {
    entry["transferEncoding"] = asText(part.transferEncoding());
    entry["disposition"] = asText(part.disposition());
    entry["fileName"] = orNull(part.fileName);
    entry["size"] = part.size;
    entry["badBytes"] = part.badBytes;
    entry["sha256"] = part.sha256;
    if (!part.savedAs.empty()) entry["savedAs"] = part.savedAs;
    if (part.isText) addText(entry, part);
  }

  void addText(Record& entry, const MailPart& part) {
    const MailText read = charsets_.read(part.content, part.charset);
    invalidBytes_ += read.invalidBytes;
    entry["charset"] = asText(part.charset);
    entry["charsetUsed"] = read.charset;
    entry["charsetReason"] = read.reason;
    entry["invalidBytes"] = read.invalidBytes;
    entry["cutShort"] = part.isCutShort;
    entry["text"] = withPlainLineEnds(read.text);
  }

  // What a field says of a part may be any bytes.
  Record asText(const std::optional<std::string>& value) {
    return value ? Record(texts_.text(*value)) : Record();
  }

  Record problems() const {
    Record list = Record::array();
    for (const MailProblem& problem : message_.problems) {
      Record entry = emptyObject();
      entry["offset"] = orNull(problem.offset);
      entry["reason"] = problem.reason;
      list.push_back(std::move(entry));
    }
    return list;
  }

  const MailMessage& message_;
  const MailCharsets& charsets_;
  const ksv_mail_reader& reader_;
  FieldTexts texts_;
  uint64_t invalidBytes_ = 0;
};

}  // namespace

std::string rfc3339(int64_t seconds, int32_t minutesAhead) {
  using namespace std::chrono;
  const sys_seconds local{std::chrono::seconds{seconds} + minutes{minutesAhead}};
  const sys_days day = floor<days>(local);
  const year_month_day date{day};
  const hh_mm_ss time{local - day};
  const int year = static_cast<int>(date.year());
  const int32_t ahead = minutesAhead < 0 ? -minutesAhead : minutesAhead;
  if (!date.ok() || year < 0 || year > 9999 || ahead >= 24 * 60) return "";
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d%c%02d:%02d", year,
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()), minutesAhead < 0 ? '-' : '+', ahead / 60,
                ahead % 60);
  return text;
}

RecordedMail mailAsRecord(Record record, const MailMessage& message, const MailCharsets& charsets,
                          const ksv_mail_reader& reader) {
  return RecordView(message, charsets, reader).record(std::move(record));
}

}  // namespace ksv_cli
