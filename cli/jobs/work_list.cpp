#include "cli/jobs/work_list.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "cli/jobs/work_sums.h"
#include "cli/system/failure.h"
#include "cli/system/process.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"

namespace ksv_cli {

namespace {

Failure toldOf(const Failure* failure, const std::exception& error) {
  return failure == nullptr ? Failure(reasonOf(error)) : *failure;
}

}  // namespace

Failure failureToTell(const std::exception& error) {
  const auto* const failure = dynamic_cast<const Failure*>(&error);
  const bool isWantOfMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
  if (isWantOfMemory || (failure != nullptr && failure->quiet())) return toldOf(failure, error);
  const std::optional<std::string> fault = systemFault();
  return fault ? Failure(*fault) : toldOf(failure, error);
}

OrderedOutput::OrderedOutput(size_t count, Console& console)
    : console_(console), sink_(platform::openStandardOutput()), isDone_(count, false) {}

void OrderedOutput::write(size_t index, const uint8_t* bytes, size_t size) {
  std::unique_lock<std::mutex> lock(mutex_);
  turnChanged_.wait(lock, [&] { return turn_ == index; });
  if (isBroken_) throw Failure("standard output is closed", true);
  console_.makeWay();
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

WorkList::WorkList(const std::vector<std::string>& inputs, RefusedInputs refused)
    : inputs_(inputs),
      refused_(std::move(refused)),
      console_(inputs.size()),
      standardOutput_(inputs.size(), console_) {}

void WorkList::write(size_t index, const std::string& text) {
  refuseSystemFaults();
  standardOutput_.write(index, text);
}

void WorkList::countWhole(size_t index) {
  const uint64_t size = knownSize(inputs_[index]);
  bytes_ += size;
  console_.addBytes(size);
}

void WorkList::tell(Verbosity verbosity) {
  verbosity_ = verbosity;
  if (verbosity == Verbosity::kQuiet) console_.showNoProgress();
}

void WorkList::tellSums(std::chrono::duration<double> time) {
  const size_t done = inputs_.size() - failed_;
  console_.tell("ksv: " +
                sumsInWords(inputs_.size(), {{done, "done"}, {failed_, "failed"}}, bytes_, time));
}

int WorkList::run(size_t jobs, const std::function<void(size_t index)>& workOn) {
  const auto begin = std::chrono::steady_clock::now();
  if (console_.showsProgress()) console_.expectBytes(totalSize(inputs_));
  std::vector<std::thread> helpers;
  startHelpers(helpers, std::min(jobs, inputs_.size()), workOn);
  work(workOn);
  for (std::thread& helper : helpers) helper.join();
  if (verbosity_ == Verbosity::kVerbose) tellSums(std::chrono::steady_clock::now() - begin);
  return failed_ != 0 ? kExitFailed : kExitDone;
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
    ++failed_;
    platform::tellOutOfMemory();  // there was none for the report
  }
}

void WorkList::workOrReport(size_t index, const std::function<void(size_t index)>& workOn) {
  try {
    console_.beginFile(nameForMessages(inputs_[index]));
    if (const auto refused = refused_.find(index); refused != refused_.end()) throw refused->second;
    workOn(index);
  } catch (const std::exception& error) {
    ++failed_;
    report(index, failureToTell(error));
  }
}

void WorkList::report(size_t index, const Failure& failure) {
  if (failure.quiet()) return;
  console_.report(nameForMessages(inputs_[index]), failure.what());
  if (encodeFailure_) writeRecord(index, encodeFailure_(failureRecord(inputs_[index], failure)));
}

bool WorkList::writeRecord(size_t index, const std::string& line) {
  try {
    standardOutput_.write(index, line);
    return true;
  } catch (const Failure& broken) {
    if (!broken.quiet()) console_.report("standard output", broken.what());
    return false;
  }
}

}  // namespace ksv_cli
