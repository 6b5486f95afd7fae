#include "cli/text/rereadable_text.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/inputs.h"
#include "cli/system/memory_streams.h"
#include "cli/system/resource_limits.h"
#include "ksv_file.h"
#include "ksv_path.h"

namespace ksv_cli {
namespace {

constexpr size_t kBlock = 64 * 1024;

[[noreturn]] void failAtTemporaryFile(const std::string& what) {
  throw Failure("a temporary file cannot be " + what + ": " +
                std::generic_category().message(errno));
}

// A file that has no name any more, where the system lets an open file be removed; else one
// that goes with its object.
class ScratchFile {
 public:
  ScratchFile() {
    if (KSV_ASC_tmpnam(path_) == nullptr) failAtTemporaryFile("made");
    file_ = KSV_FileOpen(path_, "w+b");
    if (file_ == nullptr) {
      const int error = errno;
      remove();
      errno = error;
      failAtTemporaryFile("opened");
    }
    isRemoved_ = KSV_FileRemove(path_) == 0;
  }
  ~ScratchFile() {
    KSV_FileClose(file_);
    if (!isRemoved_) remove();
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  void append(const uint8_t* bytes, size_t size) {
    const auto count = static_cast<int32_t>(size);
    if (KSV_FileWrite(bytes, 1, count, file_) != count || std::fflush(file_) != 0)
      failAtTemporaryFile("written");
  }

  void rewind() {
    if (KSV_FileSeek(file_, 0, SEEK_SET) != 0) failAtTemporaryFile("read");
  }

  size_t read(uint8_t* buffer, size_t size) {
    const auto most = static_cast<int32_t>(std::min(size, kBlock));
    const int32_t count = KSV_FileRead(buffer, 1, most, file_);
    if (count < most && std::ferror(file_) != 0) failAtTemporaryFile("read");
    return static_cast<size_t>(count);
  }

 private:
  void remove() {
    if (KSV_FileRemove(path_) != 0) tellLeftOver(path_, {errno, std::generic_category()});
  }

  char path_[KSV_PATH_SIZE];
  std::FILE* file_ = nullptr;
  bool isRemoved_ = false;
};

}  // namespace

ResumedSource::ResumedSource(std::vector<uint8_t> beginning, std::unique_ptr<ByteSource> rest)
    : beginning_(std::move(beginning)), rest_(std::move(rest)) {}

size_t ResumedSource::read(uint8_t* buffer, size_t size) {
  if (used_ == beginning_.size()) return rest_->read(buffer, size);
  const size_t count = std::min(size, beginning_.size() - used_);
  std::memcpy(buffer, beginning_.data() + used_, count);
  used_ += count;
  return count;
}

class RereadableText::Copy {
 public:
  explicit Copy(ByteSource& source) : beginning_(readAtMost(source, limits::kMostInMemory)) {
    if (beginning_.size() < limits::kMostInMemory) return;
    const auto block = std::make_unique<uint8_t[]>(kBlock);
    while (const size_t count = source.read(block.get(), kBlock)) {
      if (!rest_) rest_ = std::make_unique<ScratchFile>();
      rest_->append(block.get(), count);
    }
  }

  void rewind() {
    at_ = 0;
    if (rest_) rest_->rewind();
  }

  size_t read(uint8_t* buffer, size_t size) {
    const size_t count = std::min(size, beginning_.size() - at_);
    if (count == 0) return rest_ ? rest_->read(buffer, size) : 0;
    std::memcpy(buffer, beginning_.data() + at_, count);
    at_ += count;
    return count;
  }

 private:
  const std::vector<uint8_t> beginning_;
  size_t at_ = 0;
  std::unique_ptr<ScratchFile> rest_;
};

class RereadableText::CopySource : public ByteSource {
 public:
  explicit CopySource(std::shared_ptr<Copy> copy) : copy_(std::move(copy)) { copy_->rewind(); }

  size_t read(uint8_t* buffer, size_t size) override { return copy_->read(buffer, size); }

 private:
  const std::shared_ptr<Copy> copy_;
};

RereadableText::RereadableText(const std::string& input)
    : input_(input),
      hasName_(!isStandardStream(input) &&
               platform::fileFacts(input).kind == platform::FileKind::kRegular),
      opened_(openInput(input)),
      beginning_(readAtMost(*opened_, kBeginning)) {}

RereadableText::RereadableText(std::string_view text)
    : hasName_(false),
      held_(text),
      opened_(std::make_unique<TextSource>(text)),
      beginning_(readAtMost(*opened_, kBeginning)) {}

std::unique_ptr<ByteSource> RereadableText::reopen() {
  if (held_) return std::make_unique<TextSource>(*held_);
  if (hasName_) return openInput(input_);
  if (!copy_) {
    ResumedSource all(beginning_, std::move(opened_));
    copy_ = std::make_shared<Copy>(all);
  }
  return std::make_unique<CopySource>(copy_);
}

std::unique_ptr<ByteSource> RereadableText::release() {
  if (copy_) return std::make_unique<CopySource>(copy_);
  return std::make_unique<ResumedSource>(beginning_, std::move(opened_));
}

}  // namespace ksv_cli
