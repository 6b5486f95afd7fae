#include "cli/jobs/options.h"

#include <charconv>
#include <utility>

#include "cli/jobs/argument_parser.h"
#include "cli/jobs/plain_arguments.h"
#include "cli/system/resource_limits.h"

namespace ksv_cli {
namespace {

using Kind = RecordedOption::Kind;

std::vector<std::string> asStrings(const std::vector<const char*>& texts) {
  return {texts.begin(), texts.end()};
}

DeclaredOption declaredOption(const char* names, const char* help) {
  DeclaredOption option{.help = help};
  for (const std::string_view name : namesIn(names)) option.names.emplace_back(name);
  return option;
}

DeclaredOption declaredOption(const RecordedOption& recorded) {
  DeclaredOption option = declaredOption(recorded.names, recorded.help);
  option.value = recorded.type;
  option.valueMayLack = recorded.kind == Kind::kFlagOrValue;
  option.required = recorded.terms.required;
  option.repeats = recorded.repeats();
  option.oneOf = asStrings(recorded.terms.oneOf);
  option.usual = asStrings(recorded.terms.usual);
  return option;
}

DeclaredJob declaredJob(const RecordedJob& recorded) {
  DeclaredJob job{.name = recorded.name,
                  .group = recorded.group,
                  .help = recorded.help,
                  .footer = recorded.footer,
                  .options = {declaredOption(kHelpNames, kHelpOfHelp)}};
  for (const RecordedOption& option : recorded.options)
    if (!option.terms.hidden)
      (option.isOperand() ? job.operands : job.options).push_back(declaredOption(option));
  for (const auto& part : recorded.parts) job.parts.push_back(declaredJob(*part));
  return job;
}

}  // namespace

std::vector<std::string_view> namesIn(std::string_view list) {
  std::vector<std::string_view> names;
  while (!list.empty()) {
    const std::string_view name = list.substr(0, list.find(','));
    names.push_back(name);
    list.remove_prefix(name.size() == list.size() ? name.size() : name.size() + 1);
  }
  return names;
}

std::optional<uint64_t> numberIn(std::string_view text) {
  uint64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [behind, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || behind != end) return std::nullopt;
  return value;
}

void Subcommand::record(Kind kind, const char* names, const char* type,
                        RecordedOption::Target target, const char* help, OptionTerms terms,
                        NumberRange range) {
  job_.options.push_back({kind, names, type, help, target, std::move(terms), range});
}

void Subcommand::operand(const char* name, std::string& value, const char* help,
                         const OptionTerms& terms) {
  record(Kind::kOperand, name, name, &value, help, terms);
}

void Subcommand::operands(const char* name, std::vector<std::string>& values, const char* help) {
  record(Kind::kOperands, name, name, &values, help);
}

void Subcommand::flag(const char* names, bool& value, const char* help) {
  record(Kind::kFlag, names, "", &value, help);
}

void Subcommand::value(const char* names, const char* type, std::string& value, const char* help,
                       const OptionTerms& terms) {
  record(Kind::kValue, names, type, &value, help, terms);
}

void Subcommand::value(const char* names, const char* type, std::optional<std::string>& value,
                       const char* help, const OptionTerms& terms) {
  record(Kind::kValue, names, type, &value, help, terms);
}

void Subcommand::values(const char* names, const char* type, std::vector<std::string>& values,
                        const char* help) {
  record(Kind::kValues, names, type, &values, help);
}

void Subcommand::flagOrValue(const char* name, const char* type, std::optional<std::string>& value,
                             const char* help) {
  record(Kind::kFlagOrValue, name, type, &value, help);
}

void Subcommand::number(const char* names, const char* type, uint64_t& value, NumberRange range,
                        const char* help, const OptionTerms& terms) {
  record(Kind::kNumber, names, type, &value, help, terms, range);
}

void Subcommand::workers(uint64_t& count, const char* help) {
  number("-j,--jobs", "N", count, {1, limits::kMostJobs}, help);
}

void Subcommand::footer(const char* text) { job_.footer = text; }

Subcommand Subcommand::part(const char* name, const char* help) {
  job_.parts.push_back(std::make_unique<RecordedJob>(RecordedJob{"", name, help}));
  return Subcommand(*job_.parts.back());
}

void Subcommand::work(std::function<int()> work) { job_.work = std::move(work); }

OptionParser::OptionParser(const char* name, const char* description, const char* version,
                           Reading reading)
    : recorded_{name, description, version}, reading_(reading) {}

OptionParser::~OptionParser() = default;

Subcommand OptionParser::job(const char* group, const char* name, const char* help) {
  recorded_.jobs.push_back(std::make_unique<RecordedJob>(RecordedJob{group, name, help}));
  return Subcommand(*recorded_.jobs.back());
}

DeclaredCommand OptionParser::declared() const {
  DeclaredCommand command = {.name = recorded_.name,
                             .version = recorded_.version,
                             .help = recorded_.description,
                             .footer = recorded_.footer,
                             .options = {declaredOption(kHelpNames, kHelpOfHelp),
                                         declaredOption(kVersionNames, kHelpOfVersion)}};
  for (const auto& job : recorded_.jobs) command.jobs.push_back(declaredJob(*job));
  return command;
}

Request OptionParser::parse(std::vector<std::string> arguments) {
  if (reading_ == Reading::kAsFastAsMaybe) {
    if (const RecordedJob* const job = readPlainArguments(recorded_, arguments)) {
      chosenJob_ = job->name;
      return {"", job->work};
    }
  }
  ArgumentParser parser(recorded_, chosenJob_);
  return parser.parse(std::move(arguments));
}

}  // namespace ksv_cli
