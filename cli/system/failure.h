// The two ways a job of the command ends early.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace ksv_cli {

// One input could not be done. what() goes to standard error behind the name of the
// input, unless the failure is quiet, and the exit status becomes 1.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& reason, bool quiet = false)
      : std::runtime_error(reason), reason_(reason), quiet_(quiet) {}

  // Of a place in the input, which what() names as well.
  static Failure at(uint64_t offset, const std::string& reason) {
    Failure failure(reason + " (offset " + std::to_string(offset) + ")");
    failure.reason_ = reason;
    failure.offset_ = offset;
    return failure;
  }

  // The same of a text, with the words for the place at hand.
  static Failure at(uint64_t offset, const std::string& reason, const std::string& place) {
    Failure failure(reason + place);
    failure.reason_ = reason;
    failure.offset_ = offset;
    return failure;
  }

  bool quiet() const { return quiet_; }
  const std::string& reason() const { return reason_; }
  std::optional<uint64_t> offset() const { return offset_; }

 private:
  std::string reason_;
  std::optional<uint64_t> offset_;
  bool quiet_;
};

// What to say of an exception: the library's own names for them mean nothing to a reader.
std::string reasonOf(const std::exception& error);

// The command line cannot be followed: exit status 2, nothing has been done.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum ExitStatus {
  kExitDone = 0,
  kExitFailed = 1,
  kExitUsage = 2,
  kExitUndetermined = 3  // no input failed, but of at least one nothing can be told
};

}  // namespace ksv_cli
