// Input that is written in another way on its way to the converter, byte by byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "cli/system/streams.h"
#include "cli/text/offset_links.h"

namespace ksv_cli {

class RewritingSource : public ByteSource {
 public:
  explicit RewritingSource(ByteSource& source) : source_(source) {}

  size_t read(uint8_t* buffer, size_t size) final;
  uint64_t fileOffset(uint64_t offset) const final {
    return source_.fileOffset(links_.originOf(offset));
  }
  void forgetBefore(uint64_t offset) final { links_.forgetBefore(offset); }

 protected:
  // Stands for the next byte: has to call replaceBy() once.
  virtual void take(uint8_t byte) = 0;

  // What stands in the place of the byte; one or more.
  void replaceBy(std::string_view bytes);
  // What stands in front of it without having been there.
  void insert(std::string_view bytes);

 private:
  ByteSource& source_;
  OffsetLinks links_;
  std::vector<uint8_t> text_;
  size_t read_ = 0;
  uint64_t made_ = 0;
  uint64_t taken_ = 0;
};

}  // namespace ksv_cli
