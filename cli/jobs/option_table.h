// The command line as data: what the help tells, for the manual pages and the completions of
// shells, which are made from it.
#pragma once

#include <string>
#include <vector>

namespace ksv_cli {

struct DeclaredOption {
  std::vector<std::string> names = {};  // "-o" and "--output"; of an operand what the help calls it
  std::string value = {};               // what the help calls its value; empty: it is a flag
  bool valueMayLack = false;            // it is a flag as well, and a value stands behind '='
  bool required = false;
  bool repeats = false;
  std::vector<std::string> oneOf = {};  // the values that there are; none: any
  std::vector<std::string> usual = {};  // where any is taken: those that mean something
  std::string help = {};
};

struct DeclaredJob {
  std::string name = {};
  std::string group = {};  // the heading under which the help of the command lists it
  std::string help = {};
  std::string footer = {};
  std::vector<DeclaredOption> options = {};
  std::vector<DeclaredOption> operands = {};
  std::vector<DeclaredJob> parts = {};
};

struct DeclaredCommand {
  std::string name = {};
  std::string version = {};
  std::string help = {};
  std::string footer = {};
  std::vector<DeclaredOption> options = {};
  std::vector<DeclaredJob> jobs = {};
};

}  // namespace ksv_cli
