// The inputs of a job: its operands, a list of names, and what is below directories.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "cli/jobs/options.h"
#include "cli/system/failure.h"

namespace ksv_cli {

// A list of files beside the operands: one name a line, or ended by NUL.
struct FileList {
  std::string path;  // of the list; empty: there is none
  bool endsNamesWithNul = false;
};

// What a job that works on several files is told of them.
struct InputOptions {
  std::vector<std::string> operands;
  FileList list;
  bool entersDirectories = false;
  std::vector<std::string> included;
  std::vector<std::string> excluded;
};

// Adds the operands and the options. options has to stay until the work is done.
void addInputs(Subcommand& job, InputOptions& options, const char* help);

// Inputs that nothing can be done with, by their numbers, and why.
using RefusedInputs = std::map<size_t, Failure>;

struct Inputs {
  std::vector<std::string> paths;
  // Of those that were found below a directory: where the part of the path begins that is below
  // it. 0: it was named itself.
  std::vector<size_t> belowAt;
  RefusedInputs refused;  // directories that could not be read

  void add(std::string path, size_t below = 0) {
    paths.push_back(std::move(path));
    belowAt.push_back(below);
  }
  // One of other inputs.
  void addFrom(const Inputs& others, size_t index) {
    const auto refusal = others.refused.find(index);
    if (refusal != others.refused.end()) refused.emplace(paths.size(), refusal->second);
    add(others.paths[index], others.belowAt[index]);
  }
};

// Operands, and behind them the names of the list; standard input when neither is given. A
// directory is replaced by the files below it where directories are entered, but for the directory
// where results go; resultDirectory: empty where they go to none. Throws UsageError when standard
// input is named twice, or when the list cannot be read.
Inputs inputsNamedBy(const InputOptions& options, const std::string& resultDirectory = "");

}  // namespace ksv_cli
