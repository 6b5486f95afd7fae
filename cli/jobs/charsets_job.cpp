// ksv charsets: the charsets that can be named, a line each.

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/charsets/loaded_rules.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/options.h"
#include "cli/jobs/result_line.h"
#include "cli/system/console.h"
#include "kit/charsets/charset_names.h"

namespace ksv_cli {

using ksv_kit::CharsetListing;

namespace {

std::string asJson(const CharsetListing& charset) {
  nlohmann::ordered_json line = emptyRecord();
  line["name"] = charset.display;
  line["aliases"] = charset.aliases;
  line["sourceOnly"] = charset.sourceOnly;
  return line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string asText(const CharsetListing& charset) {
  std::string line = charset.display;
  for (size_t i = 0; i < charset.aliases.size(); ++i)
    line += (i == 0 ? "\t" : " ") + charset.aliases[i];
  return line;
}

int listCharsets(bool json) {
  const RuleBase ruleBase;
  std::string text;
  for (const CharsetListing& charset : ruleBase.names().list())
    text += (json ? asJson(charset) : asText(charset)) + "\n";
  return writeResult(text);
}

}  // namespace

void addCharsetsJob(OptionParser& parser) {
  Subcommand job = parser.job(groups::kCharsets, "charsets", "List the charsets that can be named");
  job.footer(
      "A line a charset: its name, a tab, its aliases. Names are taken without regard to\n"
      "case and punctuation. The charsets are those of the charset directory, which may bring\n"
      "names of its own in aliases.txt. UTF-7 and HZ-GB-2312, which need ISO-10646-UCS-4 and\n"
      "ChineseGBK of it, can be read, but not written.");
  auto json = std::make_shared<bool>(false);
  job.flag("--json", *json, "One JSON object a line: name, aliases, sourceOnly");
  job.work([json] { return listCharsets(*json); });
}

}  // namespace ksv_cli
