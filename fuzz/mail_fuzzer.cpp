// A mail or a mailbox, as ksv mail shows it. It has to end, within bounds, with parts that stand
// behind those they are in, places that are in the input, and texts that are UTF-8 and do nothing
// to a terminal.
//
// Input: a byte that chooses the language and what is assumed of texts that declare nothing; the
// input.
#include <nlohmann/json.hpp>
#include <string>

#include "cli/charsets/loaded_rules.h"
#include "cli/mail/mail_charsets.h"
#include "cli/mail/mail_limits.h"
#include "cli/mail/mail_output.h"
#include "cli/mail/mailbox.h"
#include "cli/mail/message_reader.h"
#include "cli/mail/part_saver.h"
#include "cli/mail_module/mail_module.h"
#include "cli/system/escapes.h"
#include "cli/system/memory_streams.h"
#include "fuzz/support.h"
#include "kit/text/unicode_check.h"

namespace {

using namespace ksv_cli;
using ksv_fuzz::require;

bool isUtf8(const std::string& text) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  return ksv_kit::scanUnicode(ksv_kit::UnicodeForm::kUtf8, false, bytes, text.size()).end ==
         ksv_kit::ScanEnd::kAll;
}

MailCharsetTerms termsOf(uint8_t choice) {
  MailCharsetTerms terms;
  if ((choice & 1) != 0) terms.assumed = "windows-1252";
  if ((choice & 2) != 0) terms.language = textLanguageNamed("ja");
  if ((choice & 4) != 0) terms.invalid = KSV_HEX_REFERENCE;
  return terms;
}

void checkParts(const MailMessage& message) {
  require(message.parts.size() <= limits::kMostParts, "parts are bounded");
  size_t textBytes = 0;
  for (size_t i = 0; i < message.parts.size(); ++i) {
    const MailPart& part = message.parts[i];
    require(part.path.starts_with('1') && (i != 0 || part.path == "1"), "parts have paths");
    textBytes += part.content.size();
    if (part.fileName) {
      const std::string name = safeFileName(*part.fileName);
      require(!name.empty() && name.size() <= limits::kLongestSavedName + 8, "names are bounded");
      require(name.find_first_of("/\\:") == std::string::npos && name[0] != '.',
              "names lead nowhere");
    }
  }
  require(textBytes <= limits::kMostTextOfMessage, "texts are bounded");
}

void checkOutput(const MailMessage& message, const MailCharsets& charsets) {
  const ShownMail shown = mailAsText(message, charsets, shownFieldsNamed("all"));
  require(isUtf8(shown.text), "a text is UTF-8");
  for (const char c : shown.text)
    require(!isAsciiControl(c) || c == '\n' || c == '\t', "a text does nothing to a terminal");
  const RecordedMail recorded = mailAsRecord(nlohmann::ordered_json::object(), message, charsets,
                                             *ksv_mail_reader_of_module());
  const std::string line = recorded.record.dump();
  require(line.find('\n') == std::string::npos, "a record is a line");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const RuleBase ruleBase;
  static const CharsetNames names = ruleBase.names();
  ksv_fuzz::Input input(data, size);
  const MailCharsets charsets(names, termsOf(input.byte()));
  const std::string text(input.rest());
  TextSource source(text);
  Mailbox mailbox(source);
  uint64_t last = 0;
  while (const auto stored = mailbox.next()) {
    require(stored->index() == ++last && stored->offset() < text.size(), "mails have places");
    require(stored->size() <= text.size(), "a mail is not longer than its file");
    const MailMessage message =
        readMessage(*ksv_mail_reader_of_module(), charsets, *stored, nullptr);
    for (const MailProblem& problem : message.problems)
      require(!problem.offset || *problem.offset <= text.size(), "problems have places");
    checkParts(message);
    checkOutput(message, charsets);
  }
  return 0;
}
