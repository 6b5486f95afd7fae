// Where the result of one input goes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "cli/jobs/output_plan.h"
#include "cli/jobs/work_list.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/pending_file.h"
#include "cli/system/streams.h"

namespace ksv_cli {

// A write that fails is told with the name of the place, since the message begins with the input's.
class Result : public ByteSink {
 public:
  explicit Result(std::string name) : name_(std::move(name)) {}

  void write(const uint8_t* bytes, size_t size) final;
  // False: the place has these bytes already, and was left alone.
  bool complete();

  // The bytes written so far.
  uint64_t size() const { return size_; }

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
  virtual bool takePlace() { return true; }

  std::string name_;
  uint64_t size_ = 0;
};

// index: of the input, at whose turn it is written.
std::unique_ptr<Result> standardOutputResult(OrderedOutput& output, size_t index);

// A device or a pipe is written to as it is; anything else is replaced whole.
std::unique_ptr<Result> fileResult(const std::string& path);

std::unique_ptr<Result> inPlaceResult(const std::string& path, const platform::InPlace& how);

}  // namespace ksv_cli
