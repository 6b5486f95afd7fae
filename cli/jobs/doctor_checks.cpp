#include "cli/jobs/doctor_checks.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "cli/charsets/compiled_tables.h"
#include "cli/charsets/loaded_rules.h"
#include "cli/charsets/packed_directory.h"
#include "cli/charsets/rule_source.h"
#include "cli/system/failure.h"
#include "cli/system/paths.h"
#include "cli/system/processor.h"
#include "cli/system/system_faults.h"
#include "cli/system/temporary_file.h"
#include "cli/text/text_language.h"
#include "kit/charsets/name_matching.h"

namespace ksv_cli {

using ksv_kit::CharsetListing;
using ksv_kit::findCharsetDirectory;
using ksv_kit::foldedName;

namespace {

CheckFinding ok(std::string text) { return {CheckVerdict::kOk, std::move(text), ""}; }

CheckFinding note(std::string text, std::string hint) {
  return {CheckVerdict::kNote, std::move(text), std::move(hint)};
}

CheckFinding wrong(std::string text, std::string hint) {
  return {CheckVerdict::kWrong, std::move(text), std::move(hint)};
}

CheckFinding withoutDirectory() {
  return wrong("cannot be looked at without a charset directory", "");
}

std::string counted(size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

// The first of them by name, since there may be many.
std::string listed(const std::vector<std::string>& names) {
  constexpr size_t kMostNamed = 3;
  std::string list;
  for (size_t i = 0; i < std::min(names.size(), kMostNamed); ++i)
    list += (i == 0 ? "" : ", ") + names[i];
  return names.size() > kMostNamed ? list + ", ..." : list;
}

CheckFinding checkVersion(const Surroundings&) { return ok("ksv " KSV_VERSION); }

CheckFinding checkBuild(const Surroundings&) {
  constexpr std::string_view kHardening = KSV_BUILD_HARDENING;
  const std::string build = KSV_BUILD_COMPILER ", " KSV_BUILD_TYPE;
  return ok(build + ", hardened by: " +
            (kHardening.empty() ? "what the compiler does by itself" : std::string(kHardening)));
}

CheckFinding checkProcessor(const Surroundings&) { return ok(vectorInstructions()); }

CheckFinding checkDirectory(const Surroundings& around) {
  if (!around.directory)
    return wrong(around.refusal,
                 "install one, or name one in the environment variable Charsetpath");
  std::string found = around.directory->path + ", named " + around.directory->namedBy;
  if (!around.lint)
    return wrong(found + ": " + around.refusal, "correct who names it, or its permissions");
  return ok(found);
}

bool isCompiled(const Fault& fault) { return fault.file.ends_with(".cmp"); }

CheckFinding checkRuleFiles(const Surroundings& around) {
  if (!around.lint) return withoutDirectory();
  const LintFindings& lint = *around.lint;
  const auto compiled = std::count_if(lint.faults.begin(), lint.faults.end(), isCompiled);
  const size_t faults = lint.faults.size() - static_cast<size_t>(compiled);
  if (faults + lint.unreadable.size() == 0) return ok("no fault");
  std::string text = counted(faults, "fault", "faults");
  if (!lint.unreadable.empty()) text += ", cannot be read: " + listed(lint.unreadable);
  return wrong(text, "'ksv lint' tells them by file and line");
}

CheckFinding checkCompiledTables(const Surroundings& around) {
  if (!around.lint) return withoutDirectory();
  if (!around.lint->unreadable.empty())
    return wrong("cannot be looked at while rule files or tables cannot be read", "");
  std::vector<std::string> stale;
  for (const Fault& fault : around.lint->faults)
    if (isCompiled(fault)) stale.push_back(fault.file);
  if (!stale.empty())
    return wrong("not what their texts say: " + listed(stale),
                 "remove them, and run 'ksv tables' as a user who may write there");
  const std::set<std::string>& tables = around.lint->tables;
  const auto missing = missingCompiledTables(around.directory->path, tables);
  if (!missing.empty())
    return wrong(std::to_string(missing.size()) + " of " + std::to_string(tables.size()) +
                     " missing: " + listed(missing),
                 "run 'ksv tables' as a user who may write there");
  const auto compared = std::count_if(tables.begin(), tables.end(), [&](const std::string& table) {
    return isRegularFile(platform::joinPath(around.directory->path, table));
  });
  return ok("all " + std::to_string(tables.size()) + " are there, " + std::to_string(compared) +
            " are what their texts say");
}

CheckFinding checkPackedCharsets(const Surroundings& around) {
  if (!around.directory) return withoutDirectory();
  const auto packed = packedDirectory(around.directory->path);
  if (!packed) return ok("none: rule files and tables are read");
  const std::string text = counted(packed->charsets, "charset", "charsets") + ", " +
                           counted(packed->tables, "table", "tables");
  if (!around.directory->isInstallation)
    return note(text + ", not used where a setting names the directory", "");
  if (packed->overridden.empty()) return ok(text);
  return note(text + ", of which others go before: " + listed(packed->overridden), "");
}

CheckFinding checkCharsets(const Surroundings& around) {
  if (!around.lint) return withoutDirectory();
  try {
    const RuleBase ruleBase;
    const std::vector<CharsetListing> listings = ruleBase.names().list();
    const auto readOnly = std::count_if(listings.begin(), listings.end(),
                                        [](const auto& listing) { return listing.sourceOnly; });
    return ok(std::to_string(listings.size() - static_cast<size_t>(readOnly)) + ", and " +
              std::to_string(readOnly) + " that can be read only");
  } catch (const RuleBase::Unusable& unusable) {
    return wrong(unusable.reason, "'ksv lint' tells what is wrong with the directory");
  }
}

// What stands behind the dot of "ja_JP.eucJP@modifier"; empty where nothing does.
std::string charsetOfLocale(const std::string& locale) {
  const size_t dot = locale.find('.');
  if (dot == std::string::npos) return "";
  return locale.substr(dot + 1, locale.find('@', dot) - dot - 1);
}

CheckFinding checkLocale(const Surroundings&) {
  const Locale locale = localeOfUser();
  const std::string language = nameOfTextLanguage(textLanguageOf(locale));
  const std::string named = locale.name.empty() ? "none" : locale.name + " of " + locale.variable;
  const std::string text = named + "; texts without -f are taken for --detect-language " +
                           language + ", messages are written in UTF-8";
  const std::string charset = charsetOfLocale(locale.name);
  if (charset.empty() || foldedName(charset) == foldedName("UTF-8")) return ok(text);
  return note(text, "what is not ASCII in messages is shown well in a locale of UTF-8 only");
}

CheckFinding checkTemporaryFiles(const Surroundings&) {
  constexpr char kHint[] = "the environment names the directory: TMPDIR, on Windows TMP or TEMP";
  try {
    const auto file = platform::TemporaryFile::create();
    constexpr uint8_t kByte = 0;
    file->write(&kByte, 1);
    const std::string path = file->finish();
    return ok("can be written in " + path.substr(0, path.find_last_of("/\\")));
  } catch (const Failure& failure) {
    return wrong(failure.what(), kHint);
  }
}

}  // namespace

Surroundings lookAround() {
  Surroundings around;
  try {
    around.directory = findCharsetDirectory();
    if (!around.directory) throw Failure("there is none");
    around.lint = lintCharsetDirectory(around.directory->path);
  } catch (const Failure& failure) {
    // Want of memory makes a setting look as if it were not there.
    around.refusal = systemFault().value_or(failure.what());
  }
  return around;
}

const std::vector<Check>& doctorChecks() {
  static const std::vector<Check> checks = {
      {"version", "version", checkVersion},
      {"build", "build", checkBuild},
      {"vectorInstructions", "vector instructions", checkProcessor},
      {"charsetDirectory", "charset directory", checkDirectory},
      {"ruleFiles", "rule files", checkRuleFiles},
      {"compiledTables", "compiled tables", checkCompiledTables},
      {"packedCharsets", "packed charsets", checkPackedCharsets},
      {"charsets", "charsets", checkCharsets},
      {"locale", "locale", checkLocale},
      {"temporaryFiles", "temporary files", checkTemporaryFiles},
  };
  return checks;
}

CheckFinding findingOf(const Check& check, const Surroundings& surroundings) {
  try {
    return check.find(surroundings);
  } catch (const Failure& failure) {
    return wrong(failure.what(), "");
  }
}

}  // namespace ksv_cli
