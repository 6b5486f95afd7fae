#include "cli/jobs/conversion_lines.h"

#include <array>
#include <utility>
#include <vector>

#include "cli/jobs/result_line.h"
#include "cli/jobs/verdict_lines.h"
#include "cli/system/base64.h"
#include "cli/system/sha256.h"

namespace ksv_cli {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr char kGiven[] = "given";

constexpr std::array<std::pair<ConversionOutcome, const char*>, 4> kOutcomes = {
    {{ConversionOutcome::kFailed, "failed"},
     {ConversionOutcome::kConverted, "converted"},
     {ConversionOutcome::kUnchanged, "unchanged"},
     {ConversionOutcome::kSkipped, "skipped"}}};

template <typename Number>
ordered_json numberOrNull(const std::optional<Number>& number) {
  return number ? ordered_json(*number) : ordered_json();
}

void addPathOrNull(ordered_json& line, const std::string& field, const std::string& path) {
  if (path.empty())
    line[field] = nullptr;
  else
    addPath(line, field, path);
}

std::string textIn(const json& fields, const char* field) {
  const json& value = fields.at(field);
  return value.is_null() ? "" : value.get<std::string>();
}

std::string sumIn(const json& fields, const char* field) {
  std::string sum = textIn(fields, field);
  if (!sum.empty() && sum.size() != Sha256::kDigits) throw Failure("has a sum that is none");
  return sum;
}

std::optional<uint64_t> sizeIn(const json& fields, const char* field) {
  const json& value = fields.at(field);
  return value.is_null() ? std::nullopt : std::optional(value.get<uint64_t>());
}

ordered_json repairFields(const RepairFacts& repair) {
  ordered_json fields = emptyRecord();
  fields["repaired"] = repair.repaired;
  fields["lost"] = repair.lost;
  fields["ambiguous"] = repair.ambiguous;
  fields["misreadAs"] = textOrNull(repair.misreadAs);
  fields["firstLeft"] = numberOrNull(repair.firstLeft);
  fields["firstLeftLine"] = repair.firstLeft ? ordered_json(repair.firstLeftLine) : ordered_json();
  return fields;
}

RepairFacts repairOfFields(const json& fields) {
  RepairFacts repair{.repaired = fields.at("repaired").get<uint64_t>(),
                     .lost = fields.at("lost").get<uint64_t>(),
                     .ambiguous = fields.at("ambiguous").get<uint64_t>(),
                     .firstLeft = sizeIn(fields, "firstLeft"),
                     .misreadAs = textIn(fields, "misreadAs")};
  repair.firstLeftLine = sizeIn(fields, "firstLeftLine").value_or(0);
  return repair;
}

ordered_json fieldsOfSegments(const std::vector<ksv::Segment>& segments) {
  ordered_json list = ordered_json::array();
  for (const ksv::Segment& segment : segments) list.push_back(segmentFields(segment));
  return list;
}

ksv::Segment segmentOfFields(const json& fields) {
  const std::string decodeAs = textIn(fields, "decodeAs");
  return {fields.at("offset").get<uint64_t>(), fields.at("length").get<uint64_t>(),
          textIn(fields, "charset"), decodeAs.empty() ? std::nullopt : std::optional(decodeAs),
          fields.at("confidence").get<double>()};
}

}  // namespace

std::string ConversionRecord::lossesInWords() const {
  std::string words = losses.any() ? losses.inWords() : "";
  if (repair && repair->lost != 0) words += (words.empty() ? "" : "; ") + repair->inWords();
  return words;
}

const char* outcomeName(ConversionOutcome outcome) {
  for (const auto& [known, name] : kOutcomes)
    if (known == outcome) return name;
  return kOutcomes.front().second;
}

std::optional<ConversionOutcome> outcomeNamed(std::string_view name) {
  for (const auto& [outcome, known] : kOutcomes)
    if (name == known) return outcome;
  return std::nullopt;
}

ordered_json conversionFields(const ConversionRecord& record) {
  const bool hasResult = record.outcome == ConversionOutcome::kConverted;
  ordered_json line = recordOf(record.input, ResultForm::kFull);
  line["source"] = textOrNull(record.source);
  line["found"] = record.source.empty()   ? ordered_json()
                  : record.reason.empty() ? ordered_json(kGiven)
                                          : ordered_json(record.reason);
  line["target"] = record.target;
  line["result"] = outcomeName(record.outcome);
  line["sizeBefore"] = numberOrNull(record.sizeBefore);
  line["sizeAfter"] = numberOrNull(record.sizeAfter);
  line["invalid"] = record.losses.invalidBytes;
  line["unmappable"] = record.losses.replaced;
  addPathOrNull(line, "output", record.output);
  addPathOrNull(line, "kept", hasResult ? record.kept : "");
  if (record.repair) line["repair"] = repairFields(*record.repair);
  if (!record.segments.empty()) line["segments"] = fieldsOfSegments(record.segments);
  if (record.failure) line["error"] = errorField(*record.failure);
  return line;
}

ordered_json manifestFields(const ConversionRecord& record) {
  ordered_json line = conversionFields(record);
  line["modifiedBefore"] = textOrNull(record.modifiedBefore);
  line["modifiedAfter"] = textOrNull(record.modifiedAfter);
  line["sha256Before"] = textOrNull(record.sumBefore);
  line["sha256After"] = textOrNull(record.sumAfter);
  return line;
}

std::string pathIn(const json& fields, const std::string& field) {
  const auto bytes = fields.find(field + "Bytes");
  if (bytes == fields.end()) return textIn(fields, field.c_str());
  const std::optional<std::string> path = fromBase64(bytes->get<std::string>());
  if (!path) throw Failure("has a path that cannot be read");
  return *path;
}

ConversionRecord recordOfFields(const json& fields) {
  ConversionRecord record;
  record.input = pathIn(fields, "path");
  record.source = textIn(fields, "source");
  record.reason = textIn(fields, "found");
  if (record.reason == kGiven) record.reason.clear();
  record.target = textIn(fields, "target");
  const std::optional<ConversionOutcome> outcome = outcomeNamed(textIn(fields, "result"));
  if (!outcome) throw Failure("has a result that is not known");
  record.outcome = *outcome;
  record.sizeBefore = sizeIn(fields, "sizeBefore");
  record.sizeAfter = sizeIn(fields, "sizeAfter");
  record.losses.invalidBytes = fields.at("invalid").get<uint64_t>();
  record.losses.replaced = fields.at("unmappable").get<uint64_t>();
  if (fields.contains("repair")) record.repair = repairOfFields(fields.at("repair"));
  if (fields.contains("segments"))
    for (const json& segment : fields.at("segments"))
      record.segments.push_back(segmentOfFields(segment));
  record.output = pathIn(fields, "output");
  record.kept = pathIn(fields, "kept");
  record.modifiedBefore = textIn(fields, "modifiedBefore");
  record.modifiedAfter = textIn(fields, "modifiedAfter");
  record.sumBefore = sumIn(fields, "sha256Before");
  record.sumAfter = sumIn(fields, "sha256After");
  return record;
}

}  // namespace ksv_cli
