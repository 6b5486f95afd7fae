// What files and standard streams share.
#pragma once

#include "cli/system/files.h"
#include "cli/system/open_file_posix.h"
#include "cli/system/streams.h"

namespace ksv_cli::platform {

class DescriptorSource : public ByteSource {
 public:
  explicit DescriptorSource(int number) : descriptor_(number) {}
  size_t read(uint8_t* buffer, size_t size) override { return descriptor_.readSome(buffer, size); }

 private:
  OpenFile descriptor_;
};

class DescriptorSink : public ByteSink {
 public:
  explicit DescriptorSink(int number) : descriptor_(number) {}
  void write(const uint8_t* bytes, size_t size) override { descriptor_.writeAll(bytes, size); }

 private:
  OpenFile descriptor_;
};

// Of a stream that is closed there is nothing to tell.
FileFacts factsOfDescriptor(int number);

}  // namespace ksv_cli::platform
