#include "work_list.h"

#include <algorithm>
#include <exception>
#include <thread>

#include "failure.h"
#include "platform.h"
#include "system_faults.h"

namespace ksv_cli {

OrderedOutput::OrderedOutput(size_t count)
    : sink_(platform::openStandardOutput()), isDone_(count, false) {}

void OrderedOutput::write(size_t index, const uint8_t* bytes, size_t size) {
  std::unique_lock<std::mutex> lock(mutex_);
  turnChanged_.wait(lock, [&] { return turn_ == index; });
  if (isBroken_) throw Failure("standard output is closed", true);
  try {
    sink_->write(bytes, size);
  } catch (const Failure&) {
    isBroken_ = true;
    throw;
  }
}

void OrderedOutput::write(size_t index, const std::string& text) {
  write(index, reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

void OrderedOutput::finish(size_t index) {
  const std::lock_guard<std::mutex> lock(mutex_);
  isDone_[index] = true;
  while (turn_ < isDone_.size() && isDone_[turn_]) ++turn_;
  turnChanged_.notify_all();
}

WorkList::WorkList(const std::vector<std::string>& inputs)
    : inputs_(inputs), console_(inputs.size(), totalSize(inputs)), standardOutput_(inputs.size()) {}

int WorkList::run(size_t jobs, const std::function<void(size_t index)>& workOn) {
  std::vector<std::thread> helpers;
  for (size_t i = 1; i < std::min(jobs, inputs_.size()); ++i)
    helpers.emplace_back([this, &workOn] { work(workOn); });
  work(workOn);
  for (std::thread& helper : helpers) helper.join();
  return anyFailed_ ? kExitFailed : kExitDone;
}

void WorkList::work(const std::function<void(size_t index)>& workOn) {
  for (size_t index = next_++; index < inputs_.size(); index = next_++) {
    workAndReport(index, workOn);
    standardOutput_.finish(index);
    console_.addFile();
  }
}

void WorkList::workAndReport(size_t index, const std::function<void(size_t index)>& workOn) {
  try {
    workOn(index);
    return;
  } catch (const Failure& failure) {
    const std::optional<std::string> fault = systemFault();
    // Whatever is said of the input may come of it.
    report(index, fault && !failure.quiet() ? Failure(*fault) : failure);
  } catch (const std::exception& error) {
    report(index, Failure(error.what()));
  }
  anyFailed_ = true;
}

void WorkList::report(size_t index, const Failure& failure) {
  if (failure.quiet()) return;
  console_.report(nameForMessages(inputs_[index]), failure.what());
  if (!encodeFailure_) return;
  try {
    standardOutput_.write(index, encodeFailure_(failureRecord(inputs_[index], failure)));
  } catch (const Failure& broken) {
    if (!broken.quiet()) console_.report("standard output", broken.what());
  }
}

}  // namespace ksv_cli
