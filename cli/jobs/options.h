// The command line in the command's own words: options.cpp alone knows the parser that reads it.
//
// A job is added to the parser with its options, each of which says where its value goes, and
// with its work:
//
//   Subcommand job = parser.job(groups::kTexts, "cut", "Write the beginning of a text, no character
//   broken"); job.value("-c,--charset", "CHARSET", charset, "The charset of the text", {.required =
//   true}); job.work([&] { return cut(charset); });
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/jobs/option_table.h"

namespace ksv_cli {

// What holds of an option beyond its name.
struct OptionTerms {
  bool required = false;
  std::vector<std::string> oneOf = {};  // the values that there are; none: any
  std::vector<std::string> usual = {};  // where any is taken: those that mean something
  bool ignoresCase = false;             // of these
  bool hidden = false;                  // it is taken, but no help shows it
};

struct NumberRange {
  uint64_t lowest;
  uint64_t highest;
};

// A job, or a part of one. names: "-o,--output". type: what the help calls a value. Where values go
// has to stay until the work is done; an optional one is set when the option is given.
class Subcommand {
 public:
  struct Parsed;  // as the parser has it
  explicit Subcommand(std::shared_ptr<Parsed> parsed) : parsed_(std::move(parsed)) {}

  void operand(const char* name, std::string& value, const char* help,
               const OptionTerms& terms = {});
  void operands(const char* name, std::vector<std::string>& values, const char* help);

  void flag(const char* names, bool& value, const char* help);
  void value(const char* names, const char* type, std::string& value, const char* help,
             const OptionTerms& terms = {});
  void value(const char* names, const char* type, std::optional<std::string>& value,
             const char* help, const OptionTerms& terms = {});
  // A flag that may have a value behind '=', and without one stands for the empty one.
  void flagOrValue(const char* name, const char* type, std::optional<std::string>& value,
                   const char* help);
  void number(const char* names, const char* type, uint64_t& value, NumberRange range,
              const char* help, const OptionTerms& terms = {});
  // -j, with which several inputs are worked on at once.
  void workers(uint64_t& count, const char* help);

  // What the help says behind the options.
  void footer(const char* text);

  // A part of the job; one of them has to be given.
  Subcommand part(const char* name, const char* help);
  // Returns the exit status.
  void work(std::function<int()> work);

 private:
  std::shared_ptr<Parsed> parsed_;
};

// What a command line asks for: help or the version, or the work of a job.
struct Request {
  std::string answer;
  std::function<int()> work;  // none: the answer is all
};

class OptionParser {
 public:
  enum class Purpose { kParsing, kDeclaration };

  OptionParser(const char* name, const char* description, const char* version,
               Purpose purpose = Purpose::kParsing);
  ~OptionParser();

  // group: the heading under which the help of the command lists it.
  Subcommand job(const char* group, const char* name, const char* help);
  // What the help says behind the jobs. Those that are added later take it over.
  void footer(const char* text);

  // All that has been added, for which it was made.
  DeclaredCommand declared() const;

  // To be called once. Throws UsageError.
  Request parse(std::vector<std::string> arguments);
  // The job that was asked for; empty: none.
  std::string chosenJob() const;

 private:
  struct Parsed;
  const std::unique_ptr<Parsed> parsed_;
};

}  // namespace ksv_cli
