#include "cli/jobs/run_history.h"

#include <algorithm>
#include <cstdint>

#include "cli/jobs/conversion_lines.h"
#include "cli/jobs/result_line.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/inputs.h"
#include "cli/system/times.h"

namespace ksv_cli {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;

// What every manifest begins with, byte by byte.
constexpr std::string_view kBeginning = R"({"record":"head","format":"ksv manifest","version":1,)";
constexpr uint64_t kFormatVersion = 1;

ordered_json lineOf(const char* kind) {
  ordered_json line = emptyRecord();
  line["record"] = kind;
  return line;
}

std::string textOf(const std::string& path) {
  const std::vector<uint8_t> bytes = readAtMost(*platform::openInput(path), SIZE_MAX);
  return {bytes.begin(), bytes.end()};
}

RunHead headOf(const json& line) {
  if (line.at("version").get<uint64_t>() != kFormatVersion)
    throw UsageError("is a manifest of another version");
  RunHead head{line.at("run").get<std::string>(), pathIn(line, "directory"), {}};
  for (const auto& [name, value] : line.at("options").items())
    head.options.emplace_back(name, value.get<std::string>());
  return head;
}

}  // namespace

std::string headLine(const RunHead& head) {
  ordered_json line = lineOf("head");
  line["format"] = "ksv manifest";
  line["version"] = kFormatVersion;
  line["run"] = head.run;
  line["time"] = presentMoment();
  addPath(line, "directory", head.directory);
  line["options"] = emptyRecord();
  for (const auto& [name, value] : head.options) line["options"][name] = value;
  return jsonLine(line);
}

std::string intentLine(const ConversionRecord& record) {
  ordered_json line = lineOf("intent");
  line.update(manifestFields(record));
  return jsonLine(line);
}

std::string resultLine(const ConversionRecord& record) {
  ordered_json line = lineOf("result");
  line.update(manifestFields(record));
  line["time"] = presentMoment();
  return jsonLine(line);
}

std::string resumptionLine() {
  ordered_json line = lineOf("resumed");
  line["time"] = presentMoment();
  return jsonLine(line);
}

void RunTotals::add(ConversionOutcome outcome) {
  ++(outcome == ConversionOutcome::kConverted   ? converted
     : outcome == ConversionOutcome::kUnchanged ? unchanged
     : outcome == ConversionOutcome::kSkipped   ? skipped
                                                : failed);
}

std::string endLine(const RunTotals& totals) {
  ordered_json line = lineOf("end");
  line["converted"] = totals.converted;
  line["unchanged"] = totals.unchanged;
  line["skipped"] = totals.skipped;
  line["failed"] = totals.failed;
  line["time"] = presentMoment();
  return jsonLine(line);
}

// Only what begins like a manifest is ever cut.
RunHistory RunHistory::read(const std::string& path) {
  const std::string text = textOf(path);
  const std::string_view beginning = std::string_view(text).substr(0, kBeginning.size());
  if (!kBeginning.starts_with(beginning))
    throw UsageError(path + " is no manifest of this version");
  RunHistory history;
  size_t number = 1;
  for (size_t end; (end = text.find('\n', history.wholeSize_)) != text.npos; ++number) {
    try {
      history.readLine(text.substr(history.wholeSize_, end - history.wholeSize_));
    } catch (const json::exception&) {
      throw Failure("line " + std::to_string(number) + " is damaged");
    } catch (const Failure& failure) {
      throw Failure("line " + std::to_string(number) + " " + failure.what());
    }
    history.wholeSize_ = end + 1;
  }
  return history;
}

void RunHistory::readLine(const std::string& text) {
  const json line = json::parse(text);
  const auto kind = line.at("record").get<std::string>();
  if (kind == "head") {
    head_ = headOf(line);
  } else if (kind == "intent") {
    takeIntent(recordOfFields(line));
  } else if (kind == "result") {
    takeResult(recordOfFields(line));
  } else if (kind != "resumed" && kind != "end") {
    throw Failure("has a record that is not known");
  }
}

void RunHistory::takeIntent(ConversionRecord record) {
  PastConversion& past = at(record.input);
  past = {std::move(record), true, false};
}

// What was intended and failed may have come about all the same: the sums tell.
void RunHistory::takeResult(ConversionRecord record) {
  PastConversion& past = at(record.input);
  const bool isFailed = record.outcome == ConversionOutcome::kFailed;
  if (isFailed && past.isIntended) return;
  const bool isReplaced = past.isIntended && record.outcome == ConversionOutcome::kConverted;
  past = {std::move(record), isReplaced, !isFailed};
}

PastConversion& RunHistory::at(const std::string& input) {
  const auto [place, isNew] = places_.emplace(input, conversions_.size());
  if (isNew) conversions_.emplace_back().record.input = input;
  return conversions_[place->second];
}

const PastConversion* RunHistory::find(const std::string& input) const {
  const auto place = places_.find(input);
  return place == places_.end() ? nullptr : &conversions_[place->second];
}

}  // namespace ksv_cli
