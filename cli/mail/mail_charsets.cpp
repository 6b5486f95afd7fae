#include "cli/mail/mail_charsets.h"

#include <algorithm>
#include <initializer_list>
#include <utility>
#include <vector>

#include "cli/system/failure.h"
#include "cli/text/conversion_settings.h"
#include "cli/text/rereadable_text.h"
#include "cli/text/text_conversion.h"
#include "cli/text/text_failure.h"
#include "kit/charsets/name_matching.h"
#include "kit/convert/byte_buffer.h"
#include "kit/convert/pipeline.h"

namespace ksv_cli {

using ksv_kit::CharsetKind;

namespace {

// What mail programs send under a name: the charsets that are tried, in this order, before the one
// that the name means.
struct MeantCharsets {
  const char* declared;  // as it is displayed
  std::initializer_list<const char*> meant;
};
const MeantCharsets kMeant[] = {
    {"ISO-8859-1", {"windows-1252"}},
    {"ISO-8859-9", {"windows-1254"}},
    {"ISO-8859-11", {"windows-874"}},
    {"TIS-620", {"windows-874"}},
    {"Shift_JIS", {"WINDOWS31J"}},
    {"EUC-JP", {"EUC-JP-MS"}},
    {"ISO-2022-JP", {"CP50220", "ISO-2022-JP-2004"}},
    {"ISO-2022-JP-KANA", {"CP50220", "ISO-2022-JP-2004"}},
    {"cp50220-kana", {"CP50220", "ISO-2022-JP-2004"}},
    {"EUC-KR", {"KoreanKSC"}},
    {"ChineseGBK", {"ChineseGBK", "GB18030"}},
    {"ChineseBIG5", {"ChineseBIG5", "Big5-HKSCS"}},
};

// What Python's library calls two charsets in the encoded words that it writes.
struct MailName {
  const char* name;
  const char* charset;
};
constexpr MailName kMailNames[] = {{"eucgb2312_cn", "GB2312"}, {"big5_tw", "Big5"}};

std::optional<CharsetChoice> findDeclared(const CharsetNames& names, const std::string& declared) {
  for (const MailName& row : kMailNames)
    if (ksv_kit::isSameButForCase(declared, row.name)) return names.findSource(row.charset);
  return names.findSource(declared);
}

constexpr char kEscape = '\x1B';

bool isHigh(char c) { return static_cast<unsigned char>(c) >= 0x80; }

// Neither bytes above 7F nor escape sequences, nor what UTF-16 has.
bool isPlainAscii(std::string_view bytes) {
  return std::ranges::none_of(bytes, [](char c) { return isHigh(c) || c == kEscape || c == '\0'; });
}

// A character or two that are no text in one charset are always some in another.
bool saysNothing(std::string_view bytes) {
  constexpr auto kLeastHighBytes = 3;
  return std::ranges::count_if(bytes, isHigh) < kLeastHighBytes &&
         bytes.find(kEscape) == bytes.npos;
}

// Text in ISO-2022-JP is valid in every charset that has the characters of ASCII.
bool namesPairsOfBytes(std::string_view bytes) {
  return bytes.find("\x1B$") != std::string_view::npos && std::ranges::none_of(bytes, isHigh);
}

bool mayHideIso2022(const CharsetChoice& charset) {
  return charset.kind == CharsetKind::kCharset && !charset.hasByteOrder();
}

// What is declared may be any bytes that are like the name of a charset.
std::string reasonOf(const CharsetChoice& named, const CharsetChoice& read) {
  if (read.display == named.display) return "declared";
  return "declared " + named.display + ", by which mail programs mean " + read.display;
}

}  // namespace

MailCharsets::MailCharsets(const CharsetNames& names, const MailCharsetTerms& terms)
    : names_(names),
      terms_(terms),
      assumed_(terms.assumed ? names.findSource(*terms.assumed) : std::nullopt),
      utf8_(ksv_kit::utf8ShownAs("UTF-8")),
      careful_(names, terms.language, false, terms.languageIsSupposed),
      guessing_(names, terms.language, true, terms.languageIsSupposed) {
  if (terms.assumed && !assumed_) throw UsageError(names.unknown(*terms.assumed));
}

MailText MailCharsets::read(std::string_view bytes,
                            const std::optional<std::string>& declared) const {
  if (!declared && isPlainAscii(bytes))
    return {std::string(bytes), "US-ASCII", "nothing is declared, and it is ASCII"};
  std::optional<MailText> text = declared ? asDeclared(bytes, *declared) : asAssumed(bytes);
  // A damaged text in the declared charset is likelier than one in a charset that only may be.
  const bool isKnown = declared && findDeclared(names_, *declared);
  if (!text && !(isKnown && saysNothing(bytes))) text = asJudged(bytes, !isKnown);
  if (text) return std::move(*text);
  return asGoodAsMayBe(bytes, declared);
}

MailText MailCharsets::readField(std::string_view bytes,
                                 const std::optional<std::string>& neighbour) const {
  const std::string reason = "its field is not encoded";
  if (isPlainAscii(bytes)) return {std::string(bytes), "US-ASCII", reason};
  if (!namesPairsOfBytes(bytes))
    if (std::optional<std::string> text = soundText(bytes, utf8_))
      return {std::move(*text), utf8_.display, reason};
  std::optional<MailText> text;
  if (neighbour) text = asDeclared(bytes, *neighbour);
  if (!text) text = asAssumed(bytes);
  if (!text) text = asJudged(bytes, true);
  return text ? std::move(*text) : asGoodAsMayBe(bytes, neighbour);
}

std::optional<MailText> MailCharsets::asDeclared(std::string_view bytes,
                                                 const std::string& declared) const {
  const std::optional<CharsetChoice> named = findDeclared(names_, declared);
  if (!named || (mayHideIso2022(*named) && namesPairsOfBytes(bytes))) return std::nullopt;
  std::vector<CharsetChoice> tried;
  for (const MeantCharsets& row : kMeant)
    if (named->display == row.declared)
      for (const char* name : row.meant)
        if (const auto meant = names_.findSource(name)) tried.push_back(*meant);
  tried.push_back(*named);
  for (const CharsetChoice& charset : tried)
    if (std::optional<std::string> text = soundText(bytes, charset))
      return MailText{std::move(*text), charset.display, reasonOf(*named, charset)};
  return std::nullopt;
}

std::optional<MailText> MailCharsets::asAssumed(std::string_view bytes) const {
  if (!assumed_ || namesPairsOfBytes(bytes)) return std::nullopt;
  std::optional<std::string> text = soundText(bytes, *assumed_);
  if (!text) return std::nullopt;
  return MailText{std::move(*text), assumed_->display, "nothing is declared, and this is assumed"};
}

std::optional<MailText> MailCharsets::asJudged(std::string_view bytes, bool guess) const {
  RereadableText text(bytes);
  ChosenSource chosen;
  try {
    chosen = (guess ? guessing_ : careful_).judge(text).chosen;
  } catch (const Failure&) {
    return std::nullopt;  // none is clear
  }
  std::optional<std::string> sound = soundText(bytes, chosen.charset);
  if (!sound) return std::nullopt;
  return MailText{std::move(*sound), chosen.charset.display, chosen.reason};
}

MailText MailCharsets::asGoodAsMayBe(std::string_view bytes,
                                     const std::optional<std::string>& declared) const {
  std::optional<CharsetChoice> charset = declared ? findDeclared(names_, *declared) : assumed_;
  std::string reason = declared ? "declared, though not all of it is valid so"
                                : "assumed, though not all of it is valid so";
  if (!charset) {
    charset = utf8_;
    reason = "no charset fits its bytes";
  }
  MailText text{"", charset->display, reason};
  text.text = damagedText(bytes, *charset, text.invalidBytes);
  return text;
}

namespace {

// The text, and whether the conversion came to its end.
struct Converted {
  std::string text;
  uint64_t invalidBytes;
  std::optional<ksv_kit::Problem> problem;
};

Converted toUtf8(std::string_view bytes, const CharsetChoice& from, const CharsetChoice& utf8,
                 ksv_policy invalid, const CharsetNames& names) {
  ConversionSettings settings;
  settings.source = from;
  settings.target = utf8;
  settings.names = &names;
  settings.changes.invalid(invalid);
  const ksv_kit::ConversionTask task = conversionTask(settings);
  ksv_kit::Pipeline pipeline(task);
  Converted converted;
  pipeline.takeWhole(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(),
                     [&](const ksv_kit::ByteBuffer& out) {
                       converted.text.append(reinterpret_cast<const char*>(out.data()), out.size());
                     });
  converted.invalidBytes = pipeline.counts().invalidBytes;
  converted.problem = pipeline.problem();
  return converted;
}

}  // namespace

std::optional<std::string> MailCharsets::soundText(std::string_view bytes,
                                                   const CharsetChoice& charset) const {
  Converted converted = toUtf8(bytes, charset, utf8_, KSV_FAIL, names_);
  if (converted.problem) return std::nullopt;
  return std::move(converted.text);
}

std::string MailCharsets::damagedText(std::string_view bytes, const CharsetChoice& charset,
                                      uint64_t& invalidBytes) const {
  Converted converted = toUtf8(bytes, charset, utf8_, terms_.invalid, names_);
  if (converted.problem)
    throw Failure(converted.problem->message + atOffset(converted.problem->offset) + " of a text");
  invalidBytes = converted.invalidBytes;
  return std::move(converted.text);
}

}  // namespace ksv_cli
