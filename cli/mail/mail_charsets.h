// The texts of mails, each from its own charset, as UTF-8.
//
// What a text declares is taken if the text is valid so, in the charset that mail programs mean by
// the name: Windows-1252 is sent as ISO-8859-1, and Windows-31J as Shift_JIS. Everything else is
// judged as a text is that declares nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cli/text/charset_judge.h"
#include "cli/text/text_language.h"
#include "kit/charsets/charset_names.h"
#include "ksv.h"

namespace ksv_cli {

using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;

struct MailText {
  std::string text;     // UTF-8
  std::string charset;  // the one that it was read in
  std::string reason;   // why that
  uint64_t invalidBytes = 0;
};

struct MailCharsetTerms {
  std::optional<std::string> assumed;  // where nothing is declared
  ksv_policy invalid = KSV_REPLACE;
  TextLanguage language;
  bool languageIsSupposed = true;
};

class MailCharsets {
 public:
  // names stays the caller's. Throws UsageError when the assumed charset is none.
  MailCharsets(const CharsetNames& names, const MailCharsetTerms& terms);

  // declared: as the part or the encoded word says. Throws Failure where the policy wants it, or
  // the system refuses something. May be called from several threads.
  MailText read(std::string_view bytes, const std::optional<std::string>& declared) const;
  // Of a field, whose characters stand there without being encoded. neighbour: what a text of the
  // same message declares, which the program that wrote both will have meant.
  MailText readField(std::string_view bytes, const std::optional<std::string>& neighbour) const;

 private:
  std::optional<MailText> asDeclared(std::string_view bytes, const std::string& declared) const;
  std::optional<MailText> asAssumed(std::string_view bytes) const;
  std::optional<MailText> asJudged(std::string_view bytes, bool guess) const;
  MailText asGoodAsMayBe(std::string_view bytes, const std::optional<std::string>& declared) const;

  // None when the bytes are not wholly of the charset.
  std::optional<std::string> soundText(std::string_view bytes, const CharsetChoice& charset) const;
  std::string damagedText(std::string_view bytes, const CharsetChoice& charset,
                          uint64_t& invalidBytes) const;

  const CharsetNames& names_;
  const MailCharsetTerms terms_;
  const std::optional<CharsetChoice> assumed_;
  const CharsetChoice utf8_;
  const CharsetJudge careful_;
  const CharsetJudge guessing_;
};

}  // namespace ksv_cli
