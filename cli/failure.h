// The two ways a job of the command ends early.
#ifndef KSV_CLI_FAILURE_H
#define KSV_CLI_FAILURE_H

#include <stdexcept>
#include <string>

namespace ksv_cli {

// One input could not be done. The reason goes to standard error behind the name
// of the input, unless the failure is quiet, and the exit status becomes 1.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& reason, bool quiet = false)
      : std::runtime_error(reason), quiet_(quiet) {}
  bool quiet() const { return quiet_; }

 private:
  bool quiet_;
};

// The command line cannot be followed: exit status 2, nothing has been done.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum ExitStatus { kExitDone = 0, kExitFailed = 1, kExitUsage = 2 };

}  // namespace ksv_cli

#endif
