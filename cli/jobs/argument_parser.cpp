#include "cli/jobs/argument_parser.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <utility>

#include "cli/system/failure.h"

namespace ksv_cli {
namespace {

using Kind = RecordedOption::Kind;

constexpr size_t kHelpColumn = 32;

// What a flag has that is given without its value: no value that can be meant.
constexpr char kBareValue[] = "/";

// The parser would take [a,b] for the values a and b. So it sees this in front of the bracket, and
// of the same byte where that is an argument's own.
constexpr char kNoList = '\x01';

void markBracket(std::string& argument) {
  if (argument.starts_with('[') || argument.starts_with(kNoList)) argument.insert(0, 1, kNoList);
}

std::string unmark(std::string& value) {
  const bool isMarked = value.starts_with("\x01[") || value.starts_with("\x01\x01");
  if (isMarked) value.erase(0, 1);
  return "";
}

// Of a message about arguments.
std::string withoutMarks(std::string text) {
  for (size_t at = text.find("\x01["); at != text.npos; at = text.find("\x01[", at))
    text.erase(at, 1);
  return text;
}

std::string withBareValue(const std::string& name) { return name + "{" + kBareValue + "}"; }

// The parser would show the value of a bare flag, and its type as if that were needed.
class HelpFormatter : public CLI::Formatter {
 public:
  HelpFormatter() { column_width(kHelpColumn); }

  std::string make_option_name(const CLI::Option* option, bool isPositional) const override {
    std::string name = CLI::Formatter::make_option_name(option, isPositional);
    const std::string bare = withBareValue("");
    if (!name.ends_with(bare)) return name;
    return name.replace(name.size() - bare.size(), bare.size(),
                        "[=" + option->get_type_name() + "]");
  }

  std::string make_option_opts(const CLI::Option* option) const override {
    const bool mayBeBare = option->get_name(false, true).ends_with(withBareValue(""));
    return mayBeBare ? "" : CLI::Formatter::make_option_opts(option);
  }
};

// Tells any other text in a few words.
CLI::Validator numberFrom(NumberRange range) {
  const auto check = [range](const std::string& text) {
    const std::optional<uint64_t> number = numberIn(text);
    if (number && *number >= range.lowest && *number <= range.highest) return std::string();
    return "'" + text + "' is no number from " + std::to_string(range.lowest) + " to " +
           std::to_string(range.highest);
  };
  return CLI::Validator(check, "");
}

void applyTerms(CLI::Option& option, const OptionTerms& terms) {
  if (terms.required) option.required();
  if (terms.hidden) option.group("");
  if (terms.oneOf.empty()) return;
  const std::vector<std::string> values(terms.oneOf.begin(), terms.oneOf.end());
  if (terms.ignoresCase)
    option.check(CLI::IsMember(values, CLI::ignore_case));
  else
    option.check(CLI::IsMember(values));
}

std::string withoutJob(const CLI::App& app) {
  const std::vector<std::string> unknown = app.remaining();
  if (!unknown.empty()) return unknown.front() + " is neither a job nor an option";
  std::string jobs;
  for (const CLI::App* job : app.get_subcommands(nullptr))
    jobs += (jobs.empty() ? "" : ", ") + job->get_name();
  return "a job is needed: " + jobs;
}

// Sets what is given to a place that may stay empty, once all is read.
struct WhenGiven {
  const CLI::Option* option;
  std::shared_ptr<std::string> text;
  std::optional<std::string>* value;

  void set() const {
    if (option->count() != 0) *value = *text == kBareValue ? "" : *text;
  }
};

}  // namespace

struct ArgumentParser::Parsed {
  CLI::App app;
  std::function<int()> chosenWork = {};
  std::vector<WhenGiven> whenGiven = {};

  void addJob(CLI::App& above, const RecordedJob& job, const char* group) {
    CLI::App& added = *above.add_subcommand(job.name, job.help)->group(group);
    for (const RecordedOption& option : job.options) add(added, option);
    added.footer(job.footer);
    // Not under the heading of its job, which a part takes over.
    for (const auto& part : job.parts) addJob(added, *part, "Subcommands");
    if (!job.parts.empty()) added.require_subcommand(1);
    added.callback([this, &job] {
      if (!job.work) return;
      for (const WhenGiven& given : whenGiven) given.set();
      chosenWork = job.work;
    });
  }

 private:
  void add(CLI::App& job, const RecordedOption& option) {
    CLI::Option& added = *addTarget(job, option);
    if (option.kind == Kind::kNumber) added.check(numberFrom(option.range));
    if (option.kind != Kind::kFlag) added.type_name(option.isOperand() ? "" : option.type);
    applyTerms(added, option.terms);
    if (option.kind != Kind::kFlag) added.transform(CLI::Validator(unmark, ""));
  }

  CLI::Option* addTarget(CLI::App& job, const RecordedOption& option) {
    const char* const help = option.help;
    switch (option.kind) {
      case Kind::kOperands:
        return job.add_option(option.names, *std::get<std::vector<std::string>*>(option.target),
                              help);
      case Kind::kValues:
        return job
            .add_option(option.names, *std::get<std::vector<std::string>*>(option.target), help)
            ->allow_extra_args(false);  // what follows the value is an operand
      case Kind::kFlag:
        return job.add_flag(option.names, *std::get<bool*>(option.target), help);
      case Kind::kFlagOrValue: {
        const auto text = std::make_shared<std::string>();
        return noted(job.add_flag(withBareValue(option.names), *text, help), text, option);
      }
      case Kind::kNumber: {
        // The parser's own conversion would read 010 as 8.
        uint64_t* const number = std::get<uint64_t*>(option.target);
        const auto take = [number](const std::string& text) { *number = *numberIn(text); };
        return job.add_option_function<std::string>(option.names, take, help);
      }
      case Kind::kOperand:
      case Kind::kValue:
        break;
    }
    if (const auto value = std::get_if<std::string*>(&option.target))
      return job.add_option(option.names, **value, help);
    const auto text = std::make_shared<std::string>();
    return noted(job.add_option(option.names, *text, help), text, option);
  }

  CLI::Option* noted(CLI::Option* added, std::shared_ptr<std::string> text,
                     const RecordedOption& option) {
    whenGiven.push_back(
        {added, std::move(text), std::get<std::optional<std::string>*>(option.target)});
    return added;
  }
};

ArgumentParser::ArgumentParser(const RecordedCommand& command, std::string& chosenJob)
    : parsed_(new Parsed{CLI::App(command.description, command.name)}), chosenJob_(chosenJob) {
  CLI::App& app = parsed_->app;
  app.set_version_flag(kVersionNames, command.version, kHelpOfVersion);
  app.set_help_flag(kHelpNames, kHelpOfHelp);
  app.allow_windows_style_options(false);  // "/" begins a path everywhere
  app.require_subcommand(1);
  app.formatter(std::make_shared<HelpFormatter>());
  for (const auto& job : command.jobs) parsed_->addJob(app, *job, job->group);
  app.footer(command.footer);  // jobs that are added later would take it over
}

ArgumentParser::~ArgumentParser() = default;

Request ArgumentParser::parse(std::vector<std::string> arguments) {
  CLI::App& app = parsed_->app;
  const auto noteJob = [&] {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    if (!chosen.empty()) chosenJob_ = chosen.back()->get_name();
  };
  try {
    std::for_each(arguments.begin(), arguments.end(), markBracket);
    std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
    app.parse(std::move(arguments));
  } catch (const CLI::Success& request) {  // help or version
    std::ostringstream answer;
    app.exit(request, answer);
    return {answer.str(), {}};
  } catch (const CLI::ParseError& error) {
    noteJob();
    throw UsageError(withoutMarks(chosenJob_.empty() ? withoutJob(app) : error.what()));
  }
  noteJob();
  return {"", parsed_->chosenWork};
}

}  // namespace ksv_cli
