// ksv doctor: whether the command finds all that it needs, a line each.

#include <memory>
#include <optional>
#include <string>

#include "cli/jobs/doctor_checks.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/options.h"
#include "cli/jobs/result_line.h"
#include "cli/system/console.h"
#include "cli/system/escapes.h"
#include "cli/system/failure.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"

namespace ksv_cli {
namespace {

constexpr char kFooter[] =
    "A line a check: ok, note or wrong; what is looked at; what was found. What can be done\n"
    "about it stands below it. Looked at are the version and how it was built, the vector\n"
    "instructions that conversion uses, where the charset directory is and who says so, its\n"
    "rule files and compiled tables and their packed form, the number of charsets, the\n"
    "locale, and whether temporary files can be written. Nothing else is written.\n"
    "\n"
    "Exit status: 0 all well, 1 something is wrong, 2 wrong usage.";

const char* nameOf(CheckVerdict verdict) {
  if (verdict == CheckVerdict::kOk) return "ok";
  return verdict == CheckVerdict::kNote ? "note" : "wrong";
}

std::string padded(std::string text, size_t width) {
  if (text.size() < width) text.resize(width, ' ');
  return text;
}

std::string asText(const Check& check, const CheckFinding& finding) {
  constexpr size_t kVerdictWidth = 7;
  constexpr size_t kLabelWidth = 21;
  std::string text = padded(nameOf(finding.verdict), kVerdictWidth) +
                     padded(check.label, kLabelWidth) + escaped(finding.text, Backslash::kStays) +
                     "\n";
  if (!finding.hint.empty())
    text += std::string(kVerdictWidth + kLabelWidth, ' ') + finding.hint + "\n";
  return text;
}

std::string asJson(const Check& check, const CheckFinding& finding) {
  const bool isWrong = finding.verdict == CheckVerdict::kWrong;
  nlohmann::ordered_json line = emptyRecord();
  line["check"] = check.key;
  line["verdict"] = nameOf(finding.verdict);
  line["value"] = orNull(isWrong ? nullptr : finding.text.c_str());
  line["hint"] = orNull(finding.hint.empty() ? nullptr : finding.hint.c_str());
  if (isWrong) {
    line["error"] = emptyRecord();
    line["error"]["reason"] = finding.text;
    line["error"]["offset"] = nullptr;
  }
  return jsonLine(line);
}

int examine(bool json) {
  const Surroundings surroundings = lookAround();
  bool isAllWell = true;
  for (const Check& check : doctorChecks()) {
    const CheckFinding finding = findingOf(check, surroundings);
    const bool isWrong = finding.verdict == CheckVerdict::kWrong;
    if (isWrong && json) platform::writeToStandardError(diagnostic(check.label, finding.text));
    const std::string text = json ? asJson(check, finding) : asText(check, finding);
    if (writeToStandardOutput(text) != kExitDone) return kExitFailed;
    isAllWell = isAllWell && !isWrong;
  }
  if (const std::optional<std::string> fault = systemFault()) {
    platform::writeToStandardError(diagnostic(*fault));
    return kExitFailed;
  }
  return isAllWell ? kExitDone : kExitFailed;
}

}  // namespace

void addDoctorJob(OptionParser& parser) {
  Subcommand job = parser.job(groups::kInstallation, "doctor", "Tell whether all is in place");
  auto json = std::make_shared<bool>(false);
  job.flag("--json", *json, "One JSON object a line: check, verdict, value, hint");
  job.footer(kFooter);
  job.work([json] { return examine(*json); });
}

}  // namespace ksv_cli
