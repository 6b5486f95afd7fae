#include "cli/text/charset_judge.h"

#include <algorithm>
#include <utility>

#include "cli/system/failure.h"
#include "cli/text/reading_choice.h"
#include "cli/text/text_declaration.h"
#include "cli/text/text_readings.h"
#include "kit/text/unicode_check.h"

namespace ksv_cli {

using ksv_kit::ByteOrder;
using ksv_kit::byteOrderMark;
using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;

namespace {

// Of UTF-8 with but a few characters, which other charsets have by chance: how many bytes above 7F
// are few, without any character of three bytes and with.
constexpr uint64_t kFewShortBytes = 32;
constexpr uint64_t kFewLongBytes = 9;

// Of mail the form that has the characters of vendors comes first.
constexpr char kMail[] = "ISO-2022-JP";
constexpr char kMailAsRead[] = "CP50220";
constexpr char kMailWithPlanes[] = "ISO-2022-JP-2004";

// A declaration of a charset whose units are no bytes cannot be meant where it was read.
bool canDeclareItself(const CharsetChoice& charset) {
  return !charset.hasByteOrder() && charset.name != "euc-jp-fix" && charset.name != "oasys_online";
}

// Whether UTF-8 has but so few characters that bytes in another charset may look like them: of
// three bytes each that is rarer, but there are Thai words that do.
bool mayBeChance(const ByteFacts& facts) {
  const auto isUsed = [&](size_t first, size_t end) {
    return std::find(facts.isUsed + first, facts.isUsed + end, true) != facts.isUsed + end;
  };
  if (isUsed(0xF0, 0x100)) return false;
  return facts.highBytes() <= (isUsed(0xE0, 0xF0) ? kFewLongBytes : kFewShortBytes);
}

// Whether a text is mostly ASCII with a few bytes of something else: a word of German is
// a Chinese character to whoever supposes that language.
bool saysLittle(const ByteFacts& facts) {
  constexpr uint64_t kLeastText = 24;
  constexpr uint64_t kFewHighBytes = 8;
  return facts.size >= kLeastText && facts.highBytes() <= kFewHighBytes;
}

}  // namespace

CharsetJudge::CharsetJudge(const CharsetNames& names, TextLanguage language, bool guess,
                           bool isSupposed)
    : names_(names), language_(language), guess_(guess), isSupposed_(isSupposed) {}

JudgedText CharsetJudge::judge(const std::string& input) const {
  RereadableText text(input);
  return judge(text);
}

JudgedText CharsetJudge::judge(RereadableText& text) const {
  if (text.beginning().empty()) {
    const std::optional<CharsetChoice> charset = names_.findSource(kUtf8);
    if (!charset) throw Failure("is empty, and the charset directory does not have UTF-8");
    return {text.release(), {*charset, "read as UTF-8: it is empty"}};
  }
  std::optional<ChosenSource> chosen = byMark(text.beginning());
  if (!chosen) chosen = byDeclaration(text);
  if (chosen) return {text.release(), *chosen};
  const ByteFacts facts = byteFacts(*text.reopen());
  chosen = byForm(facts);
  if (!chosen) chosen = byReadings(text, facts);
  return {text.release(), *chosen};
}

std::optional<ChosenSource> CharsetJudge::byMark(const std::vector<uint8_t>& beginning) const {
  // The mark of UCS-4 begins like that of UTF-16.
  for (const char* name : {kUtf8, "ISO-10646-UCS-4", "UTF-16"}) {
    std::optional<CharsetChoice> charset = names_.findSource(name);
    bool bigEndian = false;
    if (!charset ||
        byteOrderMark(charset->form, false, beginning.data(), beginning.size(), bigEndian) == 0)
      continue;
    if (charset->hasByteOrder()) charset->order = bigEndian ? ByteOrder::kBig : ByteOrder::kLittle;
    return ChosenSource{*charset, reasonFor(charset->display, charset->display, charset->order,
                                            "it begins with a byte-order mark")};
  }
  return std::nullopt;
}

std::optional<ChosenSource> CharsetJudge::byDeclaration(RereadableText& text) const {
  const std::vector<uint8_t>& beginning = text.beginning();
  const std::optional<std::string> name =
      declaredCharset({reinterpret_cast<const char*>(beginning.data()), beginning.size()});
  if (!name) return std::nullopt;
  std::optional<CharsetChoice> charset = names_.findSource(*name);
  if (!charset || !canDeclareItself(*charset)) return std::nullopt;
  const std::string shown = charset->display;
  charset = asItIsRead(*charset, names_);
  if (!isWhollyOf(text, names_, *charset)) return std::nullopt;
  return ChosenSource{*charset,
                      reasonFor(shown, charset->display, ByteOrder::kOpen, "it declares " + *name)};
}

std::optional<ChosenSource> CharsetJudge::byForm(const ByteFacts& facts) const {
  const auto chosen = [&](const char* name, const char* read) -> std::optional<ChosenSource> {
    const std::optional<CharsetChoice> charset = names_.findSource(read);
    if (!charset) return std::nullopt;
    return ChosenSource{*charset, reasonFor(name, read, ByteOrder::kOpen, kItsBytesFit)};
  };
  // Text whose escape sequences name pairs is mail, though it be damaged: then it is told
  // where.
  if (facts.isIso2022 || (facts.designatesPairs && facts.isAscii())) {
    if (facts.designatesPlanes) return chosen(kMailWithPlanes, kMailWithPlanes);
    return chosen(kMail, names_.find(kMailAsRead) ? kMailAsRead : kMail);
  }
  if (facts.hasOddControls()) return std::nullopt;
  if (facts.isAscii()) return chosen(kAscii, kAscii);
  if (facts.isUtf8 && !mayBeChance(facts)) return chosen(kUtf8, kUtf8);
  return std::nullopt;
}

// Texts that say too little for a language that is only supposed are judged without one.
ChosenSource CharsetJudge::byReadings(RereadableText& text, const ByteFacts& facts) const {
  const TextLanguage language = isSupposed_ && saysLittle(facts) ? std::nullopt : language_;
  const std::vector<TextReading> readings = readingsOf(text, facts, names_, language, singleBytes_);
  return chooseReading(readings, facts, language, guess_);
}

}  // namespace ksv_cli
