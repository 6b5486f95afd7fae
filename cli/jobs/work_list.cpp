#include "cli/jobs/work_list.h"

#include <algorithm>
#include <exception>

#include "cli/system/failure.h"
#include "cli/system/process.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"

namespace ksv_cli {

Failure failureToTell(const std::exception& error) {
  const auto* const failure = dynamic_cast<const Failure*>(&error);
  if (failure == nullptr) return Failure(reasonOf(error));
  const std::optional<std::string> fault = systemFault();
  return fault && !failure->quiet() ? Failure(*fault) : *failure;
}

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

void WorkList::write(size_t index, const std::string& text) {
  refuseSystemFaults();
  standardOutput_.write(index, text);
}

int WorkList::run(size_t jobs, const std::function<void(size_t index)>& workOn) {
  std::vector<std::thread> helpers;
  startHelpers(helpers, std::min(jobs, inputs_.size()), workOn);
  work(workOn);
  for (std::thread& helper : helpers) helper.join();
  return anyFailed_ ? kExitFailed : kExitDone;
}

// As many as the system lets there be: the inputs are worked on by those that are there.
void WorkList::startHelpers(std::vector<std::thread>& helpers, size_t wanted,
                            const std::function<void(size_t index)>& workOn) {
  try {
    while (helpers.size() + 1 < wanted) helpers.emplace_back([this, &workOn] { work(workOn); });
  } catch (const std::exception&) {
  }
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
    workOrReport(index, workOn);
  } catch (const std::exception&) {
    anyFailed_ = true;
    platform::tellOutOfMemory();  // there was none for the report
  }
}

void WorkList::workOrReport(size_t index, const std::function<void(size_t index)>& workOn) {
  try {
    workOn(index);
  } catch (const std::exception& error) {
    anyFailed_ = true;
    report(index, failureToTell(error));
  }
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
