// The command line as a library's parser reads it: argument_parser.cpp alone knows that one.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/jobs/recorded_options.h"

namespace ksv_cli {

class ArgumentParser {
 public:
  // chosenJob: where the name of the job is put that is asked for; it is told for mistakes, too.
  ArgumentParser(const RecordedCommand& command, std::string& chosenJob);
  ~ArgumentParser();

  // To be called once. Throws UsageError.
  Request parse(std::vector<std::string> arguments);

 private:
  struct Parsed;
  const std::unique_ptr<Parsed> parsed_;
  std::string& chosenJob_;
};

}  // namespace ksv_cli
