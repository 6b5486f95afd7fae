// What jobs have said of the command line, as it was said.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ksv_cli {

// What holds of an option beyond its name.
struct OptionTerms {
  bool required = false;
  std::vector<const char*> oneOf = {};  // the values that there are; none: any
  std::vector<const char*> usual = {};  // where any is taken: those that mean something
  bool ignoresCase = false;             // of these
  bool hidden = false;                  // it is taken, but no help shows it
};

struct NumberRange {
  uint64_t lowest = 0;
  uint64_t highest = 0;
};

struct RecordedOption {
  enum class Kind {
    kOperand,
    kOperands,  // as many as there are
    kFlag,
    kValue,
    kValues,       // given as often as there are values
    kFlagOrValue,  // a value stands behind '='
    kNumber
  };
  using Target = std::variant<bool*, uint64_t*, std::string*, std::optional<std::string>*,
                              std::vector<std::string>*>;

  Kind kind;
  const char* names;  // "-o,--output"; of an operand what the help calls it
  const char* type;   // what the help calls its value
  const char* help;
  Target target;
  OptionTerms terms = {};
  NumberRange range = {};

  bool isOperand() const { return kind == Kind::kOperand || kind == Kind::kOperands; }
  bool takesValue() const {
    return kind == Kind::kValue || kind == Kind::kValues || kind == Kind::kNumber;
  }
  bool repeats() const { return kind == Kind::kOperands || kind == Kind::kValues; }
};

// A job, or a part of one.
struct RecordedJob {
  const char* group;
  const char* name;
  const char* help;
  const char* footer = "";
  std::vector<RecordedOption> options = {};  // and operands, in the order of the help
  std::vector<std::unique_ptr<RecordedJob>> parts = {};
  std::function<int()> work = {};
};

struct RecordedCommand {
  const char* name;
  const char* description;
  const char* version;
  const char* footer = "";
  std::vector<std::unique_ptr<RecordedJob>> jobs = {};
};

// What a command line asks for: help or the version, or the work of a job.
struct Request {
  std::string answer;
  std::function<int()> work;  // none: the answer is all
};

// The names of options that all jobs have, and the command.
constexpr char kHelpNames[] = "-h,--help";
constexpr char kHelpOfHelp[] = "Print this help, and exit";
constexpr char kVersionNames[] = "--version";
constexpr char kHelpOfVersion[] = "Print name and version, and exit";

// "-o" and "--output" of "-o,--output".
std::vector<std::string_view> namesIn(std::string_view list);

// Of decimal digits only.
std::optional<uint64_t> numberIn(std::string_view text);

}  // namespace ksv_cli
