// ISO-2022-JP-2004 as others write and read it, on both sides of the converter.
//
// An escape sequence holds until the next one. The converter, however, reads only one
// character of plane 2 behind it, and writes other characters behind one of JIS X 0213
// without going back to their set.
#ifndef KSV_CLI_ISO_2022_PLANES_H
#define KSV_CLI_ISO_2022_PLANES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "offset_links.h"
#include "streams.h"

namespace ksv_cli {

// Gives every character of plane 2 an escape sequence of its own.
class PlaneSource : public ByteSource {
 public:
  explicit PlaneSource(ByteSource& source) : source_(source) {}

  size_t read(uint8_t* buffer, size_t size) override;
  uint64_t fileOffset(uint64_t offset) const override {
    return source_.fileOffset(links_.originOf(offset));
  }
  void forgetBefore(uint64_t offset) override { links_.forgetBefore(offset); }

 private:
  void take(uint8_t byte);
  bool takeEscape(uint8_t byte);

  ByteSource& source_;
  OffsetLinks links_;
  std::string escape_;  // the beginning of an escape sequence
  bool inPlane2_ = false;
  bool isDesignated_ = false;  // right in front of the next character
  bool isFirstByte_ = false;
  std::vector<uint8_t> text_;
  size_t read_ = 0;
  uint64_t made_ = 0;
  uint64_t taken_ = 0;
};

// Designates the set anew that a character behind one of JIS X 0213 is in.
class PlaneSink : public ByteSink {
 public:
  explicit PlaneSink(ByteSink& sink) : sink_(sink) {}

  void write(const uint8_t* bytes, size_t size) override;
  // To be called behind the last byte.
  void finish();

 private:
  void take(uint8_t byte);
  void emit(uint8_t byte);
  void release();
  void flush();

  ByteSink& sink_;
  std::string escape_;    // the beginning of an escape sequence
  std::string otherSet_;  // what designates the set that is no plane
  bool inPlane_ = false;
  int pairBytesLeft_ = 0;
  std::string text_;
};

}  // namespace ksv_cli

#endif
