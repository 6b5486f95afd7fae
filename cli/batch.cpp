#include "batch.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

#include "console.h"
#include "failure.h"
#include "platform.h"
#include "text_conversion.h"

namespace ksv_cli {
namespace {

using platform::FileFacts;
using platform::FileKind;

bool isStandardStream(const std::string& path) { return path == kStandardStream; }

FileFacts inputFacts(const std::string& input) {
  return isStandardStream(input) ? platform::standardInputFacts() : platform::fileFacts(input);
}

// Tells the console how far the reading has come.
class MeteredSource : public ByteSource {
 public:
  MeteredSource(const std::string& input, Console& console)
      : source_(isStandardStream(input) ? platform::openStandardInput()
                                        : platform::openInput(input)),
        console_(console) {}

  size_t read(uint8_t* buffer, size_t size) override {
    const size_t count = source_->read(buffer, size);
    console_.addBytes(count);
    return count;
  }

 private:
  std::unique_ptr<ByteSource> source_;
  Console& console_;
};

// Standard output, on which the results of threads come in the order of the
// inputs: whoever is not at turn waits with its first bytes.
class OrderedOutput {
 public:
  explicit OrderedOutput(size_t count)
      : sink_(platform::openStandardOutput()), isDone_(count, false) {}

  void write(size_t index, const uint8_t* bytes, size_t size) {
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

  void finish(size_t index) {
    const std::lock_guard<std::mutex> lock(mutex_);
    isDone_[index] = true;
    while (turn_ < isDone_.size() && isDone_[turn_]) ++turn_;
    turnChanged_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable turnChanged_;
  std::unique_ptr<ByteSink> sink_;
  std::vector<bool> isDone_;
  size_t turn_ = 0;
  bool isBroken_ = false;
};

// The place of one result. A write that fails is told with the name of that
// place, since the message begins with the input's.
class Result : public ByteSink {
 public:
  explicit Result(std::string name) : name_(std::move(name)) {}

  void write(const uint8_t* bytes, size_t size) final {
    if (size != 0) guarded([&] { writeBytes(bytes, size); });
  }
  void complete() {
    guarded([&] { takePlace(); });
  }

 protected:
  template <typename Action>
  void guarded(Action action) const {
    try {
      action();
    } catch (const Failure& failure) {
      throw Failure("cannot write " + name_ + ": " + failure.what(), failure.quiet());
    }
  }

 private:
  virtual void writeBytes(const uint8_t* bytes, size_t size) = 0;
  virtual void takePlace() {}

  std::string name_;
};

class StandardOutputResult : public Result {
 public:
  StandardOutputResult(OrderedOutput& output, size_t index)
      : Result("standard output"), output_(output), index_(index) {}

 private:
  void writeBytes(const uint8_t* bytes, size_t size) override {
    output_.write(index_, bytes, size);
  }

  OrderedOutput& output_;
  size_t index_;
};

// A device or a pipe is written to as it is; anything else is replaced whole.
class FileResult : public Result {
 public:
  FileResult(const std::string& path, std::string backup)
      : Result(path), backup_(std::move(backup)) {
    guarded([&] {
      if (platform::fileFacts(path).kind == FileKind::kOther)
        special_ = platform::openSpecialOutput(path);
      else
        pending_ = platform::PendingFile::create(path);
    });
  }

 private:
  void writeBytes(const uint8_t* bytes, size_t size) override {
    (special_ ? *special_ : *pending_).write(bytes, size);
  }
  void takePlace() override {
    if (pending_) pending_->commit(backup_);
  }

  std::string backup_;
  std::unique_ptr<ByteSink> special_;
  std::unique_ptr<platform::PendingFile> pending_;
};

class Batch {
 public:
  Batch(const ConversionSettings& settings, const OutputPlan& plan,
        const std::vector<std::string>& inputs)
      : first_(settings),
        others_(settings),
        plan_(plan),
        inputs_(inputs),
        console_(inputs.size(), totalSize(inputs)),
        standardOutput_(inputs.size()) {
    // One stream of several texts has one mark, in front.
    if (plan_.kind == OutputPlan::Kind::kStandardOutput) others_.options.writeByteOrderMark = 0;
    checkThatNothingIsOverwritten();
  }

  int run(size_t jobs) {
    if (plan_.kind == OutputPlan::Kind::kDirectory && !makeDirectory()) return kExitFailed;
    std::vector<std::thread> helpers;
    for (size_t i = 1; i < std::min(jobs, inputs_.size()); ++i)
      helpers.emplace_back([this] { work(); });
    work();
    for (std::thread& helper : helpers) helper.join();
    return anyFailed_ ? kExitFailed : kExitDone;
  }

 private:
  using FileId = std::pair<uint64_t, uint64_t>;

  static uint64_t totalSize(const std::vector<std::string>& inputs) {
    uint64_t total = 0;
    for (const std::string& input : inputs) total += inputFacts(input).size;
    return total;
  }

  std::string outputPath(const std::string& input) const {
    switch (plan_.kind) {
      case OutputPlan::Kind::kDirectory:
        return platform::joinPath(plan_.path, platform::lastComponent(input));
      case OutputPlan::Kind::kInPlace:
        return input;
      default:
        return plan_.path;
    }
  }

  void checkThatNothingIsOverwritten() const {
    if (plan_.kind == OutputPlan::Kind::kStandardOutput) return;
    std::set<FileId> inputIds;
    std::map<std::string, std::string> outputs;  // by the key of the place
    for (const std::string& input : inputs_) {
      const FileFacts facts = platform::fileFacts(input);
      const bool isFile = facts.kind == FileKind::kRegular && !isStandardStream(input);
      const bool isNewId = !isFile || inputIds.emplace(facts.device, facts.number).second;
      const bool isNewOutput =
          outputs.emplace(platform::placeKey(outputPath(input)), outputPath(input)).second;
      if (!isNewOutput || (plan_.kind == OutputPlan::Kind::kInPlace && !isNewId))
        throw UsageError(outputPath(input) + " would be written twice");
    }
    if (plan_.kind == OutputPlan::Kind::kInPlace) return;
    for (const auto& [key, output] : outputs) {
      const FileFacts facts = platform::fileFacts(output);
      if (facts.kind == FileKind::kRegular && inputIds.count({facts.device, facts.number}) != 0)
        throw UsageError(output + " is an input as well; --in-place converts a file where it is");
    }
  }

  bool makeDirectory() {
    try {
      platform::createDirectories(plan_.path);
      return true;
    } catch (const Failure& failure) {
      console_.report(plan_.path, failure.what());
      return false;
    }
  }

  void work() {
    for (size_t index = next_++; index < inputs_.size(); index = next_++) {
      convertAndReport(index);
      standardOutput_.finish(index);
      console_.addFile();
    }
  }

  void convertAndReport(size_t index) {
    try {
      convertOne(index);
      return;
    } catch (const Failure& failure) {
      if (!failure.quiet()) console_.report(nameForMessages(inputs_[index]), failure.what());
    } catch (const std::exception& error) {
      console_.report(nameForMessages(inputs_[index]), error.what());
    }
    anyFailed_ = true;
  }

  void convertOne(size_t index) {
    const std::string& input = inputs_[index];
    refuseUnfitInput(input);
    auto source = std::make_unique<MeteredSource>(input, console_);
    const std::unique_ptr<Result> result = openResult(index);
    convertText(index == 0 ? first_ : others_, *source, *result);
    source.reset();  // not every system replaces a file that is open
    result->complete();
  }

  void refuseUnfitInput(const std::string& input) const {
    const FileFacts facts = inputFacts(input);
    if (plan_.kind == OutputPlan::Kind::kInPlace && facts.kind == FileKind::kOther)
      throw Failure("is not a regular file");
    if (plan_.kind == OutputPlan::Kind::kStandardOutput && facts.kind == FileKind::kRegular &&
        facts.isSameFileAs(platform::standardOutputFacts()))
      throw Failure("is standard output as well");
  }

  std::unique_ptr<Result> openResult(size_t index) {
    if (plan_.kind == OutputPlan::Kind::kStandardOutput)
      return std::make_unique<StandardOutputResult>(standardOutput_, index);
    const std::string& input = inputs_[index];
    const std::string backup = plan_.backupSuffix.empty() ? "" : input + plan_.backupSuffix;
    return std::make_unique<FileResult>(outputPath(input), backup);
  }

  ConversionSettings first_;
  ConversionSettings others_;
  const OutputPlan& plan_;
  const std::vector<std::string>& inputs_;
  Console console_;
  OrderedOutput standardOutput_;
  std::atomic<size_t> next_{0};
  std::atomic<bool> anyFailed_{false};
};

}  // namespace

std::string nameForMessages(const std::string& input) {
  return isStandardStream(input) ? "standard input" : input;
}

int convertBatch(const ConversionSettings& settings, const OutputPlan& plan,
                 const std::vector<std::string>& inputs, size_t jobs) {
  return Batch(settings, plan, inputs).run(jobs);
}

}  // namespace ksv_cli
