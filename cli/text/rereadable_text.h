// A text that can be read from its beginning as often as its judge asks for it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/system/streams.h"

namespace ksv_cli {

// A text whose beginning has been read already.
class ResumedSource : public ByteSource {
 public:
  ResumedSource(std::vector<uint8_t> beginning, std::unique_ptr<ByteSource> rest);

  size_t read(uint8_t* buffer, size_t size) override;

 private:
  const std::vector<uint8_t> beginning_;
  size_t used_ = 0;
  const std::unique_ptr<ByteSource> rest_;
};

class RereadableText {
 public:
  // Opens the input. Throws Failure, as everything here does.
  explicit RereadableText(const std::string& input);
  // A text that is in memory, and stays the caller's.
  explicit RereadableText(std::string_view text);

  // What it begins with; all of a text that is no longer than this.
  static constexpr size_t kBeginning = 4096;
  const std::vector<uint8_t>& beginning() const { return beginning_; }

  // The text from its beginning; of several sources only the last may be read on. A
  // regular file that has a name is opened once more, and memory read again. Of anything else a
  // copy is kept from the first call on, in memory or, if it is longer than a few MiB, in a
  // temporary file.
  std::unique_ptr<ByteSource> reopen();

  // The same for the last time: the text need not be kept.
  std::unique_ptr<ByteSource> release();

 private:
  class Copy;
  class CopySource;

  const std::string input_;
  const bool hasName_;
  const std::optional<std::string_view> held_;
  std::unique_ptr<ByteSource> opened_;
  std::vector<uint8_t> beginning_;
  std::shared_ptr<Copy> copy_;
};

}  // namespace ksv_cli
