#include "ordered_work.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>

#include "batch.h"
#include "console.h"
#include "failure.h"
#include "platform.h"

namespace ksv_cli {
namespace {

class OrderedWork {
 public:
  OrderedWork(const std::vector<std::string>& inputs, const Work& work)
      : inputs_(inputs), work_(work), console_(inputs.size(), 0), results_(inputs.size()) {}

  int run(size_t jobs) {
    std::vector<std::thread> helpers;
    for (size_t i = 1; i < std::min(jobs, inputs_.size()); ++i)
      helpers.emplace_back([this] { takeInputs(); });
    takeInputs();
    for (std::thread& helper : helpers) helper.join();
    return exitStatus_;
  }

 private:
  struct Result {
    std::string output;
    std::string failure;
  };

  void takeInputs() {
    for (;;) {
      size_t index;
      {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (next_ == inputs_.size() || isBroken_) return;
        index = next_++;
      }
      Result result = resultOf(inputs_[index]);
      const std::lock_guard<std::mutex> lock(mutex_);
      results_[index] = std::move(result);
      deliver();
    }
  }

  Result resultOf(const std::string& input) const {
    try {
      return {work_(input), ""};
    } catch (const std::exception& failure) {
      return {"", failure.what()};
    }
  }

  void deliver() {
    for (; turn_ < results_.size() && results_[turn_] && !isBroken_; ++turn_) {
      const Result& result = *results_[turn_];
      if (!result.failure.empty()) {
        console_.report(nameForMessages(inputs_[turn_]), result.failure);
        exitStatus_ = kExitFailed;
      } else if (writeResult(result.output) != kExitDone) {
        exitStatus_ = kExitFailed;
        isBroken_ = true;
      }
      results_[turn_].reset();
      console_.addFile();
      console_.addBytes(platform::fileFacts(inputs_[turn_]).size);
    }
  }

  const std::vector<std::string>& inputs_;
  const Work& work_;
  Console console_;
  std::mutex mutex_;
  std::vector<std::optional<Result>> results_;
  size_t next_ = 0;
  size_t turn_ = 0;
  int exitStatus_ = kExitDone;
  bool isBroken_ = false;  // standard output takes no more
};

}  // namespace

int workInOrder(const std::vector<std::string>& inputs, size_t jobs, const Work& work) {
  return OrderedWork(inputs, work).run(jobs);
}

}  // namespace ksv_cli
