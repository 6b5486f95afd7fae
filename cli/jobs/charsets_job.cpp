// ksv charsets: the charsets that can be named, a line each, or what is to be known of some.

#include <cstdint>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/charsets/loaded_rules.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/options.h"
#include "cli/jobs/result_line.h"
#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/system_faults.h"
#include "kit/charsets/charset_names.h"
#include "kit/repertoire/charset_facts.h"

namespace ksv_cli {

using ksv_kit::CharsetChoice;
using ksv_kit::CharsetListing;
using ksv_kit::CharsetNames;
using ksv_kit::Repertoire;

namespace {

struct CharsetsArguments {
  std::vector<std::string> names;
  bool json = false;
  bool ranges = false;
};

// Of one that is asked for by its name more is told.
struct ToldCharset : ksv_kit::NamedCharset {
  std::optional<Repertoire> repertoire = std::nullopt;
};

nlohmann::ordered_json rangesOf(const Repertoire& repertoire) {
  nlohmann::ordered_json ranges = nlohmann::ordered_json::array();
  for (size_t i = 0; i < repertoire.ranges.size(); i += 2)
    ranges.push_back({repertoire.ranges[i], repertoire.ranges[i + 1]});
  return ranges;
}

uint64_t countOf(const Repertoire& repertoire) {
  uint64_t count = 0;
  for (size_t i = 0; i < repertoire.ranges.size(); i += 2)
    count += repertoire.ranges[i + 1] - repertoire.ranges[i] + 1;
  return count;
}

std::string asJson(const ToldCharset& charset, bool ranges) {
  nlohmann::ordered_json line = emptyRecord();
  line["name"] = charset.listing.display;
  line["aliases"] = charset.listing.aliases;
  line["sourceOnly"] = charset.listing.sourceOnly;
  line["mime"] = orNull(charset.mimeName());
  line["web"] = orNull(charset.webName());
  line["codePage"] = charset.codePage() == 0 ? nlohmann::ordered_json()
                                             : nlohmann::ordered_json(charset.codePage());
  line["stateful"] = charset.isStateful();
  if (charset.repertoire) {
    line["longestCharacter"] = charset.repertoire->longestCharacter;
    line["characters"] = countOf(*charset.repertoire);
    if (ranges) line["ranges"] = rangesOf(*charset.repertoire);
  }
  return jsonLine(line);
}

std::string lineOf(const CharsetListing& charset) {
  std::string line = charset.display;
  for (size_t i = 0; i < charset.aliases.size(); ++i)
    line += (i == 0 ? "\t" : " ") + charset.aliases[i];
  return line + "\n";
}

std::string factLine(const char* what, const std::string& value) {
  return std::string("  ") + what + "\t" + value + "\n";
}

std::string rangeLines(const Repertoire& repertoire) {
  std::string lines;
  for (size_t i = 0; i < repertoire.ranges.size(); i += 2) {
    char text[48];
    std::snprintf(text, sizeof text, "U+%04X-U+%04X", static_cast<unsigned>(repertoire.ranges[i]),
                  static_cast<unsigned>(repertoire.ranges[i + 1]));
    lines += factLine("range", text);
  }
  return lines;
}

std::string asText(const ToldCharset& charset, bool ranges) {
  std::string text = charset.listing.display + "\n";
  for (const std::string& alias : charset.listing.aliases) text += factLine("alias", alias);
  text += factLine("mail", orHyphen(charset.mimeName()));
  text += factLine("web", orHyphen(charset.webName()));
  text += factLine("code page", charset.codePage() == 0 ? "-" : std::to_string(charset.codePage()));
  text += factLine("can be written", charset.listing.sourceOnly ? "no" : "yes");
  text += factLine("escapes or shifts", charset.isStateful() ? "yes" : "no");
  if (!charset.repertoire) return text;
  text += factLine("longest character", std::to_string(charset.repertoire->longestCharacter));
  text += factLine("characters", std::to_string(countOf(*charset.repertoire)));
  return ranges ? text + rangeLines(*charset.repertoire) : text;
}

std::string listOf(const CharsetNames& names, bool json) {
  std::string text;
  for (ksv_kit::NamedCharset& charset : ksv_kit::namedCharsets(names))
    text += json ? asJson({std::move(charset)}, false) : lineOf(charset.listing);
  return text;
}

// By any of its names. Throws UsageError.
ToldCharset charsetNamed(const CharsetNames& names, const std::string& name) {
  const std::optional<CharsetChoice> choice = ksv_kit::findWrittenOrRead(names, name);
  if (!choice) throw UsageError(names.unknown(name));
  for (ksv_kit::NamedCharset& charset : ksv_kit::namedCharsets(names)) {
    if (charset.choice.name != choice->name) continue;
    if (!charset.canBeWritten()) return {std::move(charset)};
    return {std::move(charset), ksv_kit::repertoireOf(*choice)};
  }
  throw UsageError(names.unknown(name));
}

int tellCharsets(const CharsetsArguments& arguments) {
  const RuleBase ruleBase;
  const CharsetNames names = ruleBase.names();
  if (arguments.ranges && arguments.names.empty())
    throw UsageError("--ranges needs the name of a charset");
  std::string text;
  if (arguments.names.empty()) text = listOf(names, arguments.json);
  for (const std::string& name : arguments.names) {
    const ToldCharset charset = charsetNamed(names, name);
    text += arguments.json ? asJson(charset, arguments.ranges) : asText(charset, arguments.ranges);
  }
  refuseSystemFaults();
  return writeResult(text);
}

}  // namespace

void addCharsetsJob(OptionParser& parser) {
  Subcommand job = parser.job(groups::kCharsets, "charsets", "List the charsets that can be named");
  auto arguments = std::make_shared<CharsetsArguments>();
  job.operands("CHARSET", arguments->names, "What is to be known of these; default: a list of all");
  job.flag("--ranges", arguments->ranges, "Tell which characters a charset has, as ranges");
  job.flag("--json", arguments->json, "One JSON object a line");
  job.footer(
      "Without CHARSET a line a charset: its name, a tab, its aliases. Names are taken without\n"
      "regard to case and punctuation. The charsets are those of the charset directory, which\n"
      "may bring names of its own in aliases.txt. UTF-7 and HZ-GB-2312, which need\n"
      "ISO-10646-UCS-4 and ChineseGBK of it, can be read, but not written.");
  job.work([arguments] { return tellCharsets(*arguments); });
}

}  // namespace ksv_cli
