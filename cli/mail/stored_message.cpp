#include "cli/mail/stored_message.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "cli/mail/mail_limits.h"
#include "cli/system/failure.h"
#include "ksv_file.h"

namespace ksv_cli {
namespace {

// A message with more quoted lines has no places behind them.
constexpr size_t kMostJumps = 4096;

const uint8_t* bytesOf(std::string_view text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

[[noreturn]] void failToRead() {
  throw Failure("a temporary file cannot be read: " + std::generic_category().message(errno));
}

}  // namespace

StoredMessage::OpenFile::OpenFile(const std::string& path)
    : file_(KSV_FileOpen(path.c_str(), "rb")) {
  if (file_ == nullptr) failToRead();
}

StoredMessage::OpenFile::~OpenFile() { KSV_FileClose(file_); }

size_t StoredMessage::OpenFile::read(uint64_t offset, char* buffer, size_t size) {
  if (KSV_FileSeek(file_, static_cast<int64_t>(offset), SEEK_SET) != 0) failToRead();
  const int32_t count = KSV_FileRead(buffer, 1, static_cast<int32_t>(size), file_);
  if (static_cast<size_t>(count) < size && std::ferror(file_) != 0) failToRead();
  return static_cast<size_t>(count);
}

void StoredMessage::note(uint64_t inInput) {
  const bool follows =
      !jumps_.empty() && jumps_.back().inInput + (size_ - jumps_.back().offset) == inInput;
  if (follows) return;
  if (jumps_.size() < kMostJumps)
    jumps_.push_back({size_, inInput});
  else
    hasForgottenJumps_ = true;
}

void StoredMessage::append(std::string_view bytes, uint64_t offset) {
  note(offset);
  size_ += bytes.size();
  if (file_ == nullptr && held_.size() + bytes.size() <= limits::kMostMessageInMemory) {
    held_ += bytes;
    return;
  }
  if (file_ == nullptr) {
    file_ = platform::TemporaryFile::create();
    file_->write(bytesOf(held_), held_.size());
    held_ = std::string();
  }
  file_->write(bytesOf(bytes), bytes.size());
}

void StoredMessage::finish() {
  if (file_ == nullptr) return;
  opened_ = std::make_unique<OpenFile>(file_->finish());
}

size_t StoredMessage::read(uint64_t offset, char* buffer, size_t size) {
  if (offset >= size_) return 0;
  if (opened_ != nullptr) return opened_->read(offset, buffer, size);
  return held_.copy(buffer, size, static_cast<size_t>(offset));
}

std::optional<uint64_t> StoredMessage::placeInInput(uint64_t offset) const {
  const auto behind = std::ranges::upper_bound(jumps_, offset, {}, &Jump::offset);
  if (behind == jumps_.begin()) return offset_;
  if (behind == jumps_.end() && hasForgottenJumps_) return std::nullopt;
  const Jump& jump = *std::prev(behind);
  return jump.inInput + (offset - jump.offset);
}

}  // namespace ksv_cli
