// ksv tables: makes every compiled code table of the charset directory.

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cconv/rules/packed_use.h"
#include "cli/charsets/compiled_tables.h"
#include "cli/charsets/loaded_rules.h"
#include "cli/charsets/rule_lint.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/options.h"
#include "cli/system/console.h"
#include "cli/system/escapes.h"
#include "cli/system/failure.h"
#include "cli/system/paths.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"
#include "kit/charsets/charset_directory.h"
#include "ksv_cconv.h"

namespace ksv_cli {

using ksv_kit::charsetDirectory;

namespace {

// A value above Unicode, which no charset has, as each Unicode form can spell it.
// The converters take it for a character all the same.
struct Probe {
  const char* source;
  std::vector<uint8_t> bytes;
};

const Probe kProbes[] = {
    {"iso-10646-ucs-4", {0x7F, 0xFF, 0xFF, 0xFF}},
    {"utf-8", {0xFD, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF}},
    {"utf-16", {0xDB, 0xFF, 0xFF, 0xFF}},
};

// Setting a converter up reads the tables of a charset's members. What a member
// has beside its own table is read when a character has been looked for in vain.
class TableFiller {
 public:
  explicit TableFiller(const std::vector<std::string>& charsets) : charsets_(charsets) {}

  bool fill(const std::string& charset) const {
    ConverterRecord record{};
    if (cconvInitConvert(&record, nullptr, charset.c_str()) != KSV_STATUS_DONE) return false;
    uint32_t parameters[3] = {1, 0, 0};
    if (cconvChgCharset(&record, parameters, charset.c_str()) != KSV_STATUS_DONE) return false;
    for (const Probe& probe : kProbes)
      if (holds(probe.source)) askFor(probe, record);
    return true;
  }

 private:
  bool holds(const char* charset) const {
    return std::find(charsets_.begin(), charsets_.end(), charset) != charsets_.end();
  }

  static void askFor(const Probe& probe, ConverterRecord& record) {
    uint8_t unused[16];
    uint32_t parameters[3] = {1, 0, 0};
    if (cconvChgCharset(&record, parameters, probe.source) != KSV_STATUS_DONE) return;
    record.input = probe.bytes.data();
    record.inputPosition = 0;
    record.inputLength = static_cast<int32_t>(probe.bytes.size());
    record.output = unused;
    record.outputPosition = 0;
    record.outputCapacity = sizeof unused;
    cconvConvert(&record);
  }

  const std::vector<std::string>& charsets_;
};

void tellFaults(const LintFindings& found) {
  for (const Fault& fault : found.faults)
    platform::writeToStandardError("ksv: " + escaped(shownFault(fault), Backslash::kStays) + "\n");
  for (const std::string& file : found.unreadable)
    platform::writeToStandardError("ksv: " + file + "\n");
}

// The library does without the copies that it cannot make; here they are what is wanted.
bool tellMissingCopies(const std::string& directory, const std::set<std::string>& tables) {
  const std::string words = compiledTableError();
  const std::string reason = "cannot be made" + (words.empty() ? "" : ": " + words);
  const std::vector<std::string> missing = missingCompiledTables(directory, tables);
  for (const std::string& compiled : missing)
    platform::writeToStandardError(diagnostic(platform::joinPath(directory, compiled), reason));
  return !missing.empty();
}

bool holdsRuleFiles(const std::string& directory) try {
  const std::vector<std::string> names = platform::filesIn(directory);
  return std::ranges::any_of(names, [](const auto& name) { return name.ends_with(".xml"); });
} catch (const Failure&) {
  return true;  // loading them tells what is wrong
}

int fillTables() {
  const std::optional<std::string> directory = charsetDirectory();
  // Compiled files come of filling tables from their texts, where there are any.
  if (directory && holdsRuleFiles(*directory)) ksv::usePackedCharsets(false);
  const RuleBase ruleBase;
  // What the library passes over in silence.
  const LintFindings found = directory ? lintCharsetDirectory(*directory) : LintFindings{};
  tellFaults(found);
  const std::vector<std::string> charsets = ruleBase.charsets();
  const TableFiller filler(charsets);
  size_t filled = 0;
  for (const std::string& charset : charsets) {
    if (filler.fill(charset))
      ++filled;
    else
      platform::writeToStandardError(diagnostic(charset, "cannot be set up"));
  }
  refuseSystemFaults();
  const bool lacksCopies = directory && tellMissingCopies(*directory, found.tables);
  const int written =
      writeResult("the code tables of " + std::to_string(filled) + " charsets are filled\n");
  return filled == charsets.size() && !found.any() && !lacksCopies ? written : kExitFailed;
}

}  // namespace

void addTablesJob(OptionParser& parser) {
  Subcommand job =
      parser.job(groups::kCharsets, "tables", "Fill every code table of the charset directory");
  job.footer(
      "The first use of a code table compiles it, which leaves a .cmp file beside it when the\n"
      "directory can be written to. This does so for all of them. What is wrong with the\n"
      "directory is told on standard error, as 'ksv lint' tells it.\n"
      "\n"
      "Exit status: 0 all well, 1 a charset cannot be set up, or the directory has faults.");
  job.work(fillTables);
}

}  // namespace ksv_cli
