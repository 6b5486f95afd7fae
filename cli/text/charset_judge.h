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
#include <string_view>
#include <vector>

#include "cli/charsets/charset_names.h"
#include "cli/text/byte_facts.h"
#include "cli/text/language_model.h"
#include "cli/text/rereadable_text.h"
#include "cli/text/single_byte_tables.h"
#include "cli/text/text_detection.h"

namespace ksv_cli {

// The language of the texts: one of the first four models; none: any.
using TextLanguage = std::optional<Language>;

// "ja", "zh-cn", "zh-tw", "ko" or "any".
TextLanguage textLanguageNamed(std::string_view name);
// That of the user's environment: LC_ALL, LC_CTYPE or LANG.
TextLanguage textLanguageOfUser();

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

 private:
  struct Reading;

  std::optional<ChosenSource> byMark(const std::vector<uint8_t>& beginning) const;
  std::optional<ChosenSource> byDeclaration(RereadableText& text) const;
  std::optional<ChosenSource> byForm(const ByteFacts& facts) const;
  ChosenSource byReadings(RereadableText& text, const ByteFacts& facts) const;

  std::vector<Reading> readings(RereadableText& text, const ByteFacts& facts) const;
  void addCharsetsOfPairs(RereadableText& text, const ByteFacts& facts,
                          std::vector<Reading>& readings) const;
  void addUnicodeForms(RereadableText& text, const ByteFacts& facts,
                       std::vector<Reading>& readings) const;
  void addSingleByteCharsets(const ByteFacts& facts, std::vector<Reading>& readings) const;
  ChosenSource choose(const std::vector<Reading>& readings, const ByteFacts& facts) const;
  static ChosenSource chosenReading(const Reading& reading);
  uint64_t leastLead() const;
  uint64_t clearLead(const Reading& best, const Reading& other, const ByteFacts& facts) const;
  uint64_t leadOverUnknown(const ByteFacts& facts) const;
  std::vector<std::string> rivals(const std::vector<Reading>& readings, const Reading& best,
                                  const ByteFacts& facts) const;

  const CharsetNames& names_;
  const TextLanguage language_;
  const bool guess_;
  // Of texts that say too little for a language that is only supposed; null where none is.
  const std::unique_ptr<const CharsetJudge> withoutLanguage_;
  const SingleByteTables singleBytes_;
};

}  // namespace ksv_cli
