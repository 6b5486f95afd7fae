// ksv cut: the leading piece of a text that breaks no character.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/charsets/loaded_rules.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/options.h"
#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/inputs.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"
#include "kit/charsets/charset_names.h"
#include "kit/convert/leading_piece.h"
#include "ksv_cconv.h"
#include "ksv_cut.h"

namespace ksv_cli {

using ksv_kit::CharsetChoice;
using ksv_kit::CharsetKind;
using ksv_kit::CharsetNames;
using ksv_kit::kWidestUnit;
using ksv_kit::UnicodeForm;

namespace {

// Of CutStr.
constexpr uint64_t kMostBytes = std::numeric_limits<int32_t>::max() - uint64_t{kWidestUnit};

struct CutArguments {
  std::string charset;
  uint64_t bytes = 0;
  bool classic = false;
  std::string input = kStandardStream;
};

// The charsets of the directory that CutStr cuts, by how their names begin, and the rule that fits
// the shape of their characters.
struct CutRule {
  std::string_view charset;
  const char* rule;
};
constexpr CutRule kRules[] = {
    {"shift_jis-2004", "Shift_JISX0213"},
    {"shift_jis", "Shift_JIS"},
    {"windows31j", "WINDOWS31J"},
    {"euc-jis-2004", "EUC-JISX0213"},
    {"euc-jp", "EUC-JP"},
    {"iso-2022-jp-2004", "ISO-2022-JP-3"},
    {"iso-2022-jp", "ISO-2022-JP"},
    {"cp50220", "ISO-2022-JP"},
    {"iso-10646-ucs-2", "ISO-10646-UCS-2"},
    {"iso-10646-ucs-4", "ISO-10646-UCS-4"},
    {"utf-16", "UTF-16"},
    {"utf-8", "UTF-8"},
    {"chinesegbk", "ChineseGBK"},
    {"gb18030", "GB18030"},
    {"chinesebig5", "ChineseBIG5"},
    {"big5-hkscs", "ChineseBIG5"},
    {"koreanksc", "KoreanKSC"},
    {"euc-kr", "KoreanKSC"},
};

// A name without a rule gives the whole text back.
bool hasRule(const std::string& name) { return CutStr("  ", 1, 0, name.c_str()) == 0; }

// Cuts behind any byte, but not between CR and LF.
constexpr char kSingleByteRule[] = "ISO-8859-1";

// Whether no byte waits for another: what is no character by itself is none at all.
bool hasSingleBytesOnly(const CharsetChoice& charset) {
  if (charset.form != UnicodeForm::kNone || charset.kind != CharsetKind::kCharset) return false;
  ConverterRecord record{};
  if (cconvInitConvert(&record, nullptr, "UTF-8") != KSV_STATUS_DONE) return false;
  uint32_t parameters[3] = {1, 0, 0};
  if (cconvChgCharset(&record, parameters, charset.name.c_str()) != KSV_STATUS_DONE) return false;
  for (unsigned value = 0; value < 256; ++value) {
    const uint8_t byte = static_cast<uint8_t>(value);
    uint8_t unused[64];
    ConverterRecord single = record;
    single.input = &byte;
    single.inputLength = 1;
    single.output = unused;
    single.outputCapacity = sizeof unused;
    if (cconvConvert(&single) == KSV_STATUS_INCOMPLETE) return false;
  }
  return true;
}

std::string ruleFor(const std::string& name, const CharsetNames& names) {
  const std::optional<CharsetChoice> choice = names.findSource(name);
  if (choice) {
    for (const CutRule& row : kRules)
      if (choice->name.starts_with(row.charset)) return row.rule;
    if (hasSingleBytesOnly(*choice)) return kSingleByteRule;
    throw UsageError("text in " + choice->display + " cannot be cut by --classic");
  }
  if (hasRule(name)) return name;
  throw UsageError(names.unknown(name));
}

struct Cut {
  // How many bytes of a text to keep; not asked of one that is not longer than the limit. Behind
  // its length a unit more has to be readable.
  std::function<size_t(const std::string& text, size_t length, size_t limit)> keptOf;
  uint64_t mostBytes = std::numeric_limits<ptrdiff_t>::max() - uint64_t{kWidestUnit};
};

Cut cutByRule(const std::string& rule) {
  const auto keptOf = [rule](const std::string& text, size_t length, size_t limit) -> size_t {
    return CutStr(text.data(), static_cast<int32_t>(length), static_cast<int32_t>(limit),
                  rule.c_str());
  };
  return {keptOf, kMostBytes};
}

// Names that only CutStr knows are cut as it does.
Cut cutFor(const CutArguments& arguments, const CharsetNames& names) {
  const std::optional<CharsetChoice> charset = names.findSource(arguments.charset);
  if (arguments.classic || !charset) return cutByRule(ruleFor(arguments.charset, names));
  const auto keptOf = [charset](const std::string& text, size_t length, size_t limit) {
    return ksv_kit::leadingPiece(*charset, reinterpret_cast<const uint8_t*>(text.data()), length,
                                 limit);
  };
  return {keptOf};
}

std::string leadingPiece(const CutArguments& arguments, const Cut& cut) {
  const size_t limit = static_cast<size_t>(std::min(arguments.bytes, cut.mostBytes));
  const std::vector<uint8_t> read = readAtMost(*openInput(arguments.input), limit + kWidestUnit);
  std::string text(read.begin(), read.end());
  const size_t length = text.size();
  if (length <= limit) return text;
  if (arguments.bytes > cut.mostBytes) throw Failure("is too long to be cut behind 2 GiB");
  text.append(kWidestUnit, '\0');
  const size_t kept = cut.keptOf(text, length, limit);
  refuseSystemFaults();
  text.resize(kept);
  return text;
}

int cutText(const CutArguments& arguments) {
  const RuleBase ruleBase;
  const Cut cut = cutFor(arguments, ruleBase.names());
  std::string piece;
  try {
    piece = leadingPiece(arguments, cut);
  } catch (const Failure& failure) {
    platform::writeToStandardError(diagnostic(nameForMessages(arguments.input), failure.what()));
    return kExitFailed;
  }
  return writeResult(piece);
}

}  // namespace

void addCutJob(OptionParser& parser) {
  Subcommand job =
      parser.job(groups::kTexts, "cut", "Write the beginning of a text, no character broken");
  auto arguments = std::make_shared<CutArguments>();
  job.operand("FILE", arguments->input, "The text; none, or -, is standard input");
  job.value("-c,--charset", "CHARSET", arguments->charset, "The charset of the text",
            {.required = true});
  job.number("-n,--bytes", "BYTES", arguments->bytes, {0, std::numeric_limits<int64_t>::max()},
             "The most bytes to write", {.required = true});
  job.flag("--classic", arguments->classic,
           "Exactly where the library's CutStr cuts, and only charsets that it knows");
  job.footer(
      "No character, escape or shift sequence and no CR LF is cut apart; what does not fit\n"
      "whole is left out. CHARSET is one that 'ksv charsets' lists, or a name that CutStr\n"
      "alone knows.");
  job.work([arguments] { return cutText(*arguments); });
}

}  // namespace ksv_cli
