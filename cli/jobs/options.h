// The command line in the command's own words. What jobs say of it is only written down
// (recorded_options.h). A line that consists of nothing but whole options and operands is read with
// that at once (plain_arguments.h); what else there may be, help and mistakes included, is left to
// the parser of a library (argument_parser.h), which takes longer to set up than a short text
// takes to be converted.
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
#include <optional>
#include <string>
#include <vector>

#include "cli/jobs/option_table.h"
#include "cli/jobs/recorded_options.h"

namespace ksv_cli {

// A job, or a part of one. names: "-o,--output". type: what the help calls a value. Where values go
// has to stay until the work is done; an optional one is set when the option is given.
class Subcommand {
 public:
  // The job has to stay until the command line is read.
  explicit Subcommand(RecordedJob& job) : job_(job) {}

  void operand(const char* name, std::string& value, const char* help,
               const OptionTerms& terms = {});
  void operands(const char* name, std::vector<std::string>& values, const char* help);

  void flag(const char* names, bool& value, const char* help);
  void value(const char* names, const char* type, std::string& value, const char* help,
             const OptionTerms& terms = {});
  void value(const char* names, const char* type, std::optional<std::string>& value,
             const char* help, const OptionTerms& terms = {});
  // As often as it is given.
  void values(const char* names, const char* type, std::vector<std::string>& values,
              const char* help);
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
  void record(RecordedOption::Kind kind, const char* names, const char* type,
              RecordedOption::Target target, const char* help, OptionTerms terms = {},
              NumberRange range = {});

  RecordedJob& job_;
};

class OptionParser {
 public:
  enum class Reading {
    kAsFastAsMaybe,
    kByLibraryAlone  // for tests: the answers are the same
  };

  OptionParser(const char* name, const char* description, const char* version,
               Reading reading = Reading::kAsFastAsMaybe);
  ~OptionParser();

  // group: the heading under which the help of the command lists it.
  Subcommand job(const char* group, const char* name, const char* help);
  // What the help says behind the jobs.
  void footer(const char* text) { recorded_.footer = text; }

  // All that has been added.
  DeclaredCommand declared() const;

  // To be called once. Throws UsageError.
  Request parse(std::vector<std::string> arguments);
  // The job that was asked for; empty: none.
  std::string chosenJob() const { return chosenJob_; }

 private:
  RecordedCommand recorded_;
  const Reading reading_;
  std::string chosenJob_;
};

}  // namespace ksv_cli
