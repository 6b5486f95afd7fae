// Finds out in which charset a text is written, for conversion: rather no answer than a
// wrong one.
//
// It asks the judge of the library, with the language of the texts where that is known, and takes
// an answer that is likely enough and that nothing speaks against.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cli/text/detection.h"
#include "cli/text/rereadable_text.h"
#include "cli/text/text_language.h"
#include "kit/charsets/charset_names.h"
#include "ksv.hpp"

namespace ksv_cli {

using ksv_kit::CharsetNames;

struct JudgedText {
  std::unique_ptr<ByteSource> source;
  ChosenSource chosen;
};

class CharsetJudge {
 public:
  // guess: where no charset is likely enough, the likeliest is taken.
  // isSupposed: the language is that of the user, who has not said that the texts are in it.
  CharsetJudge(const CharsetNames& names, TextLanguage language, bool guess,
               bool isSupposed = false);

  // Throws Failure, with the charsets that it may be in, when none is clear, and ksv::Error. May be
  // called from several threads.
  JudgedText judge(RereadableText& text) const;

 private:
  struct Answer {
    ksv::Detection found;
    bool isClear;  // its first guess is likely enough
  };

  ChosenSource choose(RereadableText& text) const;
  Answer answerFor(RereadableText& text) const;
  std::optional<ChosenSource> declaredSource(RereadableText& text) const;
  ChosenSource chosenSource(const ksv::Guess& guess) const;

  const CharsetNames& names_;
  const TextLanguage language_;
  const bool guess_;
  const bool isSupposed_;
};

}  // namespace ksv_cli
