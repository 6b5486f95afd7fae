#include "cli/jobs/plain_arguments.h"

#include <algorithm>
#include <string_view>

namespace ksv_cli {
namespace {

using Kind = RecordedOption::Kind;

// Brackets are read as lists of values.
bool isPlainValue(const std::string& text) {
  return !text.empty() && text.front() != '-' && text.front() != '[';
}

bool isIn(std::string_view name, std::string_view list) {
  for (;;) {
    const size_t comma = list.find(',');
    if (list.substr(0, comma) == name) return true;
    if (comma == list.npos) return false;
    list.remove_prefix(comma + 1);
  }
}

bool isTaken(const RecordedOption& option, const std::string& value) {
  if (option.kind == Kind::kNumber) {
    const std::optional<uint64_t> number = numberIn(value);
    return number && *number >= option.range.lowest && *number <= option.range.highest;
  }
  const auto& values = option.terms.oneOf;
  return values.empty() || std::ranges::find(values, std::string_view(value)) != values.end();
}

// One job's arguments. Values are put into their places when all has been read.
class PlainArguments {
 public:
  explicit PlainArguments(const RecordedJob& job) : job_(job) {}

  bool read(const std::vector<std::string>& arguments) {
    for (size_t at = 1; at < arguments.size(); ++at) {
      const std::string* const value = at + 1 < arguments.size() ? &arguments[at + 1] : nullptr;
      const bool isOption = arguments[at].starts_with('-');
      const RecordedOption* const option = isOption ? findOption(arguments[at]) : nextOperand();
      if (option == nullptr) return false;
      const bool takesNext = isOption && option->takesValue();
      if (!(isOption ? give(*option, takesNext ? value : nullptr) : give(*option, &arguments[at])))
        return false;
      at += takesNext;
    }
    return std::ranges::all_of(job_.options, [&](const RecordedOption& option) {
      return !option.terms.required || isGiven(option);
    });
  }

  void store() const {
    for (const Given& given : given_) store(given);
  }

 private:
  struct Given {
    const RecordedOption* option;
    const std::string* value;  // null: none
  };

  const RecordedOption* findOption(std::string_view name) const {
    const auto found = std::ranges::find_if(job_.options, [&](const RecordedOption& option) {
      return !option.isOperand() && isIn(name, option.names);
    });
    return found == job_.options.end() ? nullptr : &*found;
  }

  const RecordedOption* nextOperand() const {
    const auto found = std::ranges::find_if(job_.options, [&](const RecordedOption& option) {
      return option.kind == Kind::kOperands || (option.kind == Kind::kOperand && !isGiven(option));
    });
    return found == job_.options.end() ? nullptr : &*found;
  }

  bool isGiven(const RecordedOption& option) const {
    return std::ranges::find(given_, &option, &Given::option) != given_.end();
  }

  bool give(const RecordedOption& option, const std::string* value) {
    if (!option.repeats() && isGiven(option)) return false;
    const bool needsValue = option.isOperand() || option.takesValue();
    if (needsValue && (value == nullptr || !isPlainValue(*value) || !isTaken(option, *value)))
      return false;
    given_.push_back({&option, value});
    return true;
  }

  static void store(const Given& given) {
    const RecordedOption::Target& target = given.option->target;
    const std::string text = given.value == nullptr ? "" : *given.value;
    if (const auto flag = std::get_if<bool*>(&target)) **flag = true;
    if (const auto number = std::get_if<uint64_t*>(&target)) **number = *numberIn(text);
    if (const auto value = std::get_if<std::string*>(&target)) **value = text;
    if (const auto value = std::get_if<std::optional<std::string>*>(&target)) **value = text;
    if (const auto list = std::get_if<std::vector<std::string>*>(&target)) (*list)->push_back(text);
  }

  const RecordedJob& job_;
  std::vector<Given> given_;
};

}  // namespace

const RecordedJob* readPlainArguments(const RecordedCommand& command,
                                      const std::vector<std::string>& arguments) {
  // Where the name of another job stands in the line, that one is recorded as well.
  if (arguments.empty() || command.jobs.size() != 1) return nullptr;
  const RecordedJob& job = *command.jobs.front();
  if (arguments.front() != job.name || !job.parts.empty()) return nullptr;
  if (std::ranges::count(arguments, job.name) != 1) return nullptr;
  PlainArguments plain(job);
  if (!plain.read(arguments)) return nullptr;
  plain.store();
  return &job;
}

}  // namespace ksv_cli
