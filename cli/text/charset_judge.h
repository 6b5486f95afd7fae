// Finds out in which charset a text is written, for conversion: rather no answer than a
// wrong one.
//
// The text is looked at as a whole. What decides, in this order: a byte-order mark; a
// declaration under which the text is valid; the escape sequences of ISO-2022-JP; UTF-8
// with a character of several bytes; a text of ASCII only is ASCII. Else each charset reads the
// text by its real tables, and of the readings that are valid the one is taken whose
// characters are the most usual ones in its language, if it leads clearly.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/text/byte_facts.h"
#include "cli/text/detection.h"
#include "cli/text/rereadable_text.h"
#include "cli/text/single_byte_tables.h"
#include "cli/text/text_language.h"
#include "kit/charsets/charset_names.h"

namespace ksv_cli {

using ksv_kit::CharsetNames;

struct JudgedText {
  std::unique_ptr<ByteSource> source;
  ChosenSource chosen;
};

class CharsetJudge {
 public:
  // guess: where no reading leads clearly, the first is taken.
  // isSupposed: the language is that of the user, who has not said that the texts are in it.
  CharsetJudge(const CharsetNames& names, TextLanguage language, bool guess,
               bool isSupposed = false);

  // Throws Failure, with the charsets that it may be in, when none is clear. May be called
  // from several threads.
  JudgedText judge(const std::string& input) const;
  // The same of a text that is at hand already.
  JudgedText judge(RereadableText& text) const;

 private:
  std::optional<ChosenSource> byMark(const std::vector<uint8_t>& beginning) const;
  std::optional<ChosenSource> byDeclaration(RereadableText& text) const;
  std::optional<ChosenSource> byForm(const ByteFacts& facts) const;
  ChosenSource byReadings(RereadableText& text, const ByteFacts& facts) const;

  const CharsetNames& names_;
  const TextLanguage language_;
  const bool guess_;
  const bool isSupposed_;
  const SingleByteTables singleBytes_;
};

}  // namespace ksv_cli
