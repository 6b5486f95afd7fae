// Works through a list of inputs, on several at once when asked to.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "cli/jobs/result_line.h"
#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/inputs.h"
#include "cli/system/streams.h"

namespace ksv_cli {

// What is told of an input whose work ended so: the system error that the library has noted, if
// there is one, since whatever else is said of the input may come of it.
Failure failureToTell(const std::exception& error);

// Standard output, on which the results of threads come in the order of the
// inputs: whoever is not at turn waits with its first bytes.
class OrderedOutput {
 public:
  explicit OrderedOutput(size_t count);

  // index: of the input. Throws Failure.
  void write(size_t index, const uint8_t* bytes, size_t size);
  void write(size_t index, const std::string& text);
  void finish(size_t index);

 private:
  std::mutex mutex_;
  std::condition_variable turnChanged_;
  std::unique_ptr<ByteSink> sink_;
  std::vector<bool> isDone_;
  size_t turn_ = 0;
  bool isBroken_ = false;
};

class WorkList {
 public:
  // inputs stays the caller's.
  explicit WorkList(const std::vector<std::string>& inputs);

  Console& console() { return console_; }
  OrderedOutput& standardOutput() { return standardOutput_; }

  // Writes the result of an input, unless it may rest on a system error. Throws Failure.
  void write(size_t index, const std::string& text);

  // Tells the console of an input as a whole, for work that does not count its bytes.
  void countWhole(size_t index) { console_.addBytes(knownSize(inputs_[index])); }

  // Has a record of each failure written to standard output as well, in the place of the
  // result, as the line that encode makes of it.
  using Encode = std::function<std::string(const nlohmann::ordered_json& record)>;
  void recordFailures(Encode encode = jsonLine) { encodeFailure_ = std::move(encode); }

  // Does the work on each input, at most so many at once. What it throws is reported
  // under the input's name, and the others are still done. Returns the exit status.
  int run(size_t jobs, const std::function<void(size_t index)>& workOn);

 private:
  void startHelpers(std::vector<std::thread>& helpers, size_t wanted,
                    const std::function<void(size_t index)>& workOn);
  void work(const std::function<void(size_t index)>& workOn);
  void workAndReport(size_t index, const std::function<void(size_t index)>& workOn);
  void workOrReport(size_t index, const std::function<void(size_t index)>& workOn);
  void report(size_t index, const Failure& failure);

  const std::vector<std::string>& inputs_;
  Console console_;
  OrderedOutput standardOutput_;
  std::atomic<size_t> next_{0};
  std::atomic<bool> anyFailed_{false};
  Encode encodeFailure_;  // none: failures are not recorded
};

}  // namespace ksv_cli
