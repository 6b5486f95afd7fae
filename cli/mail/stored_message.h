// A message as it is kept until it is taken apart: in memory, or in a temporary file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/system/temporary_file.h"

namespace ksv_cli {

struct MailProblem {
  std::optional<uint64_t> offset;  // in the input
  std::string reason;
};

class StoredMessage {
 public:
  // index: from 1 on. offset: where it begins in the input.
  StoredMessage(uint64_t index, uint64_t offset) : index_(index), offset_(offset) {}

  uint64_t index() const { return index_; }
  uint64_t offset() const { return offset_; }
  uint64_t size() const { return size_; }

  // offset: of the bytes in the input. Throws Failure, as all that follows does.
  void append(std::string_view bytes, uint64_t offset);
  // Nothing more is appended.
  void finish();

  size_t read(uint64_t offset, char* buffer, size_t size);

  // The place in the input of a byte of the message; none where that is not known any more.
  std::optional<uint64_t> placeInInput(uint64_t offset) const;

  std::vector<MailProblem> problems;

 private:
  class OpenFile {
   public:
    explicit OpenFile(const std::string& path);
    ~OpenFile();
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    size_t read(uint64_t offset, char* buffer, size_t size);

   private:
    std::FILE* const file_;
  };

  // Where the bytes of the input do not follow each other.
  struct Jump {
    uint64_t offset;  // in the message
    uint64_t inInput;
  };

  void note(uint64_t inInput);

  const uint64_t index_;
  const uint64_t offset_;
  uint64_t size_ = 0;
  std::string held_;
  std::unique_ptr<platform::TemporaryFile> file_;
  std::unique_ptr<OpenFile> opened_;
  std::vector<Jump> jumps_;
  bool hasForgottenJumps_ = false;
};

}  // namespace ksv_cli
