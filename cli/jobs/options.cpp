#include "cli/jobs/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <sstream>
#include <utility>

#include "cli/system/failure.h"
#include "cli/system/resource_limits.h"

namespace ksv_cli {
namespace {

constexpr size_t kHelpColumn = 32;

// What a flag has that is given without its value: no value that can be meant.
constexpr char kBareValue[] = "/";

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

// Of decimal digits only.
std::optional<uint64_t> numberIn(const std::string& text) {
  uint64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [behind, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || behind != end) return std::nullopt;
  return value;
}

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
  if (terms.ignoresCase)
    option.check(CLI::IsMember(terms.oneOf, CLI::ignore_case));
  else
    option.check(CLI::IsMember(terms.oneOf));
}

std::vector<std::string> namesIn(const std::string& list) {
  std::vector<std::string> names;
  std::istringstream words(list);
  for (std::string name; std::getline(words, name, ',');) names.push_back(name);
  return names;
}

DeclaredOption declaredOption(const char* names, const char* value, const char* help,
                              const OptionTerms& terms = {}) {
  return {.names = namesIn(names),
          .value = value,
          .required = terms.required,
          .oneOf = terms.oneOf,
          .usual = terms.usual,
          .help = help};
}

constexpr char kHelpNames[] = "-h,--help";
constexpr char kHelpOfHelp[] = "Print this help, and exit";
constexpr char kVersionNames[] = "--version";
constexpr char kHelpOfVersion[] = "Print name and version, and exit";

std::string withoutJob(const CLI::App& app) {
  const std::vector<std::string> unknown = app.remaining();
  if (!unknown.empty()) return unknown.front() + " is neither a job nor an option";
  std::string jobs;
  for (const CLI::App* job : app.get_subcommands(nullptr))
    jobs += (jobs.empty() ? "" : ", ") + job->get_name();
  return "a job is needed: " + jobs;
}

}  // namespace

struct Subcommand::Parsed {
  CLI::App& app;
  std::function<int()>& chosenWork;
  OptionParser::Purpose purpose;
  DeclaredJob declared;
  std::vector<std::function<void()>> whenGiven = {};
  std::vector<std::shared_ptr<Parsed>> parts = {};

  Parsed(CLI::App& added, std::function<int()>& work, OptionParser::Purpose why)
      : app(added), chosenWork(work), purpose(why) {
    if (!isDeclared()) return;
    declared.name = app.get_name();
    declared.help = app.get_description();
    declared.options = {declaredOption(kHelpNames, "", kHelpOfHelp)};
  }

  bool isDeclared() const { return purpose == OptionParser::Purpose::kDeclaration; }

  // Null where nobody asks for it.
  DeclaredOption* declare(const char* names, const char* value, const char* help,
                          const OptionTerms& terms = {}) {
    return terms.hidden ? nullptr : declareIn(declared.options, names, value, help, terms);
  }
  DeclaredOption* declareOperand(const char* name, const char* help,
                                 const OptionTerms& terms = {}) {
    return declareIn(declared.operands, name, name, help, terms);
  }

  void setWhenGiven(const CLI::Option* option, std::shared_ptr<std::string> text,
                    std::optional<std::string>& value) {
    whenGiven.push_back([option, text = std::move(text), &value] {
      if (option->count() != 0) value = *text;
    });
  }

  DeclaredJob whole() const {
    DeclaredJob job = declared;
    for (const auto& part : parts) job.parts.push_back(part->whole());
    return job;
  }

 private:
  DeclaredOption* declareIn(std::vector<DeclaredOption>& options, const char* names,
                            const char* value, const char* help, const OptionTerms& terms) {
    if (!isDeclared()) return nullptr;
    options.push_back(declaredOption(names, value, help, terms));
    return &options.back();
  }
};

void Subcommand::operand(const char* name, std::string& value, const char* help,
                         const OptionTerms& terms) {
  parsed_->declareOperand(name, help, terms);
  applyTerms(*parsed_->app.add_option(name, value, help)->type_name(""), terms);
}

void Subcommand::operands(const char* name, std::vector<std::string>& values, const char* help) {
  if (DeclaredOption* const declared = parsed_->declareOperand(name, help))
    declared->repeats = true;
  parsed_->app.add_option(name, values, help)->type_name("");
}

void Subcommand::flag(const char* names, bool& value, const char* help) {
  parsed_->declare(names, "", help);
  parsed_->app.add_flag(names, value, help);
}

void Subcommand::value(const char* names, const char* type, std::string& value, const char* help,
                       const OptionTerms& terms) {
  parsed_->declare(names, type, help, terms);
  applyTerms(*parsed_->app.add_option(names, value, help)->type_name(type), terms);
}

void Subcommand::value(const char* names, const char* type, std::optional<std::string>& value,
                       const char* help, const OptionTerms& terms) {
  const auto text = std::make_shared<std::string>();
  parsed_->declare(names, type, help, terms);
  CLI::Option* option = parsed_->app.add_option(names, *text, help)->type_name(type);
  applyTerms(*option, terms);
  parsed_->setWhenGiven(option, text, value);
}

void Subcommand::flagOrValue(const char* name, const char* type, std::optional<std::string>& value,
                             const char* help) {
  const auto text = std::make_shared<std::string>();
  if (DeclaredOption* const declared = parsed_->declare(name, type, help))
    declared->valueMayLack = true;
  CLI::Option* option = parsed_->app.add_flag(withBareValue(name), *text, help);
  option->type_name(type);
  parsed_->setWhenGiven(option, text, value);
  parsed_->whenGiven.push_back([&value] {
    if (value == kBareValue) value->clear();
  });
}

void Subcommand::number(const char* names, const char* type, uint64_t& value, NumberRange range,
                        const char* help, const OptionTerms& terms) {
  // The parser's own conversion would read 010 as 8.
  const auto take = [&value](const std::string& text) { value = *numberIn(text); };
  parsed_->declare(names, type, help, terms);
  CLI::Option* option = parsed_->app.add_option_function<std::string>(names, take, help);
  applyTerms(*option->type_name(type)->check(numberFrom(range)), terms);
}

void Subcommand::workers(uint64_t& count, const char* help) {
  number("-j,--jobs", "N", count, {1, limits::kMostJobs}, help);
}

void Subcommand::footer(const char* text) {
  if (parsed_->isDeclared()) parsed_->declared.footer = text;
  parsed_->app.footer(text);
}

Subcommand Subcommand::part(const char* name, const char* help) {
  // Not under the heading of its job, which a part takes over.
  CLI::App* added = parsed_->app.add_subcommand(name, help)->group("Subcommands");
  parsed_->app.require_subcommand(1);
  parsed_->parts.push_back(std::make_shared<Parsed>(*added, parsed_->chosenWork, parsed_->purpose));
  return Subcommand(parsed_->parts.back());
}

void Subcommand::work(std::function<int()> work) {
  parsed_->app.callback([parsed = parsed_.get(), work = std::move(work)] {
    for (const std::function<void()>& set : parsed->whenGiven) set();
    parsed->chosenWork = work;
  });
}

struct OptionParser::Parsed {
  CLI::App app;
  std::string version;
  Purpose purpose;
  std::function<int()> chosenWork = {};
  std::vector<std::shared_ptr<Subcommand::Parsed>> jobs = {};
};

OptionParser::OptionParser(const char* name, const char* description, const char* version,
                           Purpose purpose)
    : parsed_(new Parsed{CLI::App(description, name), version, purpose}) {
  CLI::App& app = parsed_->app;
  app.set_version_flag(kVersionNames, version, kHelpOfVersion);
  app.set_help_flag(kHelpNames, kHelpOfHelp);
  app.allow_windows_style_options(false);  // "/" begins a path everywhere
  app.require_subcommand(1);
  app.formatter(std::make_shared<HelpFormatter>());
}

OptionParser::~OptionParser() = default;

Subcommand OptionParser::job(const char* group, const char* name, const char* help) {
  CLI::App* added = parsed_->app.add_subcommand(name, help)->group(group);
  parsed_->jobs.push_back(
      std::make_shared<Subcommand::Parsed>(*added, parsed_->chosenWork, parsed_->purpose));
  parsed_->jobs.back()->declared.group = group;
  return Subcommand(parsed_->jobs.back());
}

void OptionParser::footer(const char* text) { parsed_->app.footer(text); }

DeclaredCommand OptionParser::declared() const {
  const CLI::App& app = parsed_->app;
  DeclaredCommand command = {.name = app.get_name(),
                             .version = parsed_->version,
                             .help = app.get_description(),
                             .footer = app.get_footer(),
                             .options = {declaredOption(kHelpNames, "", kHelpOfHelp),
                                         declaredOption(kVersionNames, "", kHelpOfVersion)}};
  for (const auto& job : parsed_->jobs) command.jobs.push_back(job->whole());
  return command;
}

Request OptionParser::parse(std::vector<std::string> arguments) {
  CLI::App& app = parsed_->app;
  try {
    std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
    app.parse(std::move(arguments));
  } catch (const CLI::Success& request) {  // help or version
    std::ostringstream answer;
    app.exit(request, answer);
    return {answer.str(), {}};
  } catch (const CLI::ParseError& error) {
    throw UsageError(chosenJob().empty() ? withoutJob(app) : error.what());
  }
  return {"", parsed_->chosenWork};
}

std::string OptionParser::chosenJob() const {
  const std::vector<CLI::App*> chosen = parsed_->app.get_subcommands();
  return chosen.empty() ? "" : chosen.back()->get_name();
}

}  // namespace ksv_cli
