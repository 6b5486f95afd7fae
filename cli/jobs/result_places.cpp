#include "cli/jobs/result_places.h"

#include "cli/system/system_faults.h"

namespace ksv_cli {
namespace {

using platform::FileKind;
using platform::PendingFile;

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

class FileResult : public Result {
 public:
  explicit FileResult(const std::string& path) : Result(path) {
    guarded([&] {
      if (platform::fileFacts(path).kind == FileKind::kOther)
        special_ = platform::openSpecialOutput(path);
      else
        pending_ = PendingFile::create(path);
    });
  }

 private:
  void writeBytes(const uint8_t* bytes, size_t size) override {
    (special_ ? *special_ : *pending_).write(bytes, size);
  }
  bool takePlace() override { return !pending_ || pending_->commit(); }

  std::unique_ptr<ByteSink> special_;
  std::unique_ptr<PendingFile> pending_;
};

class InPlaceResult : public Result {
 public:
  InPlaceResult(const std::string& path, const platform::InPlace& how) : Result(path) {
    guarded([&] { pending_ = PendingFile::createInPlace(path, how); });
  }

 private:
  void writeBytes(const uint8_t* bytes, size_t size) override { pending_->write(bytes, size); }
  bool takePlace() override { return pending_->commit(); }

  std::unique_ptr<PendingFile> pending_;
};

}  // namespace

void Result::write(const uint8_t* bytes, size_t size) {
  if (size == 0) return;
  refuseSystemFaults();
  guarded([&] { writeBytes(bytes, size); });
  size_ += size;
}

bool Result::complete() {
  refuseSystemFaults();
  bool isPlaced = true;
  guarded([&] { isPlaced = takePlace(); });
  return isPlaced;
}

std::unique_ptr<Result> standardOutputResult(OrderedOutput& output, size_t index) {
  return std::make_unique<StandardOutputResult>(output, index);
}

std::unique_ptr<Result> fileResult(const std::string& path) {
  return std::make_unique<FileResult>(path);
}

std::unique_ptr<Result> inPlaceResult(const std::string& path, const platform::InPlace& how) {
  return std::make_unique<InPlaceResult>(path, how);
}

}  // namespace ksv_cli
