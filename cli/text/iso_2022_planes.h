// ISO-2022-JP-2004 as others write and read it, on both sides of the converter.
//
// An escape sequence holds until the next one. The converter, however, reads only one
// character of plane 2 behind it, and writes other characters behind one of JIS X 0213
// without going back to their set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "cli/system/streams.h"
#include "cli/text/rewriting_source.h"

namespace ksv_cli {

// Gives every character of plane 2 an escape sequence of its own.
class PlaneSource : public RewritingSource {
 public:
  using RewritingSource::RewritingSource;

 private:
  void take(uint8_t byte) override;
  bool takeEscape(uint8_t byte);

  std::string escape_;  // the beginning of an escape sequence
  bool inPlane2_ = false;
  bool isDesignated_ = false;  // right in front of the next character
  bool isFirstByte_ = false;
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
